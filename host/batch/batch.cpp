#include "batch.h"

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
    int verbosity;
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
    Reporter reporter = {.verbosity = batch.verbosity};
    if (batch.hasSummary)
        WriteRunFile(batch.summary, batch.noClobber, SummaryText(done, SecondsSoFar(), true), &reporter);
}

static void RunOneByOne(const HostOptions &options, const std::vector<SceneJob> &jobs, Reporter *reporter,
                        Progress *progress)
{
    for (size_t i = 0; i < jobs.size(); ++i) {
        ShowScene(progress, i + 1, jobs[i].scene, jobs[i].bytes);
        const SceneResult result = ConvertScene(options, jobs[i], reporter);
        Finish(i, result);
        ReleaseInterrupts();
        CountBytes(progress, jobs[i].bytes);
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

static void RunSideBySide(const HostOptions &options, const std::vector<SceneJob> &jobs, Reporter *reporter,
                          Progress *progress)
{
    if (!CanSplitProcesses())
        ReportFinding(reporter, {.kind = FindingKind::OneProcess});
    size_t ended = 0;
    const std::string run = RandomText() + '-';
    const auto work = [&](size_t index) {
        MarkPrivateFolders(run + std::to_string(index) + '-');
        reporter->keepsLines = true;
        SceneResult result = ConvertScene(options, jobs[index], reporter);
        reporter->keepsLines = false;
        return PackResult(&result);
    };
    const auto finished = [&](size_t index, const std::string &answer, const std::string &failure) {
        SceneResult result;
        if (!failure.empty() || !UnpackResult(answer, &result)) {
            result = {}; // unnoticed
            result.scene = jobs[index].scene;
            result.bytes = jobs[index].bytes;
            BeginScene(reporter, &result);
            ReportError(reporter, (failure.empty() ? "its process gave no answer" : failure) +
                                      "; the scene counts as failed");
            EndScene(reporter);
            CleanUpAfter(options, jobs[index], run + std::to_string(index) + '-');
        }
        Finish(index, result);
        ShowLines(reporter, result.said);
        CountBytes(progress, jobs[index].bytes);
        ShowScene(progress, ++ended, jobs[index].scene, 0);
    };
    ShowScene(progress, 0, jobs.front().scene, 0);
    RunInProcesses(jobs.size(), options.jobs, work, RemovePrivateFolders, finished);
}

// Writes the summary and the page. Returns false after a report on failure.
static bool WriteRunFiles(const HostOptions &options, const OutputFile &page, Reporter *reporter)
{
    const double seconds = SecondsSoFar();
    bool done = true;
    if (batch.hasSummary)
        done = WriteRunFile(batch.summary, options.noClobber, SummaryText(batch.results, seconds, false),
                            reporter);
    if (!options.pageFile.empty()) {
        const std::filesystem::path folder = PathOf(options.pageFile).parent_path();
        const std::string text = PageText(batch.results, seconds, folder);
        done = WriteRunFile(page, options.noClobber, text, reporter) && done;
    }
    return done;
}

int ConvertAll(const HostOptions &options, Reporter *reporter)
{
    batch.start = std::chrono::steady_clock::now();
    std::vector<SceneJob> jobs;
    bool done = ListScenes(options, reporter, &jobs);
    if (!PlanRun(options, &jobs, reporter))
        return exitUsage;
    OutputFile page;
    batch.hasSummary = !options.summaryFile.empty();
    if ((batch.hasSummary && !LocateRunFile(options.summaryFile, reporter, &batch.summary)) ||
        (!options.pageFile.empty() && !LocateRunFile(options.pageFile, reporter, &page)))
        return exitFailed;
    // With several scenes, totals at the end replace the lines about written files.
    const bool many = jobs.size() > 1 || options.recursive;
    reporter->oneLineEach = many;
    ListenToLibrary(reporter);
    Progress progress;
    if (options.verbosity <= 0 && !options.info)
        StartProgress(&progress, reporter, jobs);
    batch.results.resize(jobs.size());
    batch.isDone.resize(jobs.size());
    batch.noClobber = options.noClobber;
    batch.verbosity = options.verbosity;
    CleanUpWhenInterrupted(CleanUpInterrupted);
    if (options.jobs > 1 && jobs.size() > 1)
        RunSideBySide(options, jobs, reporter, &progress);
    else
        RunOneByOne(options, jobs, reporter, &progress);
    EndProgress(&progress);
    const RunTotals totals = AddUp(batch.results);
    done = done && totals.failed == 0;
    if (options.strict && totals.warnings != 0) {
        ReportError(reporter, std::to_string(totals.warnings) +
                                  (totals.warnings == 1 ? " warning counts" : " warnings count") +
                                  " as failure with --strict; the files are written");
        done = false;
    }
    done = WriteRunFiles(options, page, reporter) && done;
    if ((options.verbosity > 0 || (options.verbosity == 0 && many && !options.info)) && !jobs.empty())
        ShowLines(reporter, TotalsText(totals, SecondsSoFar(), batch.hasSummary));
    return done ? exitDone : exitFailed;
}
