#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <system_error>

#include "batch.h"
#include "frame/outcome.h"

namespace fs = std::filesystem;

using Scene = std::unique_ptr<Mc3dsFile, void (*)(Mc3dsFile *)>;

std::string WhyNotRegular(const std::string &path)
{
    std::error_code failure;
    const fs::file_status scene = fs::status(PathOf(path), failure);
    const fs::file_status vue = fs::status(PathOf(VuePath(path)), failure);
    if (fs::is_directory(scene))
        return "cannot be read: it is a folder; --recursive converts the scenes in it";
    if (fs::exists(scene) && !fs::is_regular_file(scene))
        return "cannot be read: it is a pipe or a device, and no regular file";
    if (fs::exists(vue) && !fs::is_regular_file(vue) && !fs::is_directory(vue))
        return "its animation " + InQuotes(VuePath(path)) + " is a pipe or a device; nothing is read";
    return "";
}

static std::string WhyRefused(const std::string &path)
{
    if (const std::string why = WhyNotRegular(path); !why.empty())
        return why;
    if (path.find_first_of("\r\n") != std::string::npos)
        return "cannot be converted: a line break in its name would end the comment that holds it";
    return "";
}

// Returns why a loaded scene must not be written; empty if it may be. Damage is accepted. A read error isn't:
// the next attempt may read the rest.
static std::string WhyIncomplete(const Mc3dsFile *scene, const std::string &path, bool animated)
{
    if (scene->readError != 0)
        return std::string("cannot be read to its end: ") + std::strerror(scene->readError);
    if (scene->vueError != 0 && (animated || scene->hasAnimation))
        return "its animation " + InQuotes(VuePath(path)) +
               " cannot be read: " + std::strerror(scene->vueError);
    return "";
}

// Why the newest load gave no scene, or one that must not be written; empty if it may be.
static std::string WhyNotLoaded(const Mc3dsFile *scene, const std::string &path, bool animated,
                                const Reporter *reporter)
{
    const Mc3dsOutcome &outcome = *Mc3dsGetOutcome();
    std::error_code failure;
    if (outcome.outOfMemory)
        return "out of memory while reading";
    if (scene)
        return WhyIncomplete(scene, path, animated);
    if (outcome.openError != 0)
        return std::string("cannot be opened: ") + std::strerror(outcome.openError);
    return fs::file_size(PathOf(path), failure) == 0 ? "the file is empty" : reporter->notAScene;
}

// Returns null after a report on failure.
static Scene LoadScene(const HostOptions &options, const std::string &path, Reporter *reporter,
                       RestoredScene *restored)
{
    const bool animated = options.flags & MC3DS_ANIMATION;
    Scene scene(nullptr, Mc3dsUnloadFile);
    if (const std::string why = WhyRefused(path); !why.empty()) {
        ReportError(reporter, why);
        return scene;
    }
    restored->path = path;
    if (options.restore != 0 && !RestoreScene(options, path, reporter, restored))
        return scene;
    scene.reset(Mc3dsLoadFile(restored->path.c_str()));
    if (const std::string why = WhyNotLoaded(scene.get(), path, animated, reporter); !why.empty()) {
        ReportError(reporter, why + "; nothing is written");
        scene.reset();
    }
    if (scene && restored->path != path) { // the comments of outputs name the scene itself
        const size_t length = std::min(path.size(), sizeof scene->fileName - 1);
        std::memcpy(scene->fileName, path.data(), length);
        scene->fileName[length] = '\0';
    }
    return scene;
}

// The C function is called McBuild plus this. Characters that are invalid in an identifier become
// underscores.
static std::string ClumpName(const HostOptions &options, const std::string &scenePath)
{
    if (!options.clumpName.empty())
        return options.clumpName;
    std::string name = PathOf(scenePath).stem().string();
    for (char &c : name)
        c = IsIdentifierByte(c) ? c : '_';
    return !name.empty() && name[0] >= '0' && name[0] <= '9' ? '_' + name : name;
}

// The result points into options and clumpName.
static Mc3dsOptions LibraryOptions(const HostOptions &options, const std::string &clumpName)
{
    Mc3dsOptions asked = {};
    asked.flags = options.flags;
    asked.surfaceFlags = options.surfaceFlags;
    asked.hintFlags = options.hintFlags;
    asked.clumpName = clumpName.c_str();
    asked.textureExtension = options.textureExtension.c_str();
    asked.scale = options.scale;
    asked.size = options.size;
    asked.redWeight = options.weights[0];
    asked.greenWeight = options.weights[1];
    asked.blueWeight = options.weights[2];
    asked.opacity = options.opacity;
    return asked;
}

// Whether --no-clobber leaves nothing to do. False if only the scene's contents can tell.
static bool AllTargetsExist(const HostOptions &options, const std::string &scenePath, Reporter *reporter)
{
    const std::vector<NamedTarget> targets = TargetNames(options, scenePath);
    std::error_code failure;
    if (options.info || (options.flags & MC3DS_PER_OBJECT))
        return false;
    for (const NamedTarget &target : targets)
        if (!fs::is_regular_file(PathOf(target.name), failure))
            return false;
    for (const NamedTarget &target : targets)
        ReportKept(reporter, {target.name});
    return true;
}

// Objects that --restore would move.
static void AddElsewhere(const HostOptions &options, const Mc3dsFile *scene, const std::string &path,
                         std::vector<Finding> *findings)
{
    std::string bytes;
    if (options.restore == 0 && HasKeys(scene) && ReadWhole(path, &bytes))
        FindElsewhere(bytes, findings);
}

static Scene LoadAndShow(const HostOptions &options, const std::string &path, Reporter *reporter,
                         RestoredScene *restored)
{
    std::map<std::string, size_t> reports;
    reporter->reports = &reports;
    Scene scene = LoadScene(options, path, reporter, restored);
    reporter->reports = nullptr;
    if (scene)
        AddElsewhere(options, scene.get(), path, &reporter->scene->notes);
    if (options.json)
        PrintJson(scene.get(), *reporter->scene, reports);
    else if (scene)
        PrintInfo(scene.get(), *reporter->scene, reports);
    MarkWarningsShown(reporter); // the printed text includes those of the library
    return scene;
}

static void NoteContents(const HostOptions &options, const Mc3dsFile *scene, SceneResult *result)
{
    result->read = CountScene(scene);
    if (!options.pageFile.empty())
        for (const TextureFile &texture : FindTextures(scene, result->scene))
            if (texture.found.empty())
                result->missingTextures.push_back(texture.name);
}

// Counts what was written or built. Returns false after a report if the scene has triangles and the model has
// none.
static bool NoteModel(const Mc3dsFile *scene, uint32_t flags, Reporter *reporter)
{
    SceneResult *const result = reporter->scene;
    result->model = CountModel(scene, flags);
    if (result->model.triangles != 0 || result->read.triangles == 0)
        return true;
    const uint64_t inFlat = CountModel(scene, flags | MC3DS_FLAT).triangles;
    ReportError(reporter, SentenceOf({.kind = FindingKind::EmptyModel,
                                      .count = result->read.triangles,
                                      .of = inFlat != 0 ? 1u : 0u}));
    return false;
}

// Reports losses and faults. False after a report if a name would break out of the output.
static bool ReportFaults(const HostOptions &options, const Mc3dsOptions &asked, const Mc3dsFile *scene,
                         Reporter *reporter)
{
    std::vector<Finding> findings;
    std::vector<std::string> refused;
    if (asked.flags & MC3DS_ANIMATION)
        FindAnimationFault(scene, reporter->scene->scene, &findings);
    FindLosses(scene, asked.flags, &findings);
    FindUnplayedKeys(scene, &findings);
    AddElsewhere(options, scene, reporter->scene->scene, &findings);
    if (options.restore == 0)
        OfferRestoring(&findings);
    FindNameFaults(asked, scene, options.forceNames, &findings, &refused);
    for (const Finding &finding : findings)
        ReportFinding(reporter, finding);
    if (!refused.empty())
        ReportError(reporter, Counted(refused.size(), "name") + " would break out of the " +
                                  (asked.flags & MC3DS_SOURCE ? "C source" : "script") +
                                  "; nothing is written, --force-names writes all the same");
    for (const std::string &name : refused)
        ReportError(reporter, "this name would break out: " + name);
    findings.clear();
    FindNumberFaults(asked, scene, &findings);
    for (const Finding &finding : findings)
        ReportFinding(reporter, finding);
    return refused.empty();
}

static bool Convert(const HostOptions &options, Reporter *reporter)
{
    SceneResult *const result = reporter->scene;
    const std::string &path = result->scene;
    if (options.noClobber && AllTargetsExist(options, path, reporter))
        return true;
    RestoredScene restored;
    result->isRestored = options.restore != 0;
    const Scene scene = options.info ? LoadAndShow(options, path, reporter, &restored)
                                     : LoadScene(options, path, reporter, &restored);
    if (!scene)
        return false;
    std::vector<Finding> cut;
    FindCutEnd(scene.get(), &cut);
    for (const Finding &finding : cut)
        ReportError(reporter, SentenceOf(finding));
    NoteContents(options, scene.get(), result);
    const bool isAsked =
        !options.previewFile.empty() || !options.glbFile.empty() || !options.restoredFile.empty();
    if (options.info && (!(isAsked || !options.pageFile.empty()) || (!isAsked && scene->objectCount == 0)))
        return cut.empty();
    if (scene->objectCount == 0) {
        ReportError(reporter, "the scene has no objects; nothing is written");
        return false;
    }
    const std::string clumpName = ClumpName(options, path);
    Mc3dsOptions asked = LibraryOptions(options, clumpName);
    if (!options.info && !ReportFaults(options, asked, scene.get(), reporter))
        return false;
    std::string picture;
    bool done = WriteFiles(options, path, scene.get(), restored, &asked, reporter, &picture);
    if (!options.pageFile.empty())
        result->picture = picture;
    if (done && !options.info)
        done = NoteModel(scene.get(), asked.flags, reporter);
    return done && cut.empty();
}

static bool HasRelativePath(const HostOptions &options, const std::string &scenePath)
{
    bool relative = PathOf(scenePath).is_relative() || PathOf(OutputName(options, scenePath)).is_relative();
    for (const NamedTarget &target : TargetNames(options, scenePath))
        relative = relative || PathOf(target.name).is_relative();
    return relative;
}

SceneResult ConvertScene(const HostOptions &options, const SceneJob &job, Reporter *reporter)
{
    const auto start = std::chrono::steady_clock::now();
    SceneResult result;
    result.scene = job.scene;
    result.bytes = job.bytes;
    BeginScene(reporter, &result);
    const HostOptions own = OptionsFor(options, job);
    try {
        if (!job.refusal.empty())
            ReportError(reporter, job.refusal);
        else if (CurrentFolderIsLost() && HasRelativePath(own, job.scene))
            ReportError(reporter, "cannot be converted: the current folder can't be entered any more");
        else
            result.done = Convert(own, reporter);
    } catch (const std::bad_alloc &) {
        ReportError(reporter, "out of memory; nothing is written");
    } catch (const std::exception &failure) {
        ReportError(reporter, failure.what());
    }
    RemovePrivateFolders();
    EndScene(reporter);
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}
