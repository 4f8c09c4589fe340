// Finds files that two scenes of a run would both write, before any of them is written.
#include <map>
#include <memory>
#include <set>

#include "batch.h"

namespace fs = std::filesystem;

struct Claim {
    std::string file; // as shown to the user
    size_t job;
};
struct Claims {
    std::map<std::string, Claim> byKey;
    std::map<std::string, std::string> folders; // cache of PathKey
};

static std::string KeyOf(Claims *claims, const std::string &file)
{
    return PathKey(PathOf(file), &claims->folders);
}

// Returns the claim of another scene on one of the files; null if there is none, and all are claimed now.
static const Claim *ClaimAll(Claims *claims, const std::vector<std::string> &files, size_t job)
{
    for (const std::string &file : files)
        if (const auto known = claims->byKey.find(KeyOf(claims, file));
            known != claims->byKey.end() && known->second.job != job)
            return &known->second;
    for (const std::string &file : files)
        claims->byKey.try_emplace(KeyOf(claims, file), Claim{file, job});
    return nullptr;
}

static void RefuseBoth(std::vector<SceneJob> *jobs, size_t a, size_t b, const std::string &file)
{
    const std::string why = InQuotes((*jobs)[a].scene) + " and " + InQuotes((*jobs)[b].scene) +
                            " would both write " + InQuotes(file) + "; neither is converted";
    for (const size_t job : {a, b})
        if ((*jobs)[job].refusal.empty())
            (*jobs)[job].refusal = why;
}

// The files whose names are known before the scene is loaded.
static std::vector<std::string> FilesOf(const HostOptions &options, const SceneJob &job)
{
    const HostOptions own = OptionsFor(options, job);
    std::vector<std::string> files;
    if (options.flags & MC3DS_PER_OBJECT)
        files.push_back(ObjectFileName(own, job.scene, 0));
    for (const NamedTarget &target : TargetNames(own, job.scene))
        if (target.name != standardOutputName)
            files.push_back(target.name);
    return files;
}

// Gives the outputs of a scene names with the first number that is free.
static void NumberOutput(const HostOptions &options, Claims *claims, SceneJob *job, size_t index,
                         const std::string &other, Reporter *reporter)
{
    const fs::path first = PathOf(job->output);
    for (int number = 2; ClaimAll(claims, FilesOf(options, *job), index); ++number) {
        const std::string name =
            first.stem().string() + '-' + std::to_string(number) + first.extension().string();
        job->output = (first.parent_path() / PathOf(name)).string();
    }
    ReportFinding(reporter, {.kind = FindingKind::TwinName,
                             .weight = Weight::Note,
                             .names = {{job->scene}, {job->output}, {other}}});
}

// Names that nobody else wants come first, so that a number never takes the name of another scene.
static void ClaimOutputs(const HostOptions &options, Claims *claims, std::vector<SceneJob> *jobs,
                         Reporter *reporter)
{
    std::vector<std::pair<size_t, size_t>> later; // scenes whose names are taken, and by which ones
    for (size_t i = 0; i < jobs->size(); ++i) {
        const Claim *taken = ClaimAll(claims, FilesOf(options, (*jobs)[i]), i);
        if (taken && options.outputDir.empty())
            RefuseBoth(jobs, taken->job, i, taken->file);
        else if (taken)
            later.emplace_back(i, taken->job);
    }
    for (const auto &[twin, owner] : later)
        NumberOutput(options, claims, &(*jobs)[twin], twin, (*jobs)[owner].scene, reporter);
}

// The number of files of a scene in a per-object run; 0 if it can't be read. Pipes and devices, which may
// never end, also count 0.
static uint32_t CountObjects(const std::string &scene, Reporter *reporter)
{
    if (!WhyNotRegular(scene).empty())
        return 0;
    ListenToLibrary(nullptr);
    const std::unique_ptr<Mc3dsFile, void (*)(Mc3dsFile *)> file(Mc3dsLoadFile(scene.c_str()),
                                                                 Mc3dsUnloadFile);
    ListenToLibrary(reporter);
    return file ? file->objectCount : 0;
}

// Object files end in a number, so names only collide if one scene's name is another's plus digits. Only such
// scenes are loaded here; they are loaded again for the conversion.
static void CheckObjectFiles(const HostOptions &options, Claims *claims, std::vector<SceneJob> *jobs,
                             Reporter *reporter)
{
    std::map<std::string, size_t> owners;
    std::set<size_t> suspects;
    for (size_t i = 0; i < jobs->size(); ++i) {
        const SceneJob &job = (*jobs)[i];
        const fs::path first = PathOf(ObjectFileName(OptionsFor(options, job), job.scene, 0));
        std::string base = KeyOf(claims, (first.parent_path() / first.stem()).string());
        base.pop_back(); // the 0
        owners.emplace(base, i);
    }
    for (const auto &[base, owner] : owners) {
        std::string shorter = base;
        while (!shorter.empty() && shorter.back() >= '0' && shorter.back() <= '9') {
            shorter.pop_back();
            if (const auto other = owners.find(shorter); other != owners.end()) {
                suspects.insert(owner);
                suspects.insert(other->second);
            }
        }
    }
    for (const size_t i : suspects) {
        const SceneJob &job = (*jobs)[i];
        const HostOptions own = OptionsFor(options, job);
        const uint32_t count = CountObjects(job.scene, reporter);
        for (uint32_t object = 1; object < count; ++object)
            if (const Claim *taken = ClaimAll(claims, {ObjectFileName(own, job.scene, object)}, i))
                RefuseBoth(jobs, taken->job, i, taken->file);
    }
}

// No scene is written over a file of another one.
static void ProtectInputs(Claims *claims, std::vector<SceneJob> *jobs)
{
    for (const SceneJob &job : *jobs)
        for (const std::string &input : {job.scene, VuePath(job.scene)})
            if (const auto claim = claims->byKey.find(KeyOf(claims, input));
                !input.empty() && claim != claims->byKey.end())
                (*jobs)[claim->second.job].refusal = "would be written to " + InQuotes(claim->second.file) +
                                                     ", a file of the scene " + InQuotes(job.scene) +
                                                     "; it isn't converted";
}

// The same check for the summary and the page.
static bool RunFilesAreApart(const HostOptions &options, const std::vector<SceneJob> &jobs, Claims *claims,
                             Reporter *reporter)
{
    const std::pair<const char *, std::string> files[] = {{"the summary", options.summaryFile},
                                                          {"the page of --report", options.pageFile}};
    for (const auto &[what, file] : files) {
        const std::string key = KeyOf(claims, file);
        if (file.empty())
            continue;
        for (const SceneJob &job : jobs)
            for (const std::string &input : {job.scene, VuePath(job.scene)})
                if (KeyOf(claims, input) == key) {
                    ReportError(reporter, std::string(what) + " would take the place of " + InQuotes(input) +
                                              "; nothing is done");
                    return false;
                }
        if (const auto claim = claims->byKey.find(key); claim != claims->byKey.end()) {
            ReportError(reporter, std::string(what) + " and the output of " +
                                      InQuotes(jobs[claim->second.job].scene) + " would both be " +
                                      InQuotes(file) + "; nothing is done");
            return false;
        }
    }
    if (!files[0].second.empty() && KeyOf(claims, files[0].second) == KeyOf(claims, files[1].second)) {
        ReportError(reporter, "the summary and the page of --report would both be " +
                                  InQuotes(files[1].second) + "; nothing is done");
        return false;
    }
    return true;
}

bool PlanRun(const HostOptions &options, std::vector<SceneJob> *jobs, Reporter *reporter)
{
    Claims claims;
    ClaimOutputs(options, &claims, jobs, reporter);
    if (jobs->size() > 1) { // PlanOutput checks a single scene
        if (options.flags & MC3DS_PER_OBJECT)
            CheckObjectFiles(options, &claims, jobs, reporter);
        ProtectInputs(&claims, jobs);
    }
    return RunFilesAreApart(options, *jobs, &claims, reporter);
}
