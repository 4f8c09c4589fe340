#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

#include "batch/batch.h"

static int Run(int argc, const char *const *argv, Reporter *reporter)
{
    HostOptions options;
    const int status = ParseOptions(argc, argv, &options);
    if (status >= 0)
        return status;
    reporter->verbosity = options.verbosity;
    return ConvertAll(options, reporter);
}

int main(int argc, char **argv)
{
    PrepareProcess();
    int status = exitFailed;
    Reporter reporter;
    try {
        status = Run(argc, argv, &reporter);
    } catch (const std::bad_alloc &) {
        ReportError(&reporter, "out of memory");
    } catch (const std::exception &failure) {
        ReportError(&reporter, failure.what());
    }
    RemovePrivateFolders(); // unnoticed
    StopIfInterrupted();
    if ((std::fflush(stdout) != 0 || std::ferror(stdout)) && status == exitDone && !OutputReaderIsGone()) {
        ReportError(&reporter, std::string("cannot write to the standard output: ") + std::strerror(errno));
        status = exitFailed;
    }
    return status;
}
