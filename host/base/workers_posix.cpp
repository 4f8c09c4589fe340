// Work that is shared out among several processes, on POSIX systems.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "interrupts.h"

// A process that takes indices from one pipe and writes answers to another: a size and then its bytes.
struct Worker {
    pid_t id;
    int tasks; // closed, -1: it gets no more
    int answers;
    std::deque<size_t> given = {}; // indices without an answer; it works on the first
    std::string bytes = {};        // read from the pipe and not handled yet
};

// The run as its parent sees it.
struct Crew {
    std::deque<size_t> waiting = {}; // indices that no worker has
    std::vector<Worker> workers = {};
    const std::function<std::string(size_t)> &work;
    void (*cleanUp)();
    std::string whyNoWorker = {};
};

bool CanSplitProcesses()
{
    return true;
}

static bool WriteFully(int pipe, const void *bytes, size_t size)
{
    const char *from = static_cast<const char *>(bytes);
    while (size > 0) {
        const ssize_t length = write(pipe, from, size);
        if (length <= 0) // unnoticed
            return false;
        from += length;
        size -= static_cast<size_t>(length);
    }
    return true;
}

static bool DoTasks(int tasks, int answers, const std::function<std::string(size_t)> &work)
{
    for (size_t index; read(tasks, &index, sizeof index) == sizeof index;) {
        const std::string answer = work(index);
        const size_t size = answer.size();
        const bool done = WriteFully(answers, &size, sizeof size) && WriteFully(answers, answer.data(), size);
        ReleaseInterrupts(); // now the parent knows which files were delivered
        if (!done)
            return false;
    }
    return true;
}

// _Exit skips the exit handlers of the parent.
[[noreturn]] static void WorkAsChild(int tasks, int answers, const Crew &crew)
{
    CleanUpWhenInterrupted(crew.cleanUp);
    bool done = false;
    try {
        done = DoTasks(tasks, answers, crew.work);
    } catch (const std::exception &) { // the parent reports the missing answer
    }
    crew.cleanUp();
    StopIfInterrupted();
    std::_Exit(done ? exitDone : exitFailed);
}

// Opens two pipes. False, with errno set and both closed, if that fails.
static bool OpenPipes(int tasks[2], int answers[2])
{
    if (pipe(tasks) != 0)
        return false;
    if (pipe(answers) == 0)
        return true;
    const int reason = errno;
    close(tasks[0]);
    close(tasks[1]);
    errno = reason;
    return false;
}

// False, with the reason in whyNoWorker, if no worker can be started.
static bool StartWorker(Crew *crew)
{
    int tasks[2], answers[2];
    crew->workers.reserve(crew->workers.size() + 1); // before the fork: a worker must not be forgotten
    if (!OpenPipes(tasks, answers)) {
        crew->whyNoWorker = std::strerror(errno);
        return false;
    }
    std::fflush(nullptr); // else both processes would write the buffered output
    const pid_t id = StartChild();
    const int reason = errno;
    if (id == 0) {
        // A pipe ends only when all its writers are closed.
        for (const Worker &other : crew->workers) {
            close(other.tasks);
            close(other.answers); // unnoticed
        }
        close(tasks[1]);
        close(answers[0]);
        WorkAsChild(tasks[0], answers[1], *crew);
    }
    close(tasks[0]);
    close(answers[1]);
    if (id > 0) {
        crew->workers.push_back({.id = id, .tasks = tasks[1], .answers = answers[0]});
        return true;
    }
    close(tasks[1]);
    close(answers[0]);
    crew->whyNoWorker = std::strerror(reason);
    return false;
}

// While there is much to do, gives the worker one index more than it works on, so that it needn't wait. One
// without work gets its pipe closed, which ends it. Two indices fit into a pipe, so the parent never waits.
static void Deal(Crew *crew, Worker *worker)
{
    const size_t most = crew->waiting.size() > 4 * crew->workers.size() ? 2 : 1;
    while (worker->tasks >= 0 && worker->given.size() < most && !crew->waiting.empty()) {
        const size_t index = crew->waiting.front();
        if (!WriteFully(worker->tasks, &index, sizeof index))
            return; // it has died, which the other pipe shows
        worker->given.push_back(index);
        crew->waiting.pop_front();
    }
    if (worker->tasks >= 0 && (worker->given.empty() || IsCleaningUp())) {
        close(worker->tasks);
        worker->tasks = -1;
    }
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
    size_t at = 0;
    for (size_t size; worker->bytes.size() - at >= sizeof size; at += sizeof size + size) {
        std::memcpy(&size, worker->bytes.data() + at, sizeof size);
        if (worker->bytes.size() - at - sizeof size < size || worker->given.empty())
            break;
        const size_t index = worker->given.front();
        worker->given.pop_front();
        finished(index, worker->bytes.substr(at + sizeof size, size), "");
    }
    worker->bytes.erase(0, at);
}

// Removes a worker whose pipe has ended. Of the indices that it had, the first has failed with it.
static void EndWorker(Crew *crew, size_t number, const Finished &finished)
{
    const Worker ended = std::move(crew->workers[number]);
    crew->workers.erase(crew->workers.begin() + static_cast<ptrdiff_t>(number));
    close(ended.answers);
    if (ended.tasks >= 0)
        close(ended.tasks);
    const int status = ReapChild(ended.id);
    if (ended.given.empty() || IsCleaningUp())
        return;
    crew->waiting.insert(crew->waiting.begin(), ended.given.begin() + 1, ended.given.end());
    finished(ended.given.front(), "",
             WIFSIGNALED(status)
                 ? std::string("its process was ended by a signal: ") + strsignal(WTERMSIG(status))
                 : "its process failed");
    if (!crew->waiting.empty())
        StartWorker(crew);
}

// Handles what the workers have sent, from the last to the first, as ended ones are removed.
static void HandleAnswers(Crew *crew, const Finished &finished)
{
    std::vector<pollfd> pipes;
    for (const Worker &worker : crew->workers)
        pipes.push_back({worker.answers, POLLIN, 0});
    poll(pipes.data(), pipes.size(), -1);
    for (size_t i = pipes.size(); i-- > 0;) {
        if (pipes[i].revents == 0)
            continue;
        if (!ReadAnswers(&crew->workers[i])) {
            EndWorker(crew, i, finished);
            continue;
        }
        TakeAnswers(&crew->workers[i], finished);
        Deal(crew, &crew->workers[i]);
    }
}

void RunInProcesses(size_t count, size_t atOnce, const std::function<std::string(size_t)> &work,
                    void (*cleanUp)(), const Finished &finished)
{
    Crew crew = {.work = work, .cleanUp = cleanUp};
    for (size_t index = 0; index < count; ++index)
        crew.waiting.push_back(index);
    CollectResults(true);
    for (size_t i = 0; i < std::min(atOnce, count) && StartWorker(&crew); ++i) {
    }
    while (!crew.workers.empty()) {
        for (Worker &worker : crew.workers)
            Deal(&crew, &worker);
        HandleAnswers(&crew, finished);
    }
    CollectResults(false);
    StopIfInterrupted();
    for (const size_t index : crew.waiting)
        finished(index, "", "no process can be started: " + crew.whyNoWorker);
}
