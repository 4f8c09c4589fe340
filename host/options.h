// The command line.
#ifndef MC3DS_HOST_OPTIONS_H
#define MC3DS_HOST_OPTIONS_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "mcl3ds20.h"
#include "preview.h"

// Exit statuses of the program.
constexpr int exitDone = 0;
constexpr int exitFailed = 1;
constexpr int exitUsage = 2;

constexpr unsigned jobsMost = 256;

// Stands for the standard output where an output is named.
constexpr char standardOutputName[] = "-";

// What the user asked for. The values here are the defaults.
struct HostOptions {
    std::vector<std::string> scenes; // files, and with recursive folders too
    std::string output;              // empty: the scene's name with another extension
    std::string outputDir;           // empty: beside the scene
    std::string headerFile;          // empty: the output's name with another extension, as below
    std::string animationFile;
    std::string previewFile; // empty: none; of many scenes, each puts its own name ahead
    std::string summaryFile; // empty: none
    std::string clumpName;   // empty: made from the scene's name
    std::string textureExtension;
    uint32_t flags = 0;
    uint32_t surfaceFlags = MC3DS_TEXTURES;
    uint32_t hintFlags = 0;
    float scale = 1.0f;
    float size = 0.0f;
    float weights[3] = {0.299f, 0.587f, 0.114f}; // the luma of television
    float opacity = 1.0f;
    PreviewOptions preview;
    unsigned jobs = 1; // scenes at a time, up to jobsMost
    bool recursive = false;
    bool noClobber = false;
    bool strict = false;
    bool info = false;
    bool json = false;
    int verbosity = 0; // as in report.cpp
};

// Fills the options. Returns -1 when there is work to do, else the status to exit with: help or the version
// was printed, or the command line is wrong and the reason stands on stderr.
int ParseOptions(int argc, const char *const *argv, HostOptions *options);

// ---- option_rules.cpp

// The reason why the options can't stand together; empty when they can. given tells whether an option, such
// as "--output", was on the command line.
std::string FindConflict(const HostOptions &options, const std::function<bool(const char *)> &given);

#endif
