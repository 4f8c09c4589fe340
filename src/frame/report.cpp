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
        return; // no one could see the text
    Mc3dsFormatTextV(reportBuffer, sizeof reportBuffer, format, arguments);
    // A host in C++ may have its callback throw. The callers up the stack hold open files and memory, and are
    // C functions to the host: the exception ends here. A thread that ends inside the callback (pthread_exit,
    // cancellation) unwinds with an exception that must go on, or the C library aborts the process.
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
