#include "fuzz.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

#include "check_scene.h"
#include "frame/report.h"

static const int sceneFile = memfd_create("scene", 0), vueFile = memfd_create("vue", 0);
static bool hasVue;

extern "C" FILE *__real_fopen64(const char *path, const char *mode);

// `--wrap` redirects fopen64 here. All writes go to /dev/null, whatever the file name.
extern "C" FILE *__wrap_fopen64([[maybe_unused]] const char *path, const char *mode)
{
    return __real_fopen64("/dev/null", mode);
}

// The same for Mc3dsOpenToRead, by its name in object files.
extern "C" FILE *__wrap__Z15Mc3dsOpenToReadPKcS0_(const char *path, const char *mode)
{
    const bool vue = std::string(path).ends_with("vue");
    if (vue && !hasVue)
        return nullptr;
    return __real_fopen64(("/proc/self/fd/" + std::to_string(vue ? vueFile : sceneFile)).c_str(), mode);
}

void Require(bool condition, const char *fault)
{
    if (!condition) {
        std::fprintf(stderr, "%s\n", fault);
        std::abort();
    }
}

static void Put(int file, const void *bytes, size_t size)
{
    Require(ftruncate(file, 0) == 0, "no file in memory");
    Require(pwrite(file, bytes, size, 0) == static_cast<ssize_t>(size), "no memory for the file");
}

std::set<Mc3dsReportKind> KindsOfLoad(std::string_view scene, std::string_view vue)
{
    static std::set<Mc3dsReportKind> kinds;
    kinds.clear();
    Put(sceneFile, scene.data(), scene.size());
    Put(vueFile, vue.data(), vue.size());
    hasVue = !vue.empty();
    Mc3dsSetErrorCallback([](int32_t, const char *) { kinds.insert(Mc3dsNewestReport()->kind); });
    Mc3dsFile *file = Mc3dsLoadFile("scene.3ds");
    Mc3dsSetErrorCallback(nullptr);
    Require(CheckScene(file).empty(), CheckScene(file).c_str());
    Mc3dsUnloadFile(file);
    return kinds;
}

void LoadAndWrite(const void *scene, size_t sceneSize, const void *vue, size_t vueSize)
{
    Put(sceneFile, scene, sceneSize);
    Put(vueFile, vue, vueSize);
    hasVue = vue != nullptr;
    Mc3dsFile *file = Mc3dsLoadFile("scene.3ds");
    Require(CheckScene(file).empty(), CheckScene(file).c_str());
    // One output per run: all eight take longer than the load. A hash of the bytes selects it, so that a find
    // can be repeated and nearly every mutation changes it.
    const std::string_view bytes(static_cast<const char *>(vue ? vue : scene), vue ? vueSize : sceneSize);
    const std::string fault =
        CheckOutput(file, allOutputs[std::hash<std::string_view>()(bytes) % std::size(allOutputs)]);
    Require(fault.empty(), fault.c_str());
    Mc3dsUnloadFile(file);
}
