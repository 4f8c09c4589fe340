#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "host.h"

namespace fs = std::filesystem;

std::string OutputName(const HostOptions &options, const std::string &scenePath)
{
    if (!options.output.empty())
        return options.output;
    return fs::path(scenePath).replace_extension(options.flags & MC3DS_SOURCE ? ".c" : ".mcx").string();
}

std::string VuePath(const std::string &scenePath)
{
    return scenePath.size() < 3 ? "" : scenePath.substr(0, scenePath.size() - 3) + "vue";
}

// A name under /dev may lead to anything that the shell has opened, a regular file included.
static bool IsWrittenInPlace(const fs::path &path, const fs::file_status &status)
{
    return fs::exists(status) &&
           (!fs::is_regular_file(status) || path.lexically_normal().string().starts_with("/dev/"));
}

static bool SameFile(const fs::path &a, const fs::path &b)
{
    std::error_code missing;
    return a == b || (fs::equivalent(a, b, missing) && !missing);
}

// Finds out where a file is to go, and returns why it can't go there; empty when it can.
static std::string Locate(OutputFile *file)
{
    fs::path path = file->shown;
    std::error_code failure;
    const fs::file_status status = fs::status(path, failure);
    if (!path.has_filename() || fs::is_directory(status))
        return "it is a folder";
    if (file->shown.find_first_of("\r\n") != std::string::npos)
        return "a line break in its name would end the comment that holds it";
    file->inPlace = IsWrittenInPlace(path, status);
    if (file->inPlace) {
        file->target = fs::absolute(path, failure);
        return failure ? failure.message() : "";
    }
    for (int links = 0; links < 40 && fs::is_symlink(fs::symlink_status(path, failure)); ++links)
        path = path.parent_path() / fs::read_symlink(path, failure);
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    file->target = fs::canonical(folder, failure) / path.filename();
    if (failure)
        return "folder " + InQuotes(folder.string()) + ": " + failure.message();
    if (!fs::is_directory(file->target.parent_path(), failure))
        return InQuotes(folder.string()) + " is no folder";
    // A new file would take the place of one that is write-protected without asking.
    if (fs::exists(status)) {
        FILE *stream = std::fopen(file->target.string().c_str(), "r+b");
        if (!stream)
            return std::strerror(errno);
        std::fclose(stream);
    }
    return "";
}

static bool AddFile(TextKind kind, const std::string &name, const std::string &scenePath,
                    std::vector<OutputFile> *files)
{
    OutputFile file = {kind, name, {}, false, {}};
    std::string why = Locate(&file);
    if (why.empty() && SameFile(file.target, scenePath))
        why = "it is the scene itself";
    if (why.empty() && SameFile(file.target, VuePath(scenePath)))
        why = "it is the animation that belongs to the scene";
    if (!why.empty()) {
        ReportUnwritten(name, why);
        return false;
    }
    files->push_back(file);
    return true;
}

static bool AddObjectFiles(TextKind kind, const std::string &output, const std::string &scenePath,
                           uint32_t objectCount, std::vector<OutputFile> *files)
{
    const fs::path base = fs::path(output).replace_extension();
    for (uint32_t i = 0; i < objectCount; ++i) {
        const std::string name =
            base.string() + std::to_string(i) + (kind == TextKind::Source ? ".c" : ".mcx");
        if (!AddFile(kind, name, scenePath, files))
            return false;
        // They all grow in one folder, from which a file can't be moved to wherever a link leads.
        if (files->back().target.parent_path() != files->front().target.parent_path())
            files->back().inPlace = true;
    }
    return true;
}

static bool AddSecondFile(TextKind kind, const std::string &given, const char *extension,
                          const std::string &scenePath, std::vector<OutputFile> *files)
{
    const OutputFile output = files->front();
    const std::string name =
        given.empty() ? fs::path(output.shown).replace_extension(extension).string() : given;
    if (!AddFile(kind, name, scenePath, files))
        return false;
    const OutputFile &added = files->back();
    for (const OutputFile &other : *files) {
        if (&other != &added && !other.inPlace && SameFile(other.target, added.target)) {
            ReportError("two of the files to write are one: " + InQuotes(other.shown) + " and " +
                        InQuotes(name));
            return false;
        }
    }
    return true;
}

bool PlanOutput(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                std::vector<OutputFile> *files)
{
    const TextKind kind = options.flags & MC3DS_SOURCE ? TextKind::Source : TextKind::Script;
    const std::string output = OutputName(options, scenePath);
    const bool perObject = options.flags & MC3DS_PER_OBJECT;
    const bool header = options.flags & MC3DS_HEADER;
    const bool animation = (options.flags & MC3DS_ANIMATION) && scene->hasAnimation;
    const bool named = !perObject && !(header && options.headerFile.empty()) &&
                       !(animation && options.animationFile.empty());
    std::error_code failure;
    const fs::file_status status = fs::status(output, failure);
    if (!named && fs::exists(status) && !fs::is_regular_file(status)) {
        ReportError("no file names can be made from " + InQuotes(output) + ": it is no regular file");
        return false;
    }
    if (perObject)
        return AddObjectFiles(kind, output, scenePath, scene->objectCount, files);
    return AddFile(kind, output, scenePath, files) &&
           (!header || AddSecondFile(TextKind::Header, options.headerFile, ".h", scenePath, files)) &&
           (!animation ||
            AddSecondFile(TextKind::Animation, options.animationFile, ".mca", scenePath, files));
}
