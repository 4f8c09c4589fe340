// Times actions in turn in one process. Prints for each action the median seconds of wall time and of
// processor time, and the growth of the process's peak memory since its start, in KiB.
//   mc3ds_measure RUNS OUTPUT ACTION FILE [ACTION FILE]...
// An extra first run warms up.
// restore reads FILE, restores it, writes what comes of it to OUTPUT and loads that.
// fread, load and base-load read FILE into memory that is fresh from the system; fwrite writes its bytes;
// script and source write its scene; direct and bare build its model; convert and base-convert load it and
// write a script. base- uses the plain code of baseline.h, heard- sets report callbacks, and bare makes only
// the calls of the Meshcaster library, as many as a direct build. Files are written to OUTPUT and then
// renamed to OUTPUT.ACTION, with .h for the header and .anim for the animation.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <malloc.h>
#include <mclmodel.h>
#include <string>
#include <vector>

#include "baseline.h"
#include "restore.h"

struct Job {
    std::string action, path, bytes;
    const Mc3dsFile *scene;
    std::vector<double> times, processorTimes;
    size_t size = 0; // of the file, if it is read as a whole
};

static std::string output;

static double Now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

static double ProcessorNow()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

static double Median(std::vector<double> numbers)
{
    std::sort(numbers.begin(), numbers.end());
    return numbers.empty() ? 0.0 : numbers[numbers.size() / 2];
}

// Not from getrusage: a process inherits that figure from its parent.
static long PeakKiB()
{
    long peak = 0;
    FILE *status = std::fopen("/proc/self/status", "r");
    for (char line[256]; status && std::fgets(line, sizeof line, status);)
        if (std::strncmp(line, "VmHWM:", 6) == 0)
            peak = std::atol(line + 6);
    if (status)
        std::fclose(status);
    return peak;
}

static void Require(bool condition, const std::string &what)
{
    if (condition)
        return;
    std::perror(what.c_str());
    std::exit(1);
}

static void PlainRead(const std::string &path, char *bytes, size_t size)
{
    FILE *stream = std::fopen(path.c_str(), "rb");
    Require(stream && std::fread(bytes, 1, size, stream) == size, path);
    std::fclose(stream);
}

static void PlainWrite(const std::string &bytes)
{
    FILE *stream = std::fopen(output.c_str(), "wb");
    Require(stream && std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size(), output);
    Require(std::fclose(stream) == 0, output);
}

static void BareSurface(const Mc3dsMaterial &material)
{
    McSetSurface(0.1f, 0.5f, 0.9f);
    McSetSurfaceColor(material.diffuse[0], material.diffuse[1], material.diffuse[2]);
    McSetSurfaceOpacity(1.0f);
    McSetSurfaceGeometrySampling(mcSOLID);
    McSetSurfaceLightSampling(mcVERTEX);
    if (material.textureMap[0] != '\0')
        McSetSurfaceTextureModes(0);
    McSetSurfaceTexture(material.textureMap[0] != '\0' ? material.textureMap : nullptr);
}

static void BareTriangle(const Mc3dsFace &face)
{
    McTriangle(static_cast<int>(face.a) + 1, static_cast<int>(face.b) + 1, static_cast<int>(face.c) + 1);
}

static void BareMesh(const Mc3dsFile *scene, const Mc3dsObject &object)
{
    for (int32_t i = 0; i < object.vertexCount; ++i) {
        const Mc3dsVertex &vertex = object.vertices[i];
        McUV uv = {vertex.u, vertex.v};
        McVertexExt(vertex.x, vertex.y, vertex.z, &uv, nullptr);
    }
    for (uint32_t i = 0; i < object.groupCount; ++i) {
        BareSurface(scene->materials[object.groups[i].material]);
        for (uint32_t j = 0; j < object.groups[i].count; ++j)
            BareTriangle(object.faces[object.groups[i].faces[j]]);
    }
    BareSurface(scene->materials[0]);
    for (int32_t i = 0; i < object.faceCount; ++i)
        if (object.faces[i].material == 0)
            BareTriangle(object.faces[i]);
}

static McClump *BareModel(const Mc3dsFile *scene)
{
    McClump *clump = nullptr;
    McMatrix4d *matrix = McCreateMatrix();
    McModelBegin();
    McClumpBegin();
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        McTransformBegin();
        for (int element = 0; element < 16; ++element)
            McSetMatrixElement(matrix, element / 4, element % 4, element % 5 == 0 ? 1.0f : 0.0f);
        McTransformCTM(matrix);
        McClumpBegin();
        McSetHints(0);
        McSetTag(static_cast<int>(i));
        BareMesh(scene, scene->objects[i]);
        McClumpEnd(&clump);
        McTransformEnd();
    }
    McClumpEnd(&clump);
    McModelEnd();
    McDestroyMatrix(matrix);
    return clump;
}

static McClump *Output(const std::string &action, const Mc3dsFile *scene)
{
    const std::string header = output + ".h", animation = output + ".anim";
    McClump *clump = nullptr;
    const uint32_t flags = action.ends_with("source") ? MC3DS_SOURCE | MC3DS_HEADER | MC3DS_ANIMATION
                           : action == "direct"       ? MC3DS_DIRECT
                                                      : 0;
    Mc3dsOptions options = {
        flags, MC3DS_TEXTURES, 0,    "Scene", output.c_str(), header.c_str(), animation.c_str(),
        "",    0.75f,          0.0f, 0.299f,  0.587f,         0.114f,         1.0f};
    if (action.starts_with("base-"))
        BaselineOutput(scene, &options);
    else
        Mc3dsOutput(scene, &options, &clump);
    return clump;
}

static void Prepare(Job *job)
{
    const bool plain = job->action == "fread" || job->action == "fwrite";
    if (plain || job->action == "restore") {
        FILE *stream = std::fopen(job->path.c_str(), "rb");
        Require(stream && fseeko(stream, 0, SEEK_END) == 0, job->path);
        job->size = static_cast<size_t>(ftello(stream));
        std::fclose(stream);
    }
    if (plain) {
        job->bytes.resize(job->size);
        PlainRead(job->path, job->bytes.data(), job->bytes.size());
    } else if (!job->action.ends_with("load") && !job->action.ends_with("convert") &&
               job->action != "restore") {
        job->scene = Mc3dsLoadFile(job->path.c_str());
        Require(job->scene != nullptr, job->path);
    }
}

static void Ignore(int32_t, const char *)
{
}

// The results of an action, freed after its time is taken.
struct Made {
    char *memory;
    Mc3dsFile *scene;
    McClump *clump;
};

static Made Act(const Job &job)
{
    const char *path = job.path.c_str();
    Made made = {};
    // The plain code has no reports. So callbacks are set only where their time is measured.
    const Mc3dsCallback callback = job.action.starts_with("heard-") ? Ignore : nullptr;
    Mc3dsSetErrorCallback(callback);
    Mc3dsSetMessageCallback(callback);
    if (job.action == "restore") {
        std::string original(job.size, '\0');
        PlainRead(job.path, original.data(), original.size());
        Mc3dsRestored restored = Mc3dsRestore(original, Mc3dsRestoreAll);
        original = {};
        const bool isChanged = !restored.scene.empty();
        if (isChanged)
            PlainWrite(restored.scene);
        restored = {};
        made.scene = Mc3dsLoadFile(isChanged ? output.c_str() : path);
    } else if (job.action == "fread") {
        made.memory = static_cast<char *>(std::malloc(job.bytes.size()));
        PlainRead(job.path, made.memory, job.bytes.size());
    } else if (job.action == "fwrite") {
        PlainWrite(job.bytes);
    } else if (job.scene) {
        made.clump = job.action == "bare" ? BareModel(job.scene) : Output(job.action, job.scene);
    } else {
        made.scene = job.action.starts_with("base-") ? BaselineLoad(path) : Mc3dsLoadFile(path);
        if (made.scene && job.action.ends_with("convert"))
            Output(job.action, made.scene);
    }
    return made;
}

static void Free(const Job &job, const Made &made)
{
    std::free(made.memory);
    if (made.scene)
        job.action.starts_with("base-") ? BaselineFree(made.scene) : Mc3dsUnloadFile(made.scene);
    McFreeModel(made.clump);
    malloc_trim(0); // so that the next run gets fresh memory as well
}

int main(int argc, char **argv)
{
    const long peakAtStart = PeakKiB();
    if (argc < 5 || argc % 2 == 0) {
        std::fprintf(stderr, "usage: %s RUNS OUTPUT ACTION FILE [ACTION FILE]...\n", argv[0]);
        return 2;
    }
    output = argv[2];
    std::vector<Job> jobs;
    for (int i = 3; i < argc; i += 2)
        Prepare(&jobs.emplace_back(Job{argv[i], argv[i + 1], "", nullptr, {}, {}, 0}));
    for (int run = -1; run < std::atoi(argv[1]); ++run)
        for (Job &job : jobs) {
            // In a file system in memory, the new file takes the memory that the old one gives back.
            for (const char *kind : {"", ".h", ".anim"})
                std::remove((output + "." + job.action + kind).c_str());
            const double start = Now(), processorStart = ProcessorNow();
            const Made made = Act(job);
            if (run >= 0) {
                job.times.push_back(Now() - start);
                job.processorTimes.push_back(ProcessorNow() - processorStart);
            }
            Free(job, made);
            for (const char *kind : {"", ".h", ".anim"})
                std::rename((output + kind).c_str(), (output + "." + job.action + kind).c_str());
        }
    for (const Job &job : jobs)
        std::printf("%s %s %.6f %.6f %ld\n", job.action.c_str(), job.path.c_str(), Median(job.times),
                    Median(job.processorTimes), PeakKiB() - peakAtStart);
    return 0;
}
