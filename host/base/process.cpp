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

bool RemoveEmptyFolder(const fs::path &folder)
{
    std::error_code failure;
    return fs::remove(folder, failure);
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
#include <sys/mman.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif
#include <sys/wait.h>
#include <unistd.h>

// A process that works for this one until there is nothing left to do.
struct Worker {
    pid_t id;
    int answers;       // a pipe: AnswerHead and as many bytes, again and again
    size_t place;      // its own among those in TaskList
    std::string bytes; // that were read from the pipe
};

struct AnswerHead {
    size_t index, size;
};

// What workers share with the process that started them.
struct TaskList {
    std::atomic<size_t> next; // the first index that nobody has taken
    size_t count;
    std::atomic<size_t> busyWith[1]; // for each worker: the index that it works at; count: none
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

// A process has the threads of its own alone, and leaves without what its parent planned to do at the end.
[[noreturn]] static void WorkAsChild(TaskList *tasks, const Worker &self,
                                     const std::function<std::string(size_t)> &work)
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
        done = DoTasks(tasks, self, work);
    } catch (const std::exception &) { // the parent tells that there is no answer
    }
    cleanUp();
    StopIfInterrupted();
    std::_Exit(done ? exitDone : exitFailed);
}

// Empty when a worker runs, else the reason why it doesn't.
static std::string StartWorker(TaskList *tasks, size_t place, const std::function<std::string(size_t)> &work)
{
    int answers[2];
    if (pipe(answers) != 0)
        return std::strerror(errno);
    std::fflush(nullptr); // what waits to be written would be written twice
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
        WorkAsChild(tasks, {0, answers[1], place, ""}, work);
    }
    close(answers[1]);
    if (id > 0) {
        workers.push_back({id, answers[0], place, ""});
        return "";
    }
    close(answers[0]);
    return std::strerror(reason);
}

// Takes what the worker has to say. False when it says nothing any more.
static bool ReadAnswers(Worker *worker)
{
    char block[65536];
    const ssize_t length = read(worker->answers, block, sizeof block);
    if (length > 0)
        worker->bytes.append(block, static_cast<size_t>(length));
    return length > 0 || (length < 0 && (errno == EINTR || errno == EAGAIN));
}

using Finished = std::function<void(size_t, const std::string &answer, const std::string &failure)>;

// Hands on the answers that have come whole.
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

// Why a worker ended.
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

// Sleeps until a worker has something to say, and a little longer: of what several say it is woken once.
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
                    const Finished &finished)
{
    TaskList *const tasks = MakeTaskList(count, atOnce);
    std::string why;
    for (size_t i = 0; i < std::min(atOnce, count) && (why = StartWorker(tasks, i, work)).empty(); ++i) {
    }
    while (!workers.empty()) {
        const std::vector<pollfd> pipes = WaitForAnswers();
        for (size_t i = pipes.size(); i-- > 0;) {
            if (pipes[i].revents == 0 || ReadAnswers(&workers[i])) {
                TakeAnswers(&workers[i], finished);
                continue;
            }
            std::string failure;
            const Worker ended = EndWorker(i, &failure);
            const size_t index = tasks->busyWith[ended.place];
            if (index < count)
                finished(index, "", failure);
            if (index < count && tasks->next < count)
                why = StartWorker(tasks, ended.place, work);
        }
    }
    for (size_t index; (index = tasks->next++) < count;)
        finished(index, "", "no process can be started: " + why);
    munmap(static_cast<void *>(tasks), sizeof(TaskList) + atOnce * sizeof(std::atomic<size_t>));
}

#endif
