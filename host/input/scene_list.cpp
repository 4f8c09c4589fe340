#include <algorithm>
#include <cstring>
#include <fstream>
#include <system_error>

#include "input.h"

namespace fs = std::filesystem;

static void AddScene(const HostOptions &options, const fs::path &scene, const fs::path &place,
                     std::vector<SceneJob> *jobs)
{
    std::error_code failure;
    const uintmax_t bytes = fs::file_size(scene, failure);
    SceneJob job = {scene.string(), "", failure ? 0 : bytes};
    if (!options.outputDir.empty())
        job.output = OutputName(options, (PathOf(options.outputDir) / place).string());
    jobs->push_back(job);
}

// Archives hold small text files in place of large ones: lines that begin with "version" and "oid".
static bool StandsForLargeFile(const fs::path &path)
{
    char text[256] = {};
    std::ifstream(path, std::ios::binary).read(text, sizeof text - 1);
    return std::string_view(text).starts_with("version ") && std::strstr(text, "\noid ");
}

// Whether another program left the file there. Counts it.
static bool IsPassedOver(const fs::path &path, Finding *passed)
{
    const bool isPointer = StandsForLargeFile(path);
    if (!isPointer && !path.filename().string().starts_with("._"))
        return false;
    passed->of += isPointer ? 1 : 0;
    if (passed->count++ == 0)
        passed->names = {{path.string()}};
    return true;
}

// Skips links to folders, as they may form a loop, and pipes and devices, as they may never end.
static bool ListFolder(const fs::path &folder, Reporter *reporter, std::vector<fs::path> *scenes,
                       std::vector<fs::path> *folders, Finding *passed)
{
    std::error_code failure, ignored;
    fs::directory_iterator entry(folder, failure);
    for (const fs::directory_iterator end; !failure && entry != end; entry.increment(failure)) {
        if (entry->is_directory(ignored) && !entry->is_symlink(ignored))
            folders->push_back(entry->path());
        else if (InLowerCase(entry->path().extension().string()) == ".3ds" &&
                 (!entry->exists(ignored) ||
                  (entry->is_regular_file(ignored) && !IsPassedOver(entry->path(), passed))))
            scenes->push_back(entry->path());
    }
    if (failure)
        ReportError(reporter, "folder " + InQuotes(folder.string()) + " can't be read: " + failure.message() +
                                  "; its scenes are left out");
    return !failure;
}

static bool ListBelow(const HostOptions &options, const fs::path &top, Reporter *reporter,
                      std::vector<SceneJob> *jobs, Finding *passed)
{
    bool done = true;
    std::vector<fs::path> scenes, folders = {top};
    while (!folders.empty()) {
        const fs::path folder = folders.back();
        folders.pop_back();
        done = ListFolder(folder, reporter, &scenes, &folders, passed) && done;
    }
    std::sort(scenes.begin(), scenes.end());
    for (const fs::path &scene : scenes)
        AddScene(options, scene, scene.lexically_relative(top), jobs);
    if (done && scenes.empty()) {
        ReportError(reporter, "folder " + InQuotes(top.string()) + " has no *.3ds files");
        return false;
    }
    return done;
}

bool ListScenes(const HostOptions &options, Reporter *reporter, std::vector<SceneJob> *jobs)
{
    bool done = true;
    Finding passed = {.kind = FindingKind::SkippedFiles, .weight = Weight::Note};
    for (const std::string &scene : options.scenes) {
        std::error_code failure;
        if (options.recursive && fs::is_directory(PathOf(scene), failure))
            done = ListBelow(options, PathOf(scene), reporter, jobs, &passed) && done;
        else
            AddScene(options, PathOf(scene), PathOf(scene).filename(), jobs);
    }
    if (passed.count != 0)
        ReportFinding(reporter, passed);
    return done;
}

HostOptions OptionsFor(const HostOptions &options, const SceneJob &job)
{
    HostOptions own = options;
    if (!job.output.empty())
        own.output = job.output;
    return own;
}
