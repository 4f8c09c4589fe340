// Interrupts on POSIX systems, and the child processes that they end too.
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <pthread.h>
#include <semaphore>
#include <thread>
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

// What happens first decides: an interrupt, or the end of the program.
enum class Ending { None, Interrupt, Normal };
static std::atomic<Ending> ending;

static bool DecideEnding(Ending wanted)
{
    Ending none = Ending::None;
    return ending.compare_exchange_strong(none, wanted);
}

static bool HasChildren(int number)
{
    const std::lock_guard lock(childrenMutex);
    for (const pid_t id : children) {
        kill(id, number);
        kill(id, SIGCONT); // a stopped one gets the signal only when it goes on
    }
    return !children.empty();
}

// The thread that started the children goes on collecting what they still send, and reaps them.
static void InterruptChildren(int number)
{
    constexpr int grace = 200; // times 10 ms
    HasChildren(number);
    for (int i = 0; CollectsResults() && i < 2 * grace; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (i >= grace)
            HasChildren(SIGKILL);
    }
}

// A signal handler must not remove folders; a thread that waits for the signal may.
static void *WaitForInterrupt(void *)
{
    int number = 0;
    interruptThreadWaits.release();
    if (sigwait(&interruptSignals, &number) != 0 || !DecideEnding(Ending::Interrupt))
        return nullptr;
    BeginCleanUp();
    InterruptChildren(number);
    CollectResults(false);
    interruptCleanUp();
    signal(number, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &interruptSignals, nullptr);
    raise(number);
    std::_Exit(exitFailed);
}

// The clean-up after an interrupt is never cancelled: it ends the program.
static void EndWaiting()
{
    if (DecideEnding(Ending::Normal))
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
    if (IsCleaningUp()) {
        errno = EINTR;
        return -1;
    }
    children.reserve(children.size() + 1); // a child that isn't listed would never end
    const pid_t id = fork();
    if (id > 0)
        children.push_back(id);
    if (id == 0) {
        // fork copies only the calling thread.
        ForgetInterrupts();
        ending = Ending::None;
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
