#include <algorithm>
#include <cmath>
#include <system_error>

#include "info.h"

namespace fs = std::filesystem;

// Reports why the scene has no animation, if it has none.
static void ReportMissingAnimation(const Mc3dsFile *scene, const std::string &scenePath)
{
    const std::string vue = VuePath(scenePath);
    std::string why;
    std::error_code failure;
    if (scene->hasAnimation) {
        for (uint32_t i = 0; i < scene->objectCount; ++i)
            if (scene->objects[i].hasFrames)
                return;
        why = InQuotes(vue) + " names no object of the scene";
    } else if (scene->frameCount == 0)
        why = "the scene has no frames";
    else if (scenePath.size() >= sizeof scene->fileName || vue.empty())
        why =
            "the scene's path is too " + std::string(vue.empty() ? "short" : "long") + " for one to be found";
    else if (fs::exists(PathOf(vue), failure))
        why = InQuotes(vue) + " could not be read";
    else {
        const std::string name = PathOf(vue).filename().string();
        const auto others = FindBeside(PathOf(vue), {name});
        why = others.empty()
                  ? "there is no " + InQuotes(vue)
                  : "there is " + InQuotes(others.at(name)) + ", but it must be called " + InQuotes(name);
    }
    ReportWarning("no animation: " + why, Weight::Loss);
}

static bool IsFinite(const Mc3dsTransform &transform)
{
    for (const auto &row : transform.m)
        for (const double value : row)
            if (!std::isfinite(value))
                return false;
    return true;
}

// Reports non-finite vertices and placements. Returns the largest absolute value of all finite co-ordinates.
static double ReportNoNumbers(const Mc3dsOptions &options, const Mc3dsFile *scene)
{
    double largest = 0.0;
    size_t vertices = 0, placements = 0;
    std::string firstVertex, firstPlacement;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        for (int32_t at = 0; at < object.vertexCount; ++at) {
            const Mc3dsVertex &v = object.vertices[at];
            const double most = std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
            const bool finite = std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
            if (finite)
                largest = std::max(largest, most);
            if ((!finite || (object.hasTexture && (std::isnan(v.u) || std::isnan(v.v)))) && vertices++ == 0)
                firstVertex = object.safeName;
        }
        bool finite = IsFinite(object.meshMatrix);
        if ((options.flags & MC3DS_ANIMATION) && scene->hasAnimation && object.hasFrames)
            for (uint32_t frame = 0; frame <= scene->frameCount && finite; ++frame)
                finite = IsFinite(object.frames[frame]);
        if (!finite && placements++ == 0)
            firstPlacement = object.safeName;
    }
    const std::string noNumbers = " that hold no finite numbers, and are written as nan or inf: ";
    if (vertices != 0)
        ReportWarning("vertices" + noNumbers + std::to_string(vertices) + "; the first is in " +
                          InQuotes(firstVertex),
                      Weight::Damage);
    if (placements != 0)
        ReportWarning("placements" + noNumbers + std::to_string(placements) + "; the first is that of " +
                          InQuotes(firstPlacement),
                      Weight::Damage);
    return largest;
}

static void ReportBadSize(const Mc3dsOptions &options, const Mc3dsFile *scene, double largest)
{
    float extent = -Mc3dsLargest, least[3], most[3];
    FindSceneBounds(scene, least, most);
    for (int axis = 0; axis < 3; ++axis)
        extent = std::max(extent, most[axis] - least[axis]);
    const bool fits = options.flags & MC3DS_FIT_SIZE;
    const float scale = fits ? options.size / extent : options.scale;
    if (fits && (!(extent > 0.0f) || !std::isfinite(extent) || !std::isfinite(scale) || scale == 0.0f))
        ReportWarning(
            "the scene has no extent that --size could be made of, and is written with a scale of no "
            "use; --scale needs none");
    else if (largest * static_cast<double>(scale) > static_cast<double>(Mc3dsLargest))
        ReportWarning("the scale takes co-ordinates beyond what a number holds, and they are written as inf");
}

bool ReportSceneNotes(const Mc3dsOptions &options, const Mc3dsFile *scene, const std::string &scenePath,
                      bool forceNames)
{
    if (options.flags & MC3DS_ANIMATION)
        ReportMissingAnimation(scene, scenePath);
    for (const std::string &loss : FindLosses(scene, options.flags))
        ReportWarning(loss, Weight::Loss);
    if (const std::string keys = LostKeysText(scene); !keys.empty())
        ReportNote(keys);
    const bool namesFit = ReportNames(options, scene, forceNames);
    ReportBadSize(options, scene, ReportNoNumbers(options, scene));
    return namesFit;
}
