// Interrupts on POSIX systems, and the child processes that they end too.
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <pthread.h>
#include <semaphore>
#include <vector>
#if defined(__linux__)
#include <sys/prctl.h>
#endif
#include <sys/wait.h>
#include <unistd.h>

#include "interrupts.h"

static void (*interruptCleanUp)();
static sigset_t interruptSignals;
static pthread_t interruptThread;
static std::binary_semaphore interruptThreadWaits{0};

// Held while children are started, reaped or signalled: the id of a reaped one may belong to another process.
static std::mutex childrenMutex;
static std::vector<pid_t> children;

static void InterruptChildren(int number)
{
    childrenMutex.lock(); // never unlocked: no other child may start
    for (const pid_t id : children)
        kill(id, number);
    for (const pid_t id : children)
        waitpid(id, nullptr, 0);
}

// A signal handler must not remove folders; a thread that waits for the signal may.
static void *WaitForInterrupt(void *)
{
    int number = 0;
    interruptThreadWaits.release();
    if (sigwait(&interruptSignals, &number) != 0)
        return nullptr;
    BeginCleanUp();
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

pid_t StartChild()
{
    const std::lock_guard lock(childrenMutex);
    children.reserve(children.size() + 1); // a child that isn't listed would never end
    const pid_t id = fork();
    if (id > 0)
        children.push_back(id);
    if (id == 0) {
        // fork copies only the calling thread.
        EndCleanUp();
        interruptCleanUp = nullptr;
        children.clear();
#if defined(__linux__)
        prctl(PR_SET_PDEATHSIG, SIGTERM); // a killed parent can't end its children
#endif
    }
    return id;
}

int ReapChild(pid_t id)
{
    const std::lock_guard lock(childrenMutex);
    int status = 0;
    waitpid(id, &status, 0);
    std::erase(children, id);
    return status;
}
