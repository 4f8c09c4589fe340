// Calls that depend on the operating system.
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

static thread_local bool cleansUp; // true in the thread that handles an interrupt

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

// The C runtime of Windows calls this in a new thread.
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
#include <semaphore>
#include <signal.h>
#include <sys/mman.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif
#include <sys/wait.h>
#include <unistd.h>

// A process that takes tasks until none is left.
struct Worker {
    pid_t id;
    int answers;       // a pipe; for each answer an AnswerHead and then its bytes
    size_t place;      // its index in TaskList::busyWith
    std::string bytes; // read from the pipe and not handled yet
};

struct AnswerHead {
    size_t index, size;
};

// In memory that the workers and their parent share.
struct TaskList {
    std::atomic<size_t> next; // the first index that no worker has taken
    size_t count;
    std::atomic<size_t> busyWith[1]; // for each worker: the index it works on; count if none
};

// Held while workers are started, reaped or signalled: the id of a reaped one may belong to another process.
static std::mutex workersMutex;
static std::vector<Worker> workers;

void PrepareProcess()
{
    // If stderr is closed, the next opened file gets its descriptor and reports are written into that file.
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
    // link() fails if the new name exists. Where hard links aren't supported, check the name before the
    // rename.
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

bool RemoveEmptyFolder(const fs::path &folder)
{
    return rmdir(folder.c_str()) == 0;
}

bool CanSplitProcesses()
{
    return true;
}

static sigset_t interruptSignals;
static pthread_t interruptThread;
static std::binary_semaphore interruptThreadWaits{0};

static void InterruptWorkers(int number)
{
    workersMutex.lock(); // never unlocked: no other worker may start
    for (const Worker &worker : workers)
        kill(worker.id, number);
    for (const Worker &worker : workers)
        waitpid(worker.id, nullptr, 0);
}

// A signal handler must not remove folders; a thread that waits for the signal may.
static void *WaitForInterrupt(void *)
{
    int number = 0;
    interruptThreadWaits.release();
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
        // Leaves a signal ignored if the parent process set it so.
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            sigaddset(&interruptSignals, number);
    }
    pthread_sigmask(SIG_BLOCK, &interruptSignals, nullptr);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    // Enough to remove folders. The default of several megabytes may fail if memory is limited.
    pthread_attr_setstacksize(&attributes, 256 * 1024);
    if (pthread_create(&interruptThread, &attributes, WaitForInterrupt, nullptr) == 0) {
        std::atexit(EndWaiting);
        // A thread that is starting may hold locks of the allocator. fork would copy them locked.
        interruptThreadWaits.acquire();
    } else {
        pthread_sigmask(SIG_UNBLOCK, &interruptSignals, nullptr);
    }
    pthread_attr_destroy(&attributes);
}

static bool WriteFully(int pipe, const std::string &bytes)
{
    const char *from = bytes.data();
    for (size_t size = bytes.size(); size > 0;) {
        const ssize_t length = write(pipe, from, size);
        if (length <= 0)
            return false;
        from += length;
        size -= static_cast<size_t>(length);
    }
    return true;
}

static bool DoTasks(TaskList *tasks, const Worker &self, const std::function<std::string(size_t)> &work)
{
    for (size_t index; (index = tasks->next++) < tasks->count;) {
        tasks->busyWith[self.place] = index;
        const std::string answer = work(index);
        const AnswerHead head = {index, answer.size()};
        if (!WriteFully(self.answers,
                        std::string(reinterpret_cast<const char *>(&head), sizeof head) + answer))
            return false;
        tasks->busyWith[self.place] = tasks->count;
    }
    return true;
}

// fork copies only the calling thread, so the child starts its own interrupt thread. _Exit skips the exit
// handlers of the parent.
[[noreturn]] static void WorkAsChild(TaskList *tasks, const Worker &self,
                                     const std::function<std::string(size_t)> &work, void (*cleanUp)())
{
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGTERM); // a killed parent can't end its workers
#endif
    interrupted = false;
    interruptCleanUp = nullptr;
    CleanUpWhenInterrupted(cleanUp);
    bool done = false;
    try {
        done = DoTasks(tasks, self, work);
    } catch (const std::exception &) { // the parent reports the missing answer
    }
    cleanUp();
    StopIfInterrupted();
    std::_Exit(done ? exitDone : exitFailed);
}

// Returns why no worker was started; empty on success.
static std::string StartWorker(TaskList *tasks, size_t place, const std::function<std::string(size_t)> &work,
                               void (*cleanUp)())
{
    int answers[2];
    if (pipe(answers) != 0)
        return std::strerror(errno);
    std::fflush(nullptr); // else both processes would write the buffered output
    std::unique_lock lock(workersMutex);
    tasks->busyWith[place] = tasks->count;
    const pid_t id = fork();
    const int reason = errno;
    if (id == 0) {
        for (const Worker &other : workers)
            close(other.answers);
        workers.clear();
        lock.unlock();
        close(answers[0]);
        WorkAsChild(tasks, {0, answers[1], place, ""}, work, cleanUp);
    }
    close(answers[1]);
    if (id > 0) {
        workers.push_back({id, answers[0], place, ""});
        return "";
    }
    close(answers[0]);
    return std::strerror(reason);
}

// Reads from the worker's pipe. False at its end.
static bool ReadAnswers(Worker *worker)
{
    char block[65536];
    const ssize_t length = read(worker->answers, block, sizeof block);
    if (length > 0)
        worker->bytes.append(block, static_cast<size_t>(length));
    return length > 0 || (length < 0 && (errno == EINTR || errno == EAGAIN));
}

using Finished = std::function<void(size_t, const std::string &answer, const std::string &failure)>;

// Passes complete answers to finished.
static void TakeAnswers(Worker *worker, const Finished &finished)
{
    AnswerHead head;
    size_t at = 0;
    for (; worker->bytes.size() - at >= sizeof head; at += sizeof head + head.size) {
        std::memcpy(&head, worker->bytes.data() + at, sizeof head);
        if (worker->bytes.size() - at - sizeof head < head.size)
            break;
        finished(head.index, worker->bytes.substr(at + sizeof head, head.size), "");
    }
    worker->bytes.erase(0, at);
}

// Waits for the end of a worker and returns the reason.
static std::string Reap(const Worker &worker)
{
    int status = 0;
    close(worker.answers);
    if (waitpid(worker.id, &status, 0) != worker.id)
        return "its process is lost";
    if (WIFSIGNALED(status))
        return std::string("its process was ended by a signal: ") + strsignal(WTERMSIG(status));
    return "its process failed";
}

static Worker EndWorker(size_t number, std::string *failure)
{
    const std::lock_guard lock(workersMutex);
    const Worker ended = workers[number];
    workers.erase(workers.begin() + static_cast<ptrdiff_t>(number));
    *failure = Reap(ended);
    return ended;
}

// Waits for an answer and then 2 ms more, to handle answers of several workers at once.
static std::vector<pollfd> WaitForAnswers()
{
    std::vector<pollfd> pipes;
    for (const Worker &worker : workers)
        pipes.push_back({worker.answers, POLLIN, 0});
    poll(pipes.data(), pipes.size(), -1);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    poll(pipes.data(), pipes.size(), 0);
    return pipes;
}

static TaskList *MakeTaskList(size_t count, size_t workerCount)
{
    const size_t size = sizeof(TaskList) + workerCount * sizeof(std::atomic<size_t>);
    void *memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    auto *tasks = new (memory) TaskList();
    tasks->count = count;
    return tasks;
}

void RunInProcesses(size_t count, size_t atOnce, const std::function<std::string(size_t)> &work,
                    void (*cleanUp)(), const Finished &finished)
{
    TaskList *const tasks = MakeTaskList(count, atOnce);
    // A worker may be killed after it has answered, or after it has taken an index that nobody knows of.
    std::vector<bool> isFinished(count);
    const Finished finish = [&](size_t index, const std::string &answer, const std::string &failure) {
        if (!isFinished[index])
            finished(index, answer, failure);
        isFinished[index] = true;
    };
    std::string why = "its process is lost";
    const auto start = [&](size_t place) {
        const std::string failure = StartWorker(tasks, place, work, cleanUp);
        if (!failure.empty())
            why = "no process can be started: " + failure;
        return failure.empty();
    };
    for (size_t i = 0; i < std::min(atOnce, count) && start(i); ++i) {
    }
    while (!workers.empty()) {
        const std::vector<pollfd> pipes = WaitForAnswers();
        for (size_t i = pipes.size(); i-- > 0;) {
            if (pipes[i].revents == 0 || ReadAnswers(&workers[i])) {
                TakeAnswers(&workers[i], finish);
                continue;
            }
            std::string failure;
            const Worker ended = EndWorker(i, &failure);
            const size_t index = tasks->busyWith[ended.place];
            if (index < count)
                finish(index, "", failure);
            if (index < count && tasks->next < count)
                start(ended.place);
        }
    }
    for (size_t index = 0; index < count; ++index)
        finish(index, "", why);
    munmap(static_cast<void *>(tasks), sizeof(TaskList) + atOnce * sizeof(std::atomic<size_t>));
}

#endif
