#include "frame.h"

static Mc3dsCallback errorCallback;
static Mc3dsCallback messageCallback;
static char reportBuffer[256];

static void Report(Mc3dsCallback callback, int32_t level, const char *format, va_list arguments)
{
    if (!callback)
        return; // no one could see the text
    Mc3dsFormatTextV(reportBuffer, sizeof reportBuffer, format, arguments);
    // A host in C++ may have its callback throw. The callers up the stack hold open files and memory, and are
    // C functions to the host: the exception ends here.
    try {
        callback(level, reportBuffer);
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
