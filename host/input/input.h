// What goes into a run: options, scenes, and how the files of each are called.
#ifndef MC3DS_HOST_INPUT_H
#define MC3DS_HOST_INPUT_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "../view/view.h"

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
    std::string glbFile;     // the same
    std::string summaryFile; // empty: none
    std::string reportFile;  // empty: none
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
    bool forceNames = false;
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

// ---- scene_list.cpp

struct SceneJob {
    std::string scene;  // its path, as the user would type it
    std::string output; // OUTPUT for it; empty: as the options say
    uint64_t bytes;     // in its file; 0 if unknown
};

// The scenes that the options name, in their order, those of a folder sorted. False, with its reports, when
// a folder could not be read or has none; the others are there all the same.
bool ListScenes(const HostOptions &options, std::vector<SceneJob> *jobs);
// The options as they are for one of the scenes.
HostOptions OptionsFor(const HostOptions &options, const SceneJob &job);

// ---- file_names.cpp

// The last two are no texts, but go the same way.
enum class TextKind { Script, Source, Header, Animation, Picture, Glb };

struct NamedTarget {
    TextKind kind;
    std::string name;
    bool isGiven; // named by the user, who may mean what a link leads to
};

// The files that options lead to, but for those of a per-object run. The animation file stands there whether
// the scene has animation or not.
std::vector<NamedTarget> TargetNames(const HostOptions &options, const std::string &scenePath);
// What a file of a per-object run is called.
std::string ObjectFileName(const HostOptions &options, const std::string &scenePath, size_t index);
// Whether the library writes it.
constexpr bool IsText(TextKind kind)
{
    return kind != TextKind::Picture && kind != TextKind::Glb;
}
// Whether the user named OUTPUT itself.
bool OutputIsGiven(const HostOptions &options);
// What OUTPUT is called, or would be if there were one file.
std::string OutputName(const HostOptions &options, const std::string &scenePath);
// The same without folders, as comments show it; a name also where OUTPUT is the standard output.
std::string BareOutputName(const HostOptions &options, const std::string &scenePath);
#endif
