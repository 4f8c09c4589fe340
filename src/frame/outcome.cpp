#include "outcome.h"

#include <cerrno>

static Mc3dsOutcome outcome;

const Mc3dsOutcome *Mc3dsGetOutcome()
{
    return &outcome;
}

void Mc3dsResetOutcome()
{
    outcome = {};
}

void Mc3dsNoteLackOfMemory()
{
    outcome.outOfMemory = true;
}

void Mc3dsNoteNoScene()
{
    outcome.isNoScene = true;
}

void Mc3dsNoteOpenError(int error)
{
    outcome.openError = error != 0 ? error : EIO;
}

void Mc3dsNoteOutputFile()
{
    ++outcome.openedFiles;
}

void Mc3dsNoteFailedStep(Mc3dsFileStep step, int error)
{
    if (outcome.failedStep != Mc3dsFileStep::None)
        return;
    outcome.failedStep = step;
    outcome.failedError = error != 0 ? error : EIO;
    outcome.failedFile = outcome.openedFiles - 1;
}
