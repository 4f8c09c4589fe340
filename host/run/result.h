// The results of a run as data: what was done with each scene.
#ifndef MC3DS_HOST_RESULT_H
#define MC3DS_HOST_RESULT_H

#include "../scene/scene.h"

struct WrittenFile {
    std::string name;
    uint64_t size = 0; // bytes
};

// A new field must be named in packed_result.cpp too, which doesn't compile without it.
struct SceneResult {
    std::string scene; // its path, as the user would type it
    bool done = false;
    std::string error;          // the first one
    uint64_t bytes = 0;         // size of the scene's file
    GeometryCounts read, model; // model: what was written or built
    double seconds = 0.0;
    std::vector<WrittenFile> written;
    std::vector<std::string> kept;            // existing files that were not replaced
    std::vector<Finding> warnings;            // each kind once, the most important first
    std::vector<Finding> notes;               // remarks that don't count as warnings
    bool isRestored = false;                  // --restore was asked for
    std::vector<Finding> restored;            // what it did
    std::vector<std::string> missingTextures; // only filled for --report
    std::string picture;                      // a PNG file's bytes; empty without --report
    std::string said;                         // lines for stderr, kept by Reporter.keepsLines
};

// ---- totals.cpp

// A kind of warning in a run, with the scenes that have it.
struct RunKind {
    Finding first;
    std::string firstScene;
    size_t scenes, times;
};

struct RunTotals {
    size_t scenes = 0, failed = 0, kept = 0;
    size_t warned = 0, withLosses = 0; // of those that didn't fail
    size_t warnings = 0;               // of all scenes
    uint64_t bytes = 0;                // of all scene files
    GeometryCounts read, model;
    std::vector<RunKind> kinds; // the one of most scenes first
};

RunTotals AddUp(const std::vector<SceneResult> &results);
bool HasLosses(const SceneResult &result);
// Whether both are one warning.
bool AreOneKind(const Finding &a, const Finding &b);

// ---- packed_result.cpp

// Converts a result to bytes and back. UnpackResult returns false for invalid bytes.
std::string PackResult(SceneResult *result);
bool UnpackResult(const std::string &bytes, SceneResult *result);

#endif
