// Used only in this folder: the handling of interrupts and child processes.
#ifndef MC3DS_HOST_INTERRUPTS_H
#define MC3DS_HOST_INTERRUPTS_H

#include <sys/types.h>

#include "base.h"

// ---- process.cpp

// Waits for the end of a hold. Then IsInterrupted is true in all threads but this one.
void BeginCleanUp();
// For a child process: forgets what was copied from its parent.
void ForgetInterrupts();
// true: StopIfInterrupted returns, as this process only collects the results of others.
void CollectResults(bool collects);
bool CollectsResults();
// Whether an interrupt is being handled, whatever the thread.
bool IsCleaningUp();

// ---- interrupts_posix.cpp

// Forks. An interrupt of this process also ends the child. The child has no clean-up of its own yet. Returns
// -1 and sets errno on failure, after an interrupt too.
pid_t StartChild();
// Waits for the end of a child and returns its status for waitpid's macros.
int ReapChild(pid_t id);

#endif
