#include "input.h"

namespace fs = std::filesystem;

std::string OutputName(const HostOptions &options, const std::string &scenePath)
{
    if (!options.output.empty())
        return options.output;
    return PathOf(scenePath).replace_extension(options.flags & MC3DS_SOURCE ? ".c" : ".mcx").string();
}

bool OutputIsGiven(const HostOptions &options)
{
    return !options.output.empty() && options.outputDir.empty();
}

std::string BareOutputName(const HostOptions &options, const std::string &scenePath)
{
    HostOptions named = options;
    if (named.output == standardOutputName)
        named.output.clear();
    return PathOf(OutputName(named, scenePath)).filename().string();
}

std::string ObjectFileName(const HostOptions &options, const std::string &scenePath, size_t index)
{
    const fs::path base = PathOf(OutputName(options, scenePath)).replace_extension();
    return base.string() + std::to_string(index) + (options.flags & MC3DS_SOURCE ? ".c" : ".mcx");
}

static std::string SecondName(const std::string &given, const std::string &output, const char *extension)
{
    return given.empty() ? PathOf(output).replace_extension(extension).string() : given;
}

// The name of a picture, .glb file or restored scene. With several scenes each has its own, beside the
// scene's output unless given names another folder: cube.m.glb for m.glb, and cube.glb for .glb, which does
// so for a single scene as well.
static std::string OwnName(const HostOptions &options, const std::string &given, const std::string &output)
{
    const fs::path file = PathOf(given), model = PathOf(output);
    const std::string own = file.filename().string(), stem = model.stem().string();
    const bool isExtension = own.starts_with('.');
    if (!isExtension && !options.recursive && options.scenes.size() <= 1)
        return given;
    const fs::path name = PathOf(isExtension ? stem + own : stem + '.' + own);
    return ((file.has_parent_path() ? file : model).parent_path() / name).string();
}

std::vector<NamedTarget> TargetNames(const HostOptions &options, const std::string &scenePath)
{
    std::vector<NamedTarget> names;
    const std::string output = OutputName(options, scenePath);
    if (!options.info && !(options.flags & MC3DS_PER_OBJECT)) {
        names.push_back({options.flags & MC3DS_SOURCE ? TextKind::Source : TextKind::Script, output,
                         OutputIsGiven(options)});
        if (options.flags & MC3DS_HEADER)
            names.push_back({TextKind::Header, SecondName(options.headerFile, output, ".h"),
                             !options.headerFile.empty()});
        if (options.flags & MC3DS_ANIMATION)
            names.push_back({TextKind::Animation, SecondName(options.animationFile, output, ".mca"),
                             !options.animationFile.empty()});
    }
    for (const auto &[kind, given] :
         {std::pair(TextKind::Picture, options.previewFile), {TextKind::Glb, options.glbFile}})
        if (!given.empty()) {
            const std::string name = OwnName(options, given, output);
            names.push_back({kind, name, name == given});
        }
    if (!options.restoredFile.empty()) {
        const std::string name = OwnName(options, options.restoredFile, output);
        const bool isGiven = name == options.restoredFile;
        names.push_back({TextKind::RestoredScene, name, isGiven});
        names.push_back({TextKind::RestoredVue, SecondName("", name, ".vue"), isGiven});
    }
    return names;
}
