// Converts all scenes of a run, one by one or in parallel.
#ifndef MC3DS_HOST_RUN_H
#define MC3DS_HOST_RUN_H

#include "../files/files.h"

// ---- target_check.cpp

// Returns false after a report if two scenes would write the same file, or one would overwrite another.
bool TargetsAreApart(const HostOptions &options, const std::vector<SceneJob> &jobs);

// ---- packed_result.cpp

// Converts a result to bytes and back. UnpackResult returns false for invalid bytes.
std::string PackResult(SceneResult *result);
bool UnpackResult(const std::string &bytes, SceneResult *result);

// ---- progress.cpp: a line at the bottom of the terminal

// Totals of the run. Without this call nothing is shown.
void StartProgress(size_t scenes, uint64_t bytes);
// Shows a scene that starts or has just ended: its number from 1, its name and the bytes left to read.
void ShowScene(size_t number, const std::string &scene, uint64_t bytes);
// Adds the bytes of a finished scene.
void CountBytes(uint64_t bytes);
void EndProgress();

// ---- batch.cpp

// Converts all scenes. Returns the exit status.
int ConvertAll(const HostOptions &options);

#endif
