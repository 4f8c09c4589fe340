// The input of a run: options, scenes and the names of their files.
#ifndef MC3DS_HOST_INPUT_H
#define MC3DS_HOST_INPUT_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "../picture/picture.h"
#include "../words/words.h"

constexpr unsigned jobsMost = 256;

// As the name of an output: standard output.
constexpr char standardOutputName[] = "-";

// The user's options, with their defaults.
struct HostOptions {
    std::vector<std::string> scenes; // files; with recursive also folders
    std::string output;              // empty: the scene's name with another extension
    std::string outputDir;           // empty: beside the scene
    std::string headerFile;          // empty: the output's name with another extension
    std::string animationFile;
    std::string previewFile;  // empty: none; with several scenes each puts its name in front
    std::string glbFile;      // as previewFile
    std::string summaryFile;  // empty: none
    std::string pageFile;     // of --report; empty: none
    std::string restoredFile; // the restored scene, as previewFile
    uint32_t restore = 0;     // bits of Mc3dsRestoreKind; 0: the scene is read as it is
    std::string clumpName;    // empty: made from the scene's name
    std::string textureExtension;
    uint32_t flags = 0;
    uint32_t surfaceFlags = MC3DS_TEXTURES;
    uint32_t hintFlags = 0;
    float scale = 1.0f;
    float size = 0.0f;
    float weights[3] = {0.299f, 0.587f, 0.114f}; // of red, green and blue; television luma
    float opacity = 1.0f;
    PreviewOptions preview;
    unsigned jobs = 1; // scenes converted at the same time, up to jobsMost
    bool recursive = false;
    bool noClobber = false;
    bool forceNames = false;
    bool strict = false;
    bool info = false;
    bool json = false;
    int verbosity = 0; // as in Reporter
};

// Fills the options. Returns -1 to continue, else the exit status: help or the version was printed, or the
// command line is wrong and the reason is on stderr.
int ParseOptions(int argc, const char *const *argv, HostOptions *options);

// ---- option_rules.cpp

// Returns why the options can't be combined; empty if they can. given: whether an option, such as "--output",
// was on the command line.
std::string FindConflict(const HostOptions &options, const std::function<bool(const char *)> &given);

// ---- scene_list.cpp

struct SceneJob {
    std::string scene;        // its path, as the user would type it
    std::string output;       // its output; empty: as in the options
    uint64_t bytes;           // size of its file; 0 if unknown
    std::string refusal = {}; // why it isn't converted; empty: it is
};

// Lists the scenes of the options in their order; those of a folder are sorted. Returns false after reports
// if a folder can't be read or has no scenes; the others are in jobs nevertheless.
bool ListScenes(const HostOptions &options, Reporter *reporter, std::vector<SceneJob> *jobs);
// The options for one of the scenes.
HostOptions OptionsFor(const HostOptions &options, const SceneJob &job);

// ---- file_names.cpp

// Those after Animation aren't written by the library, but are delivered in the same way.
enum class TextKind { Script, Source, Header, Animation, Picture, Glb, RestoredScene, RestoredVue };

struct NamedTarget {
    TextKind kind;
    std::string name;
    bool isGiven; // named by the user: links are followed
};

// The files to write, except the text files of a per-object run. With the animation option, the animation
// file is included even if the scene has no animation.
std::vector<NamedTarget> TargetNames(const HostOptions &options, const std::string &scenePath);
// The name of a file of a per-object run.
std::string ObjectFileName(const HostOptions &options, const std::string &scenePath, size_t index);
// Whether the library writes the file.
constexpr bool IsText(TextKind kind)
{
    return kind <= TextKind::Animation;
}
// Whether the user gave the name of the output file.
bool OutputIsGiven(const HostOptions &options);
// The name of the output file. In a per-object run the names of the object files are made from it.
std::string OutputName(const HostOptions &options, const std::string &scenePath);
// The same without folders, for comments in outputs. For standard output, the default name.
std::string BareOutputName(const HostOptions &options, const std::string &scenePath);
#endif
