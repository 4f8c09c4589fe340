#include "run.h"

#include <chrono>
#include <system_error>

static void RunOneByOne(const HostOptions &options, const std::vector<SceneJob> &jobs,
                        std::vector<SceneResult> *results)
{
    for (size_t i = 0; i < jobs.size(); ++i) {
        ShowScene(i + 1, jobs[i].scene, jobs[i].bytes);
        (*results)[i] = ConvertScene(options, jobs[i], jobs.size() > 1);
        ShowWarnings((*results)[i], false);
        CountBytes(jobs[i].bytes);
    }
}

// A process that was killed had no time to do it itself.
static void CleanUpAfter(const HostOptions &options, const SceneJob &job, const std::string &mark)
{
    std::error_code failure;
    std::vector<std::filesystem::path> parents = {std::filesystem::temp_directory_path(failure)};
    const HostOptions own = OptionsFor(options, job);
    parents.emplace_back(std::filesystem::path(ObjectFileName(own, job.scene, 0)).parent_path());
    for (const NamedTarget &target : TargetNames(own, job.scene))
        parents.emplace_back(std::filesystem::path(target.name).parent_path());
    for (const std::filesystem::path &parent : parents)
        RemoveMarkedFolders(parent.empty() ? "." : parent, mark);
}

static void RunSideBySide(const HostOptions &options, const std::vector<SceneJob> &jobs,
                          std::vector<SceneResult> *results)
{
    if (!CanSplitProcesses())
        ReportWarning(
            "--jobs: this system can't split processes, so that scenes are converted one at a time");
    size_t ended = 0;
    const std::string run = RandomText() + '-';
    const auto work = [&](size_t index) {
        MarkPrivateFolders(run + std::to_string(index) + '-');
        KeepReports(true);
        const SceneResult result = ConvertScene(options, jobs[index], true);
        KeepReports(false);
        return PackResult(result);
    };
    const auto finished = [&](size_t index, const std::string &answer, const std::string &failure) {
        SceneResult *result = &(*results)[index];
        if (!failure.empty() || !UnpackResult(answer, result)) {
            result->scene = jobs[index].scene;
            SetReportSubject(result);
            ReportError((failure.empty() ? "its process gave no answer" : failure) +
                        "; the scene counts as failed");
            SetReportSubject(nullptr);
            CleanUpAfter(options, jobs[index], run + std::to_string(index) + '-');
        }
        ShowLines(result->said);
        ShowWarnings(*result, false);
        CountBytes(jobs[index].bytes);
        ShowScene(++ended, jobs[index].scene, 0);
    };
    ShowScene(0, jobs.front().scene, 0);
    CleanUpWhenInterrupted(RemovePrivateFolders);
    RunInProcesses(jobs.size(), options.jobs, work, finished);
}

// The worst status of all scenes.
static bool AllIsWell(const HostOptions &options, const std::vector<SceneResult> &results)
{
    bool done = true;
    size_t warnings = 0;
    for (const SceneResult &result : results) {
        done = done && result.done;
        warnings += WarningCount(result);
    }
    if (options.strict && warnings != 0) {
        ReportError(std::to_string(warnings) + (warnings == 1 ? " warning counts" : " warnings count") +
                    " as failure with --strict; the files are written");
        return false;
    }
    return done;
}

int ConvertAll(const HostOptions &options)
{
    const auto start = std::chrono::steady_clock::now();
    std::vector<SceneJob> jobs;
    StartReports(options.verbosity, false);
    bool done = ListScenes(options, &jobs);
    if (!TargetsAreApart(options, jobs))
        return exitUsage;
    if (!options.summaryFile.empty() && !SummaryHasPlace(options.summaryFile))
        return exitFailed;
    // Where many scenes are converted, a line at the end stands for the files that were written.
    const bool many = jobs.size() > 1 || options.recursive;
    StartReports(options.verbosity, !many || options.verbosity > 0);
    uint64_t bytes = 0;
    for (const SceneJob &job : jobs)
        bytes += job.bytes;
    if (options.verbosity <= 0 && !options.info && !(options.flags & MC3DS_DIRECT))
        StartProgress(jobs.size(), bytes);
    std::vector<SceneResult> results(jobs.size());
    if (options.jobs > 1 && jobs.size() > 1)
        RunSideBySide(options, jobs, &results);
    else
        RunOneByOne(options, jobs, &results);
    EndProgress();
    done = AllIsWell(options, results) && done;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!options.summaryFile.empty())
        done = WriteSummary(options.summaryFile, options.noClobber, SummaryText(results, seconds)) && done;
    if ((options.verbosity > 0 || (options.verbosity == 0 && many && !options.info)) && !jobs.empty())
        ShowLines(TotalsLine(results, seconds));
    return done ? exitDone : exitFailed;
}
