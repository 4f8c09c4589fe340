#include "run.h"

#include <chrono>
#include <mutex>
#include <system_error>

// The state of the run, also used for the summary after an interrupt.
static struct {
    std::mutex mutex; // guards results and isDone: an interrupt is handled in another thread
    std::vector<SceneResult> results;
    std::vector<bool> isDone;
    std::chrono::steady_clock::time_point start;
    bool hasSummary;
    OutputFile summary;
    bool noClobber;
} batch;

static void Finish(size_t index, const SceneResult &result)
{
    const std::lock_guard lock(batch.mutex);
    batch.results[index] = result;
    batch.isDone[index] = true;
}

static double SecondsSoFar()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - batch.start).count();
}

static void CleanUpInterrupted()
{
    RemovePrivateFolders();
    const std::lock_guard lock(batch.mutex);
    std::vector<SceneResult> done;
    for (size_t i = 0; i < batch.results.size(); ++i)
        if (batch.isDone[i])
            done.push_back(batch.results[i]);
    if (batch.hasSummary)
        WriteReport(batch.summary, batch.noClobber, SummaryText(done, SecondsSoFar(), true));
}

static void RunOneByOne(const HostOptions &options, const std::vector<SceneJob> &jobs)
{
    for (size_t i = 0; i < jobs.size(); ++i) {
        ShowScene(i + 1, jobs[i].scene, jobs[i].bytes);
        const SceneResult result = ConvertScene(options, jobs[i]);
        Finish(i, result);
        CountBytes(jobs[i].bytes);
    }
}

// Removes the private folders of a worker that was killed.
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

static void RunSideBySide(const HostOptions &options, const std::vector<SceneJob> &jobs)
{
    if (!CanSplitProcesses())
        ReportWarning(
            "--jobs: this system can't split processes, so that scenes are converted one at a time");
    size_t ended = 0;
    const std::string run = RandomText() + '-';
    const auto work = [&](size_t index) {
        MarkPrivateFolders(run + std::to_string(index) + '-');
        KeepReports(true);
        SceneResult result = ConvertScene(options, jobs[index]);
        KeepReports(false);
        return PackResult(&result);
    };
    const auto finished = [&](size_t index, const std::string &answer, const std::string &failure) {
        SceneResult result;
        if (!failure.empty() || !UnpackResult(answer, &result)) {
            result = {};
            result.scene = jobs[index].scene;
            result.bytes = jobs[index].bytes;
            SetReportSubject(&result);
            ReportError((failure.empty() ? "its process gave no answer" : failure) +
                        "; the scene counts as failed");
            SetReportSubject(nullptr);
            CleanUpAfter(options, jobs[index], run + std::to_string(index) + '-');
        }
        Finish(index, result);
        ShowLines(result.said);
        CountBytes(jobs[index].bytes);
        ShowScene(++ended, jobs[index].scene, 0);
    };
    ShowScene(0, jobs.front().scene, 0);
    RunInProcesses(jobs.size(), options.jobs, work, RemovePrivateFolders, finished);
}

// Whether all scenes were converted, and with --strict without warnings.
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
    batch.start = std::chrono::steady_clock::now();
    std::vector<SceneJob> jobs;
    StartReports(options.verbosity, false);
    bool done = ListScenes(options, &jobs);
    if (!TargetsAreApart(options, jobs))
        return exitUsage;
    OutputFile page;
    const bool hasSummary = !options.summaryFile.empty(), hasPage = !options.reportFile.empty();
    if ((hasSummary && !LocateReport(options.summaryFile, &batch.summary)) ||
        (hasPage && !LocateReport(options.reportFile, &page)))
        return exitFailed;
    // With several scenes, totals at the end replace the lines about written files.
    const bool many = jobs.size() > 1 || options.recursive;
    StartReports(options.verbosity, many);
    uint64_t bytes = 0;
    for (const SceneJob &job : jobs)
        bytes += job.bytes;
    if (options.verbosity <= 0 && !options.info)
        StartProgress(jobs.size(), bytes);
    batch.results.resize(jobs.size());
    batch.isDone.resize(jobs.size());
    batch.hasSummary = hasSummary;
    batch.noClobber = options.noClobber;
    CleanUpWhenInterrupted(CleanUpInterrupted);
    if (options.jobs > 1 && jobs.size() > 1)
        RunSideBySide(options, jobs);
    else
        RunOneByOne(options, jobs);
    EndProgress();
    const std::vector<SceneResult> &results = batch.results;
    done = AllIsWell(options, results) && done;
    const double seconds = SecondsSoFar();
    if (hasSummary)
        done = WriteReport(batch.summary, options.noClobber, SummaryText(results, seconds, false)) && done;
    if (hasPage) {
        const std::filesystem::path folder = PathOf(options.reportFile).parent_path();
        done = WriteReport(page, options.noClobber, ReportPage(results, seconds, folder)) && done;
    }
    if ((options.verbosity > 0 || (options.verbosity == 0 && many && !options.info)) && !jobs.empty())
        ShowLines(TotalsText(results, seconds, hasSummary));
    return done ? exitDone : exitFailed;
}
