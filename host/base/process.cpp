// What processes need on each system.
#include <atomic>
#include <chrono>
#include <random>
#include <thread>

#include "interrupts.h"

static std::atomic<bool> requested, interrupted, held, collects;
static thread_local bool cleansUp; // true in the thread that handles an interrupt

static void Pause()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

void BeginCleanUp()
{
    requested = cleansUp = true;
    while (held)
        Pause();
    interrupted = true;
}

void ForgetInterrupts()
{
    requested = interrupted = held = collects = false;
}

void CollectResults(bool isCollecting)
{
    collects = isCollecting;
}

bool CollectsResults()
{
    return collects;
}

bool IsCleaningUp()
{
    return interrupted;
}

bool IsInterrupted()
{
    return interrupted && !cleansUp && !collects;
}

void StopIfInterrupted()
{
    while (IsInterrupted())
        Pause();
}

// Either the hold is seen by the clean-up, which waits, or the request is seen here.
void HoldInterrupts()
{
    if (cleansUp)
        return;
    held = true;
    if (!requested)
        return;
    held = false;
    while (!collects)
        Pause();
}

void ReleaseInterrupts()
{
    if (!cleansUp)
        held = false;
}

std::string RandomText()
{
    std::random_device source;
    std::string text;
    for (int i = 0; i < 8; ++i) // unnoticed
        text += "0123456789abcdefghijklmnopqrstuv"[source() % 32];
    return text;
}
