// The few things that differ from system to system.
#include <algorithm>
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

static thread_local bool cleansUp; // in the thread that an interrupt runs in

bool IsInterrupted()
{
    return interrupted && !cleansUp;
}

void StopIfInterrupted()
{
    while (IsInterrupted())
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
    interrupted = cleansUp = true;
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
#if defined(__linux__)
#include <sys/prctl.h>
#endif
#include <sys/wait.h>
#include <unistd.h>

// A process that works for this one until there is nothing left to do.
struct Worker {
    pid_t id;
    int orders, answers; // pipes: indices to it, a length and as many bytes from it
    bool isBusy;
    size_t index; // what it is busy with, or was last
    std::string answer;
};

// Held while workers are started, reaped and interrupted, so that no signal goes to a stranger.
static std::mutex workersMutex;
static std::vector<Worker> workers;

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

static void InterruptWorkers(int number)
{
    workersMutex.lock(); // for good: no other worker may start
    for (const Worker &worker : workers)
        kill(worker.id, number);
    for (const Worker &worker : workers)
        waitpid(worker.id, nullptr, 0);
}

// No signal handler may walk folders and remove them; a thread that waits for the signal may.
static void *WaitForInterrupt(void *)
{
    int number = 0;
    if (sigwait(&interruptSignals, &number) != 0)
        return nullptr;
    interrupted = cleansUp = true;
    InterruptWorkers(number);
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

static bool WriteFully(int pipe, const void *bytes, size_t size)
{
    const char *from = static_cast<const char *>(bytes);
    while (size > 0) {
        const ssize_t length = write(pipe, from, size);
        if (length <= 0)
            return false;
        from += length;
        size -= static_cast<size_t>(length);
    }
    return true;
}

// The orders end when the parent has no more, and when it has died.
static bool DoOrders(int orders, int answers, const std::function<std::string(size_t)> &work)
{
    size_t index = 0;
    while (read(orders, &index, sizeof index) == ssize_t{sizeof index}) {
        const std::string answer = work(index);
        const size_t size = answer.size();
        if (!WriteFully(answers, &size, sizeof size) || !WriteFully(answers, answer.data(), size))
            return false;
    }
    return true;
}

// A process has the threads of its own alone, and leaves without what its parent planned to do at the end.
[[noreturn]] static void WorkAsChild(int orders, int answers, const std::function<std::string(size_t)> &work)
{
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGTERM); // a parent that was killed has no time to tell
#endif
    interrupted = false;
    void (*const cleanUp)() = interruptCleanUp;
    interruptCleanUp = nullptr;
    CleanUpWhenInterrupted(cleanUp);
    bool done = false;
    try {
        done = DoOrders(orders, answers, work);
    } catch (const std::exception &) { // the parent tells that there is no answer
    }
    cleanUp();
    StopIfInterrupted();
    std::_Exit(done ? exitDone : exitFailed);
}

// Empty when a worker runs, else the reason why it doesn't.
static std::string StartWorker(const std::function<std::string(size_t)> &work)
{
    int orders[2], answers[2];
    if (pipe(orders) != 0)
        return std::strerror(errno);
    if (pipe(answers) != 0) {
        const int reason = errno;
        close(orders[0]);
        close(orders[1]);
        return std::strerror(reason);
    }
    std::fflush(nullptr); // what waits to be written would be written twice
    std::unique_lock lock(workersMutex);
    const pid_t id = fork();
    const int reason = errno;
    if (id == 0) {
        for (const Worker &other : workers) { // they would not see the end of their orders
            close(other.orders);
            close(other.answers);
        }
        workers.clear();
        lock.unlock();
        close(orders[1]);
        close(answers[0]);
        WorkAsChild(orders[0], answers[1], work);
    }
    close(orders[0]);
    close(answers[1]);
    if (id > 0) {
        workers.push_back({id, orders[1], answers[0], false, 0, ""});
        return "";
    }
    close(orders[1]);
    close(answers[0]);
    return std::strerror(reason);
}

// Takes what the worker has to say. False when it says nothing any more.
static bool ReadAnswer(Worker *worker)
{
    char block[65536];
    const ssize_t length = read(worker->answers, block, sizeof block);
    if (length > 0)
        worker->answer.append(block, static_cast<size_t>(length));
    return length > 0 || (length < 0 && (errno == EINTR || errno == EAGAIN));
}

static bool AnswerIsWhole(const Worker &worker)
{
    size_t size = 0;
    if (worker.answer.size() < sizeof size)
        return false;
    std::memcpy(&size, worker.answer.data(), sizeof size);
    return worker.answer.size() >= sizeof size + size;
}

// Why a worker ended before its time.
static std::string Reap(const Worker &worker)
{
    int status = 0;
    if (worker.orders >= 0)
        close(worker.orders);
    close(worker.answers);
    if (waitpid(worker.id, &status, 0) != worker.id)
        return "its process is lost";
    if (WIFSIGNALED(status))
        return std::string("its process was ended by a signal: ") + strsignal(WTERMSIG(status));
    return "its process failed";
}

static void EndWorker(size_t number, std::string *failure)
{
    const std::lock_guard lock(workersMutex);
    const Worker ended = workers[number];
    workers.erase(workers.begin() + static_cast<ptrdiff_t>(number));
    *failure = Reap(ended);
}

// Gives an idle worker, a new one if need be, the next index. Why there is none.
static std::string GiveOrder(size_t index, size_t atOnce, const std::function<std::string(size_t)> &work)
{
    const auto isIdle = [](const Worker &worker) { return !worker.isBusy; };
    auto idle = std::find_if(workers.begin(), workers.end(), isIdle);
    if (idle == workers.end() && workers.size() < atOnce) {
        const std::string why = StartWorker(work);
        if (!why.empty())
            return why;
        idle = workers.end() - 1;
    }
    if (idle == workers.end())
        return "all are busy";
    idle->isBusy = true;
    idle->index = index;
    idle->answer.clear();
    WriteFully(idle->orders, &index, sizeof index); // one that has died shows when its answer is read
    return "";
}

void RunInProcesses(size_t count, size_t atOnce, const std::function<std::string(size_t)> &work,
                    const std::function<void(size_t, const std::string &, const std::string &)> &finished)
{
    size_t next = 0, busy = 0;
    while (next < count || busy > 0) {
        while (next < count && busy < atOnce) {
            const std::string why = GiveOrder(next, atOnce, work);
            if (!why.empty() && busy > 0)
                break; // for want of room; there will be some when another one is done
            if (!why.empty())
                finished(next, "", "no process can be started: " + why);
            busy += why.empty();
            ++next;
        }
        std::vector<pollfd> pipes;
        for (const Worker &worker : workers)
            pipes.push_back({worker.answers, POLLIN, 0});
        if (pipes.empty() || poll(pipes.data(), pipes.size(), -1) < 0)
            continue;
        for (size_t i = pipes.size(); i-- > 0;) {
            if (pipes[i].revents == 0)
                continue;
            const bool goesOn = ReadAnswer(&workers[i]);
            const bool isWhole = AnswerIsWhole(workers[i]), wasBusy = workers[i].isBusy;
            if (goesOn && !isWhole)
                continue;
            const size_t index = workers[i].index;
            const std::string answer = isWhole ? workers[i].answer.substr(sizeof(size_t)) : "";
            std::string failure;
            workers[i].isBusy = false;
            workers[i].answer.clear();
            if (!goesOn)
                EndWorker(i, &failure);
            busy -= wasBusy;
            if (wasBusy)
                finished(index, answer, isWhole ? "" : failure);
        }
    }
    for (std::string ignored; !workers.empty();) {
        close(workers.back().orders);
        workers.back().orders = -1;
        EndWorker(workers.size() - 1, &ignored);
    }
}

#endif
