// What became of a scene.
#ifndef MC3DS_HOST_RESULT_H
#define MC3DS_HOST_RESULT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Warnings that say the same of different things.
struct WarningKind {
    std::string kind;  // the text with '*' for names and numbers
    std::string first; // the first of them in full
    size_t count;
};

struct WrittenFile {
    std::string name;
    uintmax_t size; // bytes
};

struct SceneResult {
    std::string scene; // its path, as the user would type it
    bool done = false;
    std::string error;  // the first one
    uint64_t bytes = 0; // in the scene's file
    uint64_t objects = 0, vertices = 0, triangles = 0;
    double seconds = 0.0;
    std::vector<WrittenFile> written;
    std::vector<std::string> kept; // files that were there already and left alone
    std::vector<WarningKind> warnings;
    std::string said; // lines for stderr that were kept
};

// ---- summary.cpp

// Between processes: bytes that UnpackResult makes the same result of. False for other bytes.
std::string PackResult(const SceneResult &result);
bool UnpackResult(const std::string &bytes, SceneResult *result);
size_t WarningCount(const SceneResult &result);
// One line of what was done.
std::string TotalsLine(const std::vector<SceneResult> &results, double seconds);
// False, with its report, when WriteSummary is bound to fail.
bool SummaryHasPlace(const std::string &name);
// Brings all results to a file, whole or not at all. False, with its report, when that can't be.
bool WriteSummary(const std::string &name, bool noClobber, const std::vector<SceneResult> &results,
                  double seconds);

#endif
