#include <algorithm>
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

// Skips links to folders, as they may form a loop, and pipes and devices, as they may never end.
static bool ListFolder(const fs::path &folder, Reporter *reporter, std::vector<fs::path> *scenes,
                       std::vector<fs::path> *folders)
{
    std::error_code failure, ignored;
    fs::directory_iterator entry(folder, failure);
    for (const fs::directory_iterator end; !failure && entry != end; entry.increment(failure)) {
        if (entry->is_directory(ignored) && !entry->is_symlink(ignored))
            folders->push_back(entry->path());
        else if (InLowerCase(entry->path().extension().string()) == ".3ds" &&
                 (entry->is_regular_file(ignored) || !entry->exists(ignored)))
            scenes->push_back(entry->path());
    }
    if (failure)
        ReportError(reporter, "folder " + InQuotes(folder.string()) + " can't be read: " + failure.message() +
                                  "; its scenes are left out");
    return !failure;
}

static bool ListBelow(const HostOptions &options, const fs::path &top, Reporter *reporter,
                      std::vector<SceneJob> *jobs)
{
    bool done = true;
    std::vector<fs::path> scenes, folders = {top};
    while (!folders.empty()) {
        const fs::path folder = folders.back();
        folders.pop_back();
        done = ListFolder(folder, reporter, &scenes, &folders) && done;
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
    for (const std::string &scene : options.scenes) {
        std::error_code failure;
        if (options.recursive && fs::is_directory(PathOf(scene), failure))
            done = ListBelow(options, PathOf(scene), reporter, jobs) && done;
        else
            AddScene(options, PathOf(scene), PathOf(scene).filename(), jobs);
    }
    return done;
}

HostOptions OptionsFor(const HostOptions &options, const SceneJob &job)
{
    HostOptions own = options;
    if (!job.output.empty())
        own.output = job.output;
    return own;
}
