// The few things that differ from system to system.
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <system_error>
#include <thread>
#include <vector>

#include "base.h"

namespace fs = std::filesystem;

static void (*interruptCleanUp)();
static std::atomic<bool> interrupted;

void StopIfInterrupted()
{
    while (interrupted)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

std::string RandomText()
{
    static std::random_device source;
    std::string text;
    for (int i = 0; i < 8; ++i)
        text += "0123456789abcdefghijklmnopqrstuv"[source() % 32];
    return text;
}

#if defined(_WIN32)

#include <fcntl.h>
#include <io.h>

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
    // Other than std::filesystem's, this one replaces nothing here.
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

bool CanSplitProcesses()
{
    return false;
}

void RunInProcesses(size_t count, size_t, const std::function<std::string(size_t)> &work,
                    const std::function<void(size_t, const std::string &, const std::string &)> &finished)
{
    for (size_t i = 0; i < count; ++i)
        finished(i, work(i), "");
}

// The C runtime of Windows calls this in a thread that it makes for the purpose.
static void OnInterrupt(int)
{
    interrupted = true;
    interruptCleanUp();
    std::_Exit(exitFailed);
}

void CleanUpWhenInterrupted(void (*cleanUp)())
{
    interruptCleanUp = cleanUp;
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);
}

#else

#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

struct Child {
    pid_t id;
    int pipe; // its answer comes here
    size_t index;
    std::string answer;
};

// Held while children are started, reaped and interrupted, so that no signal goes to a stranger.
static std::mutex childrenMutex;
static std::vector<Child> children;

void PrepareProcess()
{
    // With stderr closed the next file to be opened would get its number, and reports would go into that.
    for (int number = 0; number <= 2; ++number)
        if (fcntl(number, F_GETFD) < 0 && open("/dev/null", O_RDONLY) != number)
            std::_Exit(exitFailed);
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
    // A second name refuses to replace anything. Where files can't have two, a look has to do.
    std::error_code failure;
    if (link(from.c_str(), to.c_str()) == 0)
        fs::remove(from, failure);
    else if (errno == EEXIST || fs::exists(fs::symlink_status(to, failure)))
        return std::make_error_code(std::errc::file_exists);
    else
        fs::rename(from, to, failure);
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

bool CanSplitProcesses()
{
    return true;
}

static sigset_t interruptSignals;
static pthread_t interruptThread;

static void InterruptChildren(int number)
{
    childrenMutex.lock(); // for good: no other child may start
    for (const Child &child : children)
        kill(child.id, number);
    for (const Child &child : children)
        waitpid(child.id, nullptr, 0);
}

// No signal handler may walk folders and remove them; a thread that waits for the signal may.
static void *WaitForInterrupt(void *)
{
    int number = 0;
    if (sigwait(&interruptSignals, &number) != 0)
        return nullptr;
    interrupted = true;
    InterruptChildren(number);
    interruptCleanUp();
    signal(number, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &interruptSignals, nullptr);
    raise(number);
    std::_Exit(exitFailed);
}

static void EndWaiting()
{
    pthread_cancel(interruptThread);
    pthread_join(interruptThread, nullptr);
}

void CleanUpWhenInterrupted(void (*cleanUp)())
{
    if (interruptCleanUp)
        return;
    interruptCleanUp = cleanUp;
    sigemptyset(&interruptSignals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action;
        // Whoever started the program may have it ignore one of them.
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            sigaddset(&interruptSignals, number);
    }
    pthread_sigmask(SIG_BLOCK, &interruptSignals, nullptr);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    // Enough for removing a folder; the usual megabytes are missed where memory is short.
    pthread_attr_setstacksize(&attributes, 256 * 1024);
    if (pthread_create(&interruptThread, &attributes, WaitForInterrupt, nullptr) == 0)
        std::atexit(EndWaiting);
    else
        pthread_sigmask(SIG_UNBLOCK, &interruptSignals, nullptr);
    pthread_attr_destroy(&attributes);
}

// A process has the threads and the children of its own alone, and leaves without what its parent planned to
// do at the end.
[[noreturn]] static void WorkAsChild(int pipe, const std::function<std::string(size_t)> &work, size_t index)
{
    interrupted = false;
    void (*const cleanUp)() = interruptCleanUp;
    interruptCleanUp = nullptr;
    CleanUpWhenInterrupted(cleanUp);
    int status = exitFailed;
    try {
        const std::string answer = work(index);
        size_t sent = 0;
        for (ssize_t length = 0; sent < answer.size(); sent += static_cast<size_t>(length)) {
            length = write(pipe, answer.data() + sent, answer.size() - sent);
            if (length <= 0)
                break;
        }
        status = sent == answer.size() ? exitDone : exitFailed;
    } catch (const std::exception &) { // the parent tells that there is no answer
    }
    cleanUp();
    StopIfInterrupted();
    std::_Exit(status);
}

// Empty when the child runs, else the reason why it doesn't.
static std::string StartChild(const std::function<std::string(size_t)> &work, size_t index)
{
    int ends[2];
    if (pipe(ends) != 0)
        return std::strerror(errno);
    std::fflush(nullptr); // what waits to be written would be written twice
    std::unique_lock lock(childrenMutex);
    const pid_t id = fork();
    const int reason = errno;
    if (id == 0) {
        children.clear();
        lock.unlock();
        close(ends[0]);
        WorkAsChild(ends[1], work, index);
    }
    close(ends[1]);
    if (id > 0) {
        children.push_back({id, ends[0], index, ""});
        return "";
    }
    close(ends[0]);
    return std::strerror(reason);
}

// Takes what the child has to say; true when that was all.
static bool ReadAnswer(Child *child)
{
    char block[65536];
    const ssize_t length = read(child->pipe, block, sizeof block);
    if (length > 0)
        child->answer.append(block, static_cast<size_t>(length));
    return length == 0 || (length < 0 && errno != EINTR && errno != EAGAIN);
}

// Why the process of a child counts as failed; empty if it doesn't.
static std::string ReapChild(const Child &child)
{
    int status = 0;
    close(child.pipe);
    if (waitpid(child.id, &status, 0) != child.id)
        return "its process is lost";
    if (WIFSIGNALED(status))
        return std::string("its process was ended by a signal: ") + strsignal(WTERMSIG(status));
    return WIFEXITED(status) && WEXITSTATUS(status) == exitDone ? "" : "its process failed";
}

void RunInProcesses(size_t count, size_t atOnce, const std::function<std::string(size_t)> &work,
                    const std::function<void(size_t, const std::string &, const std::string &)> &finished)
{
    for (size_t next = 0; next < count || !children.empty();) {
        while (next < count && children.size() < atOnce) {
            const std::string why = StartChild(work, next);
            if (!why.empty() && !children.empty())
                break; // for want of room; there will be some when another one has ended
            if (!why.empty())
                finished(next, "", "no process can be started: " + why);
            ++next;
        }
        std::vector<pollfd> pipes;
        for (const Child &child : children)
            pipes.push_back({child.pipe, POLLIN, 0});
        if (pipes.empty() || poll(pipes.data(), pipes.size(), -1) < 0)
            continue;
        for (size_t i = pipes.size(); i-- > 0;) {
            if (pipes[i].revents == 0 || !ReadAnswer(&children[i]))
                continue;
            std::unique_lock lock(childrenMutex);
            const Child ended = std::move(children[i]);
            const std::string failure = ReapChild(ended);
            children.erase(children.begin() + static_cast<ptrdiff_t>(i));
            lock.unlock();
            finished(ended.index, failure.empty() ? ended.answer : "", failure);
        }
    }
}

#endif
