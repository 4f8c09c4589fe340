// What processes need on each system.
#include <atomic>
#include <chrono>
#include <random>
#include <thread>

#include "interrupts.h"

static std::atomic<bool> interrupted;
static thread_local bool cleansUp; // true in the thread that handles an interrupt

void BeginCleanUp()
{
    interrupted = cleansUp = true;
}

void EndCleanUp()
{
    interrupted = false;
}

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
    std::random_device source;
    std::string text;
    for (int i = 0; i < 8; ++i)
        text += "0123456789abcdefghijklmnopqrstuv"[source() % 32];
    return text;
}
