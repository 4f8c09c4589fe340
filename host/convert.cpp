#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>

#include "host.h"
#if defined(MC3DS_HAVE_MCLMODEL)
#include "mclmodel.h"
#endif

namespace fs = std::filesystem;

using Scene = std::unique_ptr<Mc3dsFile, void (*)(Mc3dsFile *)>;

// Null, with its reports, when there is nothing to convert.
static Scene LoadScene(const std::string &path)
{
    Scene scene(nullptr, Mc3dsUnloadFile);
    std::error_code failure;
    if (fs::is_directory(path, failure)) {
        ReportError("cannot be read: it is a folder");
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
    } else if (!scene && LastLibraryError().starts_with("Unable to open")) {
        ReportError(std::string("no scene: ") + std::strerror(reason));
    } else if (!scene) {
        ReportError("no scene; nothing is written");
    } else if (scene->objectCount == 0) {
        ReportError("the scene has no objects; nothing is written");
        scene.reset();
    }
    return scene;
}

// The C function is McBuild and this; what can't stand in an identifier becomes an underscore.
static std::string ClumpName(const HostOptions &options, const std::string &scenePath)
{
    if (!options.clumpName.empty())
        return options.clumpName;
    std::string name = fs::path(scenePath).stem().string();
    for (char &c : name) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (!letter && !(c >= '0' && c <= '9'))
            c = '_';
    }
    return !name.empty() && name[0] >= '0' && name[0] <= '9' ? '_' + name : name;
}

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
    if (const size_t errors = McErrorCount(); errors != 0)
        ReportWarning("the Meshcaster library counted " + std::to_string(errors) +
                      (errors == 1 ? " error: " : " errors, the first: ") + McFirstError());
    McClearErrors();
    McFreeModel(clump);
#else
    if (!outOfMemory)
        ReportResult(clump ? "built the model" : "built a model without a clump");
#endif
    return !outOfMemory;
}

static bool Convert(const HostOptions &options, const std::string &scenePath)
{
    const Scene scene = LoadScene(scenePath);
    if (!scene)
        return false;
    if (options.flags & MC3DS_ANIMATION)
        ReportMissingAnimation(scene.get(), scenePath);
    if (!(options.flags & (MC3DS_FLAT | MC3DS_PER_OBJECT)))
        ReportLostObjects(scene.get());
    const std::string clumpName = ClumpName(options, scenePath);
    Mc3dsOptions asked = LibraryOptions(options, clumpName);
    if (options.flags & MC3DS_DIRECT)
        return BuildModel(scene.get(), &asked);
    return ConvertToFiles(options, scenePath, scene.get(), &asked);
}

bool ConvertScene(const HostOptions &options, const std::string &scenePath)
{
    SetReportSubject(scenePath);
    const bool done = Convert(options, scenePath);
    FinishReports();
    return done;
}
