// Calls that depend on the operating system: POSIX systems.
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "base.h"

namespace fs = std::filesystem;

void PrepareProcess()
{
    // If stderr is closed, the next opened file gets its descriptor and reports are written into that file.
    for (int number = 0; number <= 2; ++number)
        if (fcntl(number, F_GETFD) < 0 && open("/dev/null", O_RDONLY) != number)
            std::_Exit(exitFailed);
    signal(SIGCHLD, SIG_DFL); // else the status of a child is lost
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

bool IsTerminal(FILE *stream)
{
    return isatty(fileno(stream)) != 0;
}

void MakeStandardOutputBinary()
{
}

bool OutputReaderIsGone()
{
    pollfd output = {STDOUT_FILENO, 0, 0};
    return poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

std::error_code MoveToNewName(const fs::path &from, const fs::path &to)
{
    // link() fails if the new name exists. Where hard links aren't supported, check the name before the
    // rename.
    std::error_code failure;
    if (link(from.c_str(), to.c_str()) == 0)
        fs::remove(from, failure);
    else if (errno == EEXIST || fs::exists(fs::symlink_status(to, failure)))
        return std::make_error_code(std::errc::file_exists);
    else
        fs::rename(from, to, failure); // unnoticed
    return failure;
}

fs::path MakeOwnFolder(const fs::path &beginning, std::string *why)
{
    std::string name = beginning.string() + "XXXXXX";
    if (mkdtemp(name.data()))
        return name;
    *why = std::strerror(errno);
    return {};
}

bool RemoveEmptyFolder(const fs::path &folder)
{
    return rmdir(folder.c_str()) == 0;
}
