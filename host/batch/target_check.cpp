// Finds files that two scenes of a run would both write, before any of them is written.
#include <map>
#include <memory>
#include <set>

#include "batch.h"

namespace fs = std::filesystem;

struct Claim {
    std::string file, scene; // as shown to the user
};
struct Claims {
    std::map<std::string, Claim> byKey;
    std::map<std::string, std::string> folders; // cache of PathKey
};

static std::string KeyOf(Claims *claims, const std::string &file)
{
    return PathKey(PathOf(file), &claims->folders);
}

static bool AddClaim(Claims *claims, const std::string &file, const std::string &scene, Reporter *reporter)
{
    const auto [known, isNew] = claims->byKey.try_emplace(KeyOf(claims, file), Claim{file, scene});
    if (isNew || known->second.scene == scene)
        return true;
    ReportError(reporter, InQuotes(known->second.scene) + " and " + InQuotes(scene) + " would both write " +
                              InQuotes(file) + "; nothing is done");
    return false;
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
static bool ObjectFilesAreApart(const HostOptions &options, const std::vector<SceneJob> &jobs, Claims *claims,
                                Reporter *reporter)
{
    std::map<std::string, size_t> owners;
    std::set<size_t> suspects;
    for (size_t i = 0; i < jobs.size(); ++i) {
        const fs::path first = PathOf(ObjectFileName(OptionsFor(options, jobs[i]), jobs[i].scene, 0));
        if (!AddClaim(claims, first.string(), jobs[i].scene, reporter))
            return false;
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
        const HostOptions own = OptionsFor(options, jobs[i]);
        const uint32_t count = CountObjects(jobs[i].scene, reporter);
        for (uint32_t object = 1; object < count; ++object)
            if (!AddClaim(claims, ObjectFileName(own, jobs[i].scene, object), jobs[i].scene, reporter))
                return false;
    }
    return true;
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
            ReportError(reporter, std::string(what) + " and the output of " + InQuotes(claim->second.scene) +
                                      " would both be " + InQuotes(file) + "; nothing is done");
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

bool TargetsAreApart(const HostOptions &options, const std::vector<SceneJob> &jobs, Reporter *reporter)
{
    Claims claims;
    if (jobs.size() > 1 && (options.flags & MC3DS_PER_OBJECT) &&
        !ObjectFilesAreApart(options, jobs, &claims, reporter))
        return false;
    for (const SceneJob &job : jobs)
        for (const NamedTarget &target : TargetNames(OptionsFor(options, job), job.scene))
            if (target.name != standardOutputName && !AddClaim(&claims, target.name, job.scene, reporter))
                return false;
    for (const SceneJob &job : jobs) {
        if (jobs.size() == 1) // PlanOutput checks a single scene
            break;
        for (const std::string &input : {job.scene, VuePath(job.scene)}) {
            const auto claim = claims.byKey.find(KeyOf(&claims, input));
            if (!input.empty() && claim != claims.byKey.end()) {
                ReportError(reporter, InQuotes(claim->second.scene) + " would be written to " +
                                          InQuotes(claim->second.file) + ", a file of the scene " +
                                          InQuotes(job.scene) + "; nothing is done");
                return false;
            }
        }
    }
    return RunFilesAreApart(options, jobs, &claims, reporter);
}
