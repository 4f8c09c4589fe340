#include "report.h"

#include "frame.h"
#include "outcome.h"

#if defined(__GLIBCXX__)
#include <cxxabi.h>
#endif

static Mc3dsCallback errorCallback;
static Mc3dsCallback messageCallback;
static char reportBuffer[256];
static Mc3dsReport newest;

const Mc3dsReport *Mc3dsNewestReport()
{
    return &newest;
}

static void Report(Mc3dsCallback callback, const Mc3dsReport &report, const char *format, va_list arguments)
{
    if (!callback)
        return;
    newest = report;
    newest.text = reportBuffer;
    Mc3dsFormatTextV(reportBuffer, sizeof reportBuffer, format, arguments);
    // Exceptions of the host end here: the callers hold files and memory and are C functions to the host. A
    // thread that ends in the callback (pthread_exit, cancellation) must unwind, or the C library aborts.
    try {
        callback(report.level, reportBuffer);
#if defined(__GLIBCXX__)
    } catch (const abi::__forced_unwind &) {
        throw;
#endif
    } catch (...) {
    }
}

void Mc3dsError(int32_t level, Mc3dsReportKind kind, const char *format, ...)
{
    if (kind == Mc3dsReportKind::OutOfMemory)
        Mc3dsNoteLackOfMemory();
    va_list arguments;
    va_start(arguments, format);
    Report(errorCallback, {Mc3dsChannel::Error, kind, level, 0, nullptr}, format, arguments);
    va_end(arguments);
}

void Mc3dsMessage(int32_t level, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    Report(messageCallback, {Mc3dsChannel::Message, Mc3dsReportKind::Detail, level, 0, nullptr}, format,
           arguments);
    va_end(arguments);
}

void Mc3dsMessageOf(Mc3dsReportKind kind, int32_t level, uint64_t amount, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    Report(messageCallback, {Mc3dsChannel::Message, kind, level, amount, nullptr}, format, arguments);
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
