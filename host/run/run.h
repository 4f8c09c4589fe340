// A run over scenes, one by one or side by side.
#ifndef MC3DS_HOST_RUN_H
#define MC3DS_HOST_RUN_H

#include "../files/files.h"

// ---- target_check.cpp

// False, with its report, when two scenes would write one file, or one would write over another.
bool TargetsAreApart(const HostOptions &options, const std::vector<SceneJob> &jobs);

// ---- packed_result.cpp

// Bytes that UnpackResult makes the same result of. False for other bytes.
std::string PackResult(SceneResult *result);
bool UnpackResult(const std::string &bytes, SceneResult *result);

// ---- progress.cpp: a line at the bottom of the terminal

// Scenes and bytes of the whole run. Without this call nothing is shown.
void StartProgress(size_t scenes, uint64_t bytes);
// The number of a scene, from 1, that begins or has just ended, and the bytes in it that are to be read.
void ShowScene(size_t number, const std::string &scene, uint64_t bytes);
// Bytes of a scene that is done with.
void CountBytes(uint64_t bytes);
void EndProgress();

// ---- batch.cpp

// All scenes. Returns the exit status.
int ConvertAll(const HostOptions &options);

#endif
