// Calls that depend on the operating system: Windows.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>

#include "interrupts.h"

namespace fs = std::filesystem;

void PrepareProcess()
{
}

bool IsTerminal(FILE *stream)
{
    return _isatty(_fileno(stream)) != 0;
}

void MakeStandardOutputBinary()
{
    _setmode(_fileno(stdout), _O_BINARY);
}

bool OutputReaderIsGone()
{
    return false;
}

std::error_code MoveToNewName(const fs::path &from, const fs::path &to)
{
    // On Windows std::rename replaces nothing; std::filesystem::rename does.
    return std::rename(from.string().c_str(), to.string().c_str()) == 0
               ? std::error_code()
               : std::error_code(errno, std::generic_category());
}

fs::path MakeOwnFolder(const fs::path &beginning, std::string *why)
{
    std::error_code failure;
    const fs::path folder = PathOf(beginning.string() + RandomText());
    if (fs::create_directory(folder, failure))
        return folder;
    *why = failure ? failure.message() : "its name is taken";
    return {};
}

bool RemoveEmptyFolder(const fs::path &folder)
{
    std::error_code failure;
    return fs::remove(folder, failure);
}

static void (*interruptCleanUp)();

// The C runtime of Windows calls this in a new thread.
static void OnInterrupt(int)
{
    BeginCleanUp();
    interruptCleanUp();
    std::_Exit(exitFailed);
}

void CleanUpWhenInterrupted(void (*cleanUp)())
{
    interruptCleanUp = cleanUp;
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);
}

bool CanSplitProcesses()
{
    return false;
}

void RunInProcesses(size_t count, size_t, const std::function<std::string(size_t)> &work, void (*)(),
                    const std::function<void(size_t, const std::string &, const std::string &)> &finished)
{
    for (size_t i = 0; i < count; ++i)
        finished(i, work(i), "");
}
