#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

#include "run/run.h"

static int Run(int argc, const char *const *argv)
{
    HostOptions options;
    const int status = ParseOptions(argc, argv, &options);
    if (status >= 0)
        return status;
    return ConvertAll(options);
}

int main(int argc, char **argv)
{
    PrepareProcess();
    int status = exitFailed;
    try {
        status = Run(argc, argv);
    } catch (const std::bad_alloc &) {
        ReportError("out of memory");
    } catch (const std::exception &failure) {
        ReportError(failure.what());
    }
    RemovePrivateFolders();
    StopIfInterrupted();
    if ((std::fflush(stdout) != 0 || std::ferror(stdout)) && status == exitDone && !OutputReaderIsGone()) {
        ReportError(std::string("cannot write to the standard output: ") + std::strerror(errno));
        status = exitFailed;
    }
    return status;
}
