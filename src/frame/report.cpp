#include "frame.h"

#if defined(__GLIBCXX__)
#include <cxxabi.h>
#endif

static Mc3dsCallback errorCallback;
static Mc3dsCallback messageCallback;
static char reportBuffer[256];

static void Report(Mc3dsCallback callback, int32_t level, const char *format, va_list arguments)
{
    if (!callback)
        return;
    Mc3dsFormatTextV(reportBuffer, sizeof reportBuffer, format, arguments);
    // Exceptions of the host end here: the callers hold files and memory and are C functions to the host. A
    // thread that ends in the callback (pthread_exit, cancellation) must unwind, or the C library aborts.
    try {
        callback(level, reportBuffer);
#if defined(__GLIBCXX__)
    } catch (const abi::__forced_unwind &) {
        throw;
#endif
    } catch (...) {
    }
}

void Mc3dsError(int32_t level, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    Report(errorCallback, level, format, arguments);
    va_end(arguments);
}

void Mc3dsMessage(int32_t level, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    Report(messageCallback, level, format, arguments);
    va_end(arguments);
}

Mc3dsCallback Mc3dsSetErrorCallback(Mc3dsCallback callback)
{
    const Mc3dsCallback before = errorCallback;
    errorCallback = callback;
    return before;
}

Mc3dsCallback Mc3dsSetMessageCallback(Mc3dsCallback callback)
{
    const Mc3dsCallback before = messageCallback;
    messageCallback = callback;
    return before;
}
