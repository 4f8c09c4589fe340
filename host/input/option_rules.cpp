// Options that can't be combined, and why.
#include <filesystem>

#include "input.h"

namespace fs = std::filesystem;

struct ConflictRow {
    const char *a, *b;
    const char *why;
};

static const char ownSpace[] = "the file of an object holds its geometry alone, unplaced";
static const char infoOnly[] = "--info shows the scene instead of converting it";
static const char ownFile[] = "each of its scenes needs a file of its own";

static const ConflictRow conflictRows[] = {
    {"--per-object", "--header", "a run of one file for each object writes no header file"},
    {"--per-object", "--animation", "a run of one file for each object writes no animation file"},
    {"--per-object", "--protos", ownSpace},
    {"--per-object", "--flat", ownSpace},
    {"--per-object", "--merged", ownSpace},
    {"--per-object", "--centre", ownSpace},
    {"--info", "--source", infoOnly},
    {"--info", "--per-object", infoOnly},
    {"--info", "--output", infoOnly},
    {"--info", "--output-dir", infoOnly},
    {"--info", "--header", infoOnly},
    {"--info", "--force-names", infoOnly},
    {"--info", "--jobs", "what is shown of the scenes would mix on the standard output"},
    {"--output", "--output-dir", "one names a file and the other a folder for files"},
    {"--output", "--recursive", ownFile},
    {"--clump-name", "--recursive", "each of its scenes needs a function of its own"},
    {"--scale", "--size", "each decides what the other one is"},
    {"--quiet", "--verbose", "one asks for less and the other for more"},
};

struct NeedRow {
    const char *option, *needed;
    const char *why;
};

static const NeedRow needRows[] = {
    {"--clump-name", "--source", "nothing else has the name in it"},
    {"--json", "--info", "it is a form of what that shows; a run is summed up by --summary"},
    {"--restored", "--restore", "without it the scene is read as it is"},
    {"--preview-size", "--preview", "there is no other picture"},
    {"--preview-frame", "--preview", "there is no other picture"},
};

static std::string Contradiction(const std::string &a, const std::string &b, const std::string &why)
{
    return a + " can't be combined with " + b + ": " + why;
}

// Conflicts of the two options that take an optional FILE.
static std::string FindFileConflict(const HostOptions &options,
                                    const std::function<bool(const char *)> &given)
{
    const struct {
        const char *option;
        const char *withFile;
        const std::string &name;
        const char *extension;
    } rows[] = {{"--header", "--header=FILE", options.headerFile, ".h"},
                {"--animation", "--animation=FILE", options.animationFile, ".mca"}};
    for (const auto &row : rows) {
        if (!row.name.empty() && given("--recursive"))
            return Contradiction(row.withFile, "--recursive", ownFile);
        if (!row.name.empty() && options.scenes.size() > 1)
            return Contradiction(row.withFile, "more than one scene", "each needs a file of its own");
        if (row.name.empty() && given(row.option) && options.output == standardOutputName)
            return Contradiction(row.option, "--output -",
                                 "there is no name to make another from; " + std::string(row.withFile) +
                                     " gives one");
        for (const std::string &scene : options.scenes)
            if (row.name.empty() && given(row.option) && PathOf(scene).extension() == row.extension)
                return InQuotes(scene) + " is no scene; a FILE goes behind an equals sign, as in " +
                       row.option + '=' + scene;
    }
    if (!options.animationFile.empty() && given("--info"))
        return Contradiction("--info", "--animation=FILE", infoOnly);
    return "";
}

// Returns why this build of the program can't draw pictures; empty if it can.
static std::string WhyNoPreview()
{
#if !defined(MC3DS_HAVE_MCLMODEL)
    return "the Meshcaster library of this program doesn't show its models";
#elif !defined(MC3DS_HAVE_PNG)
    return "this program was built without libpng";
#else
    return "";
#endif
}

// An output with the name of another kind of file.
static std::string FindMisnamed(const HostOptions &options, const std::function<bool(const char *)> &given)
{
    const fs::path output = PathOf(options.output);
    const std::string extension = InLowerCase(output.extension().string());
    const char *text = given("--source") ? "C source" : "a script", *own = given("--source") ? ".c" : ".mcx";
    const struct {
        const char *extension, *advice;
    } rows[] = {{".glb", "--glb writes models"},
                {".png", "--preview draws pictures"},
                {".vue", "--animation writes the animation"}};
    for (const auto &row : rows)
        if (extension == row.extension)
            return InQuotes(options.output) + " would hold " + text + ": " + row.advice + ", or call it " +
                   InQuotes(fs::path(output).replace_extension(own).string());
    if (extension == ".c" && !given("--source"))
        return InQuotes(options.output) + " would hold a script: --source writes C, or call it " +
               InQuotes(fs::path(output).replace_extension(own).string());
    const fs::path animation = PathOf(options.animationFile);
    if (InLowerCase(animation.extension().string()) == ".vue")
        return InQuotes(options.animationFile) +
               " would hold statements of the renderer, which no .vue file has: call it " +
               InQuotes(fs::path(animation).replace_extension(".mca").string());
    return "";
}

std::string FindConflict(const HostOptions &options, const std::function<bool(const char *)> &given)
{
    for (const ConflictRow &row : conflictRows)
        if (given(row.a) && given(row.b))
            return Contradiction(row.a, row.b, row.why);
    for (const NeedRow &row : needRows)
        if (given(row.option) && !given(row.needed))
            return std::string(row.option) + " needs " + row.needed + ": " + row.why;
    if (const std::string why = FindFileConflict(options, given); !why.empty())
        return why;
    if (given("--per-object") && options.output == standardOutputName)
        return Contradiction("--per-object", "--output -", "the files of the objects need names");
#if !defined(MC3DS_HAVE_MCLMODEL)
    if (given("--glb")) // unnoticed
        return "--glb isn't available: the Meshcaster library of this program doesn't show its models";
#endif
    if (given("--preview") && !WhyNoPreview().empty())
        return "--preview isn't available: " + WhyNoPreview();
    if (const std::string why = FindMisnamed(options, given); !why.empty())
        return why;
    if (options.scenes.empty())
        return "no scene is given";
    if (options.scenes.size() == 1)
        return "";
    if (given("--output"))
        return Contradiction("--output", "more than one scene",
                             "each needs a file of its own; --output-dir names a folder for them");
    if (given("--clump-name"))
        return Contradiction("--clump-name", "more than one scene", "each needs a function of its own");
    return "";
}
