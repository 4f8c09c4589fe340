// Failures of the newest call, for programs that link the objects of the library. No function of the public
// interface returns them.
#ifndef MC3DS_FRAME_OUTCOME_H
#define MC3DS_FRAME_OUTCOME_H

#include <cstdint>

enum class Mc3dsFileStep : uint8_t { None, Open, Write, Flush, Close };

// Reset by each call of Mc3dsLoadFile and Mc3dsOutput.
struct Mc3dsOutcome {
    bool outOfMemory;         // an allocation failed
    bool isNoScene;           // the file is no 3D Studio file
    int openError;            // errno of opening the scene's file; 0 if it was opened
    Mc3dsFileStep failedStep; // of the first output file that failed
    int failedError;          // its errno
    uint32_t failedFile;      // its index in the order in which the call opens its output files
    uint32_t openedFiles;     // output files that the call has opened or failed to open
};

const Mc3dsOutcome *Mc3dsGetOutcome();

// ---- for the library

void Mc3dsResetOutcome();
void Mc3dsNoteLackOfMemory();
void Mc3dsNoteNoScene();
void Mc3dsNoteOpenError(int error);
// Begins the next output file.
void Mc3dsNoteOutputFile();
// A step of the current output file failed. Only the first failure of the call is kept. error 0 counts as
// EIO.
void Mc3dsNoteFailedStep(Mc3dsFileStep step, int error);

#endif
