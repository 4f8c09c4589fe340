// Many scenes in one run.
#ifndef MC3DS_HOST_BATCH_H
#define MC3DS_HOST_BATCH_H

#include "host.h"

struct SceneJob {
    std::string scene;  // its path, as the user would type it
    std::string output; // OUTPUT for it; empty: as the options say
    uint64_t bytes;     // in its file; 0 if unknown
};

// ---- scene_list.cpp

// The scenes that the options name, in their order, those of a folder sorted. False, with its reports, when
// a folder could not be read or has none; the others are there all the same.
bool ListScenes(const HostOptions &options, std::vector<SceneJob> *jobs);
// The options as they are for one of the scenes.
HostOptions OptionsFor(const HostOptions &options, const SceneJob &job);

// ---- target_check.cpp

// False, with its report, when two scenes would write one file, or one would write over another.
bool TargetsAreApart(const HostOptions &options, const std::vector<SceneJob> &jobs);

// ---- progress.cpp: a line at the bottom of the terminal

// Scenes and bytes of the whole run. Without this call nothing is shown.
void StartProgress(size_t scenes, uint64_t bytes);
// The number of a scene, from 1, that begins or has just ended, and the bytes in it that are to be read.
void ShowScene(size_t number, const std::string &scene, uint64_t bytes);
// Bytes of a scene that is done with.
void CountBytes(uint64_t bytes);
void EndProgress();

// ---- convert.cpp: everything for one scene, with its reports

SceneResult ConvertScene(const HostOptions &options, const SceneJob &job, bool oneOfMany);

// ---- batch.cpp

// All scenes. Returns the exit status.
int ConvertAll(const HostOptions &options);

#endif
