// Converts the scenes of a run, one by one or in parallel.
#ifndef MC3DS_HOST_BATCH_H
#define MC3DS_HOST_BATCH_H

#include "../files/files.h"

// ---- target_check.cpp

// Keeps scenes of a run from writing over each other's files: with --output-dir the later of two scenes with
// the same names gets a number; else both are refused. Returns false after a report if the summary or the
// page would be a file of a scene.
bool PlanRun(const HostOptions &options, std::vector<SceneJob> *jobs, Reporter *reporter);

// ---- convert.cpp: everything for one scene, with its reports

// Returns why the files of a scene must not be opened, as with a pipe or device that may never end; empty if
// they may be.
std::string WhyNotRegular(const std::string &scenePath);
SceneResult ConvertScene(const HostOptions &options, const SceneJob &job, Reporter *reporter);

// ---- progress.cpp: a line at the bottom of the terminal

struct Progress {
    bool isOn = false;
    size_t scenes = 0, number = 0; // of the run; of the current one, from 1
    std::string scene = {};
    uint64_t bytes = 0, bytesDone = 0; // of all scene files
    uint64_t sceneBytes = 0, sceneBytesRead = 0;
    bool isWriting = false;
    double start = 0.0, lastDrawn = 0.0; // seconds
    Reporter *reporter = nullptr;
};

// Totals of the run. Without this call nothing is shown.
void StartProgress(Progress *progress, Reporter *reporter, const std::vector<SceneJob> &jobs);
// Shows a scene that starts or has just ended: its number from 1, its name and the bytes left to read.
void ShowScene(Progress *progress, size_t number, const std::string &scene, uint64_t bytes);
// Adds the bytes of a finished scene.
void CountBytes(Progress *progress, uint64_t bytes);
void EndProgress(Progress *progress);

// ---- batch.cpp

// Converts all scenes. Returns the exit status.
int ConvertAll(const HostOptions &options, Reporter *reporter);

#endif
