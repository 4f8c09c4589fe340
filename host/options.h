// The command line.
#ifndef MC3DS_HOST_OPTIONS_H
#define MC3DS_HOST_OPTIONS_H

#include <cstdint>
#include <string>
#include <vector>

#include "mcl3ds20.h"

// Exit statuses of the program.
constexpr int exitDone = 0;
constexpr int exitFailed = 1;
constexpr int exitUsage = 2;

// What the user asked for. The values here are the defaults.
struct HostOptions {
    std::vector<std::string> scenes;
    std::string output;     // empty: the scene's name with another extension
    std::string headerFile; // empty: the output's name with another extension, as below
    std::string animationFile;
    std::string clumpName; // empty: made from the scene's name
    std::string textureExtension;
    uint32_t flags = 0;
    uint32_t surfaceFlags = MC3DS_TEXTURES;
    uint32_t hintFlags = 0;
    float scale = 1.0f;
    float size = 0.0f;
    float weights[3] = {0.299f, 0.587f, 0.114f}; // the luma of television
    float opacity = 1.0f;
    int verbosity = 0; // as in report.cpp
};

// Fills the options. Returns -1 when there is work to do, else the status to exit with: help or the version
// was printed, or the command line is wrong and the reason stands on stderr.
int ParseOptions(int argc, const char *const *argv, HostOptions *options);

#endif
