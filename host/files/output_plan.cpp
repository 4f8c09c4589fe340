#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "files.h"

namespace fs = std::filesystem;

// A name under /dev can be any file that the shell opened, also a regular one. /dev/shm is an ordinary
// folder.
static bool IsWrittenInPlace(const fs::path &path, const fs::file_status &status)
{
    const std::string name = path.lexically_normal().string();
    return fs::exists(status) &&
           (!fs::is_regular_file(status) || (name.starts_with("/dev/") && !name.starts_with("/dev/shm/")));
}

static bool SameFile(const fs::path &a, const fs::path &b)
{
    std::error_code missing;
    return a == b || (fs::equivalent(a, b, missing) && !missing);
}

// Protects the files of other scenes from a mistyped output name.
static bool IsInput(const fs::path &path)
{
    const std::string extension = InLowerCase(path.extension().string());
    return extension == ".3ds" || extension == ".vue";
}

std::string LocateTarget(OutputFile *file)
{
    fs::path path = PathOf(file->shown);
    std::error_code failure;
    const fs::file_status status =
        file->followsLink ? fs::status(path, failure) : fs::symlink_status(path, failure);
    if (!path.has_filename() || fs::is_directory(status))
        return "it is a folder";
    if (file->shown.find_first_of("\r\n") != std::string::npos)
        return "a line break in its name would end the comment that holds it";
    file->inPlace = !fs::is_symlink(status) && IsWrittenInPlace(path, status);
    if (file->inPlace) {
        file->target = fs::absolute(path, failure);
        return failure ? failure.message() : "";
    }
    for (int links = 0; file->followsLink && links < 40 && fs::is_symlink(fs::symlink_status(path, failure));
         ++links)
        path = path.parent_path() / fs::read_symlink(path, failure);
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    file->target = fs::canonical(folder, failure) / path.filename();
    if (failure)
        return "folder " + InQuotes(folder.string()) + ": " + failure.message();
    if (!fs::is_directory(file->target.parent_path(), failure))
        return InQuotes(folder.string()) + " is no folder";
    // Renaming a new file to this name would replace even a write-protected one.
    if (fs::exists(status) && !fs::is_symlink(status)) {
        FILE *stream = std::fopen(file->target.string().c_str(), "r+b");
        if (!stream)
            return std::strerror(errno);
        std::fclose(stream);
        if (IsInput(file->target))
            return "a scene or an animation of that name exists, and is never replaced";
    }
    return "";
}

static bool AddFile(const NamedTarget &named, const std::string &scenePath, Reporter *reporter,
                    std::vector<OutputFile> *files)
{
    const auto &[kind, name, isGiven] = named;
    if (name == standardOutputName) {
        files->push_back({.kind = kind, .shown = "standard output", .inPlace = true, .standardOutput = true});
        return true;
    }
    OutputFile file = {.kind = kind, .shown = name, .followsLink = isGiven};
    std::string why = LocateTarget(&file);
    std::error_code failure;
    const bool isReplacedLink = !isGiven && fs::is_symlink(fs::symlink_status(PathOf(name), failure));
    if (!isReplacedLink && SameFile(PathOf(name), PathOf(scenePath)))
        why = "it is the scene itself";
    else if (!isReplacedLink && SameFile(PathOf(name), PathOf(VuePath(scenePath))))
        why = "it is the animation that belongs to the scene";
    if (!why.empty()) {
        ReportUnwritten(reporter, name, why);
        return false;
    }
    for (const OutputFile &other : *files) {
        if (!other.inPlace && SameFile(other.target, file.target)) {
            ReportError(reporter, "two of the files to write are one: " + InQuotes(other.shown) + " and " +
                                      InQuotes(name));
            return false;
        }
    }
    files->push_back(file);
    return true;
}

static bool AddObjectFiles(const HostOptions &options, const std::string &scenePath, uint32_t objectCount,
                           Reporter *reporter, std::vector<OutputFile> *files)
{
    const TextKind kind = options.flags & MC3DS_SOURCE ? TextKind::Source : TextKind::Script;
    for (uint32_t i = 0; i < objectCount; ++i) {
        std::vector<OutputFile> added; // numbered names can't be the same
        if (!AddFile({kind, ObjectFileName(options, scenePath, i), OutputIsGiven(options)}, scenePath,
                     reporter, &added))
            return false;
        files->push_back(added.front());
        // Object files are written in one folder. A link may put the target in another, so copy instead of
        // rename.
        if (files->back().target.parent_path() != files->front().target.parent_path())
            files->back().inPlace = true;
    }
    return true;
}

bool PlanOutput(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                Reporter *reporter, std::vector<OutputFile> *files)
{
    const std::string output = OutputName(options, scenePath);
    const bool perObject = options.flags & MC3DS_PER_OBJECT;
    const bool animation = (options.flags & MC3DS_ANIMATION) && scene->hasAnimation;
    const bool named = !perObject && !((options.flags & MC3DS_HEADER) && options.headerFile.empty()) &&
                       !(animation && options.animationFile.empty());
    std::error_code failure;
    const fs::file_status status = fs::status(PathOf(output), failure);
    if (!named && fs::exists(status) && !fs::is_regular_file(status)) {
        ReportError(reporter,
                    "no file names can be made from " + InQuotes(output) + ": it is no regular file");
        return false;
    }
    if (perObject && !AddObjectFiles(options, scenePath, scene->objectCount, reporter, files))
        return false;
    for (const NamedTarget &target : TargetNames(options, scenePath))
        if ((target.kind != TextKind::Animation || animation) && !AddFile(target, scenePath, reporter, files))
            return false;
    return true;
}
