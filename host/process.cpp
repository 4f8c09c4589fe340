// The few things about processes that differ from system to system.
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "host.h"

static void (*interruptCleanUp)();
static std::atomic<bool> interrupted;

void StopIfInterrupted()
{
    while (interrupted)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

#if defined(_WIN32)

void PrepareProcess()
{
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
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

void PrepareProcess()
{
    // With stderr closed the next file to be opened would get its number, and reports would go into that.
    for (int number = 0; number <= 2; ++number)
        if (fcntl(number, F_GETFD) < 0 && open("/dev/null", O_RDONLY) != number)
            std::_Exit(exitFailed);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

static sigset_t interruptSignals;
static pthread_t interruptThread;

// No signal handler may walk folders and remove them; a thread that waits for the signal may.
static void *WaitForInterrupt(void *)
{
    int number = 0;
    if (sigwait(&interruptSignals, &number) != 0)
        return nullptr;
    interrupted = true;
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

#endif
