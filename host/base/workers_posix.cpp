// Work that is shared out among several processes, on POSIX systems.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <poll.h>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "interrupts.h"

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

static std::vector<Worker> workers;

bool CanSplitProcesses()
{
    return true;
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

// _Exit skips the exit handlers of the parent.
[[noreturn]] static void WorkAsChild(TaskList *tasks, const Worker &self,
                                     const std::function<std::string(size_t)> &work, void (*cleanUp)())
{
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
    tasks->busyWith[place] = tasks->count;
    const pid_t id = StartChild();
    const int reason = errno;
    if (id == 0) {
        for (const Worker &other : workers)
            close(other.answers);
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

static Worker EndWorker(size_t number, std::string *failure)
{
    const Worker ended = workers[number];
    workers.erase(workers.begin() + static_cast<ptrdiff_t>(number));
    close(ended.answers);
    const int status = ReapChild(ended.id);
    *failure = "its process failed";
    if (WIFSIGNALED(status))
        *failure = std::string("its process was ended by a signal: ") + strsignal(WTERMSIG(status));
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
