#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <system_error>

#include "files.h"
#if defined(MC3DS_HAVE_MCLMODEL)
#include "mclmodel.h"
#endif

namespace fs = std::filesystem;

using Scene = std::unique_ptr<Mc3dsFile, void (*)(Mc3dsFile *)>;

// Null, with its reports, when there is no scene.
static Scene LoadScene(const std::string &path)
{
    Scene scene(nullptr, Mc3dsUnloadFile);
    std::error_code failure;
    if (fs::is_directory(PathOf(path), failure)) {
        ReportError("cannot be read: it is a folder; --recursive converts the scenes in it");
        return scene;
    }
    if (path.find_first_of("\r\n") != std::string::npos) {
        ReportError("cannot be converted: a line break in its name would end the comment that holds it");
        return scene;
    }
    errno = 0;
    scene.reset(Mc3dsLoadFile(path.c_str()));
    const int reason = errno;
    if (MemoryRanOut() || reason == ENOMEM) {
        ReportError("out of memory while reading; nothing is written");
        scene.reset();
    } else if (!scene) {
        const std::string why = TakeLibraryError();
        if (why.empty() || why.starts_with("Unable to open"))
            ReportError(std::string("no scene: ") + std::strerror(reason) + "; nothing is written");
        else
            ReportError(why + "; nothing is written");
    }
    return scene;
}

// The C function is McBuild and this; what can't stand in an identifier becomes an underscore.
static std::string ClumpName(const HostOptions &options, const std::string &scenePath)
{
    if (!options.clumpName.empty())
        return options.clumpName;
    std::string name = PathOf(scenePath).stem().string();
    for (char &c : name) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (!letter && !(c >= '0' && c <= '9'))
            c = '_';
    }
    return !name.empty() && name[0] >= '0' && name[0] <= '9' ? '_' + name : name;
}

// Points into both.
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

static bool BuildModel(const Mc3dsFile *scene, Mc3dsOptions *asked)
{
    McClump *clump = nullptr;
    errno = 0;
    Mc3dsOutput(scene, asked, &clump);
    const bool outOfMemory = errno == ENOMEM || MemoryRanOut();
    if (outOfMemory)
        ReportError("out of memory while building the model");
#if defined(MC3DS_HAVE_MCLMODEL)
    if (!outOfMemory)
        PrintModel(scene, clump);
    ReportModelErrors();
    McFreeModel(clump);
#else
    if (!outOfMemory)
        ReportResult(clump ? "built the model" : "built a model without a clump");
#endif
    return !outOfMemory;
}

// Whether --no-clobber leaves nothing to do, as far as that can be told without reading the scene.
static bool AllTargetsExist(const HostOptions &options, const std::string &scenePath)
{
    const std::vector<NamedTarget> targets = TargetNames(options, scenePath);
    std::error_code failure;
    if (options.info || (options.flags & (MC3DS_PER_OBJECT | MC3DS_DIRECT)))
        return false;
    for (const NamedTarget &target : targets)
        if (!fs::is_regular_file(PathOf(target.name), failure))
            return false;
    for (const NamedTarget &target : targets)
        ReportKept(target.name);
    return true;
}

static Scene LoadAndShow(const HostOptions &options, const std::string &path)
{
    SceneNotes notes;
    StartNotes(&notes);
    Scene scene = LoadScene(path);
    StopNotes();
    if (options.json)
        PrintJson(scene.get(), path, notes);
    else if (scene)
        PrintInfo(scene.get(), path, notes);
    ShowWarningsSoFar(true); // the library's are in what was printed
    return scene;
}

static bool Convert(const HostOptions &options, SceneResult *result, bool oneOfMany)
{
    const std::string &path = result->scene;
    if (options.noClobber && AllTargetsExist(options, path))
        return true;
    const Scene scene = options.info ? LoadAndShow(options, path) : LoadScene(path);
    if (!scene)
        return false;
    result->objects = scene->objectCount;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        result->vertices += static_cast<uint64_t>(scene->objects[i].vertexCount);
        result->triangles += static_cast<uint64_t>(scene->objects[i].faceCount);
    }
    if (options.info && options.previewFile.empty())
        return true;
    if (scene->objectCount == 0) {
        ReportError("the scene has no objects; nothing is written");
        return false;
    }
    const std::string clumpName = ClumpName(options, path);
    Mc3dsOptions asked = LibraryOptions(options, clumpName);
    if (!options.info)
        ReportSceneNotes(asked, scene.get(), path);
    if (options.flags & MC3DS_DIRECT) {
        if (oneOfMany)
            std::printf("scene %s\n", Visible(path).c_str());
        if (!BuildModel(scene.get(), &asked))
            return false;
        if (options.previewFile.empty())
            return true;
    }
    return WriteFiles(options, path, scene.get(), &asked);
}

SceneResult ConvertScene(const HostOptions &options, const SceneJob &job, bool oneOfMany)
{
    const auto start = std::chrono::steady_clock::now();
    SceneResult result;
    result.scene = job.scene;
    result.bytes = job.bytes;
    SetReportSubject(&result);
    try {
        result.done = Convert(OptionsFor(options, job), &result, oneOfMany);
    } catch (const std::bad_alloc &) {
        ReportError("out of memory; nothing is written");
    } catch (const std::exception &failure) {
        ReportError(failure.what());
    }
    RemovePrivateFolders();
    SetReportSubject(nullptr);
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}
