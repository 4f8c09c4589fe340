// Finds faults of a scene that the library doesn't report.
#include <algorithm>
#include <cmath>
#include <system_error>

#include "output/output.h"
#include "scene.h"

namespace fs = std::filesystem;

// Why the scene has no animation; empty if it has one.
static std::string WhyNoAnimation(const Mc3dsFile *scene, const std::string &scenePath)
{
    const std::string vue = VuePath(scenePath);
    std::error_code failure;
    if (scene->hasAnimation) {
        for (uint32_t i = 0; i < scene->objectCount; ++i)
            if (scene->objects[i].hasFrames)
                return "";
        return InQuotes(vue) + " names no object of the scene";
    }
    if (scene->frameCount == 0)
        return "the scene has no frames";
    if (scenePath.size() >= sizeof scene->fileName || vue.empty())
        return "the scene's path is too " + std::string(vue.empty() ? "short" : "long") +
               " for one to be found";
    if (fs::exists(PathOf(vue), failure))
        return InQuotes(vue) + " could not be read";
    const std::string name = PathOf(vue).filename().string();
    const auto others = FindBeside(PathOf(vue), {name});
    return others.empty()
               ? "there is no " + InQuotes(vue)
               : "there is " + InQuotes(others.at(name)) + ", but it must be called " + InQuotes(name);
}

static bool IsFinite(const Mc3dsTransform &transform)
{
    for (const auto &row : transform.m)
        for (const double value : row)
            if (!std::isfinite(value))
                return false;
    return true;
}

// Finds non-finite vertices and placements. Returns the largest absolute value of all finite co-ordinates.
static double FindNotFinite(const Mc3dsOptions &options, const Mc3dsFile *scene,
                            std::vector<Finding> *findings)
{
    double largest = 0.0;
    Finding vertices = {.kind = FindingKind::NotFiniteVertices, .weight = Weight::Damage};
    Finding placements = {.kind = FindingKind::NotFinitePlacement, .weight = Weight::Damage};
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        for (int32_t at = 0; at < object.vertexCount; ++at) {
            const Mc3dsVertex &v = object.vertices[at];
            const double most = std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
            const bool finite = std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
            if (finite)
                largest = std::max(largest, most);
            if ((!finite || (object.hasTexture && (std::isnan(v.u) || std::isnan(v.v)))) &&
                vertices.count++ == 0)
                vertices.names = {{object.safeName}};
        }
        bool finite = IsFinite(object.meshMatrix);
        if ((options.flags & MC3DS_ANIMATION) && scene->hasAnimation && object.hasFrames)
            for (uint32_t frame = 0; frame <= scene->frameCount && finite; ++frame)
                finite = IsFinite(object.frames[frame]);
        if (!finite && placements.count++ == 0)
            placements.names = {{object.safeName}};
    }
    for (const Finding &found : {vertices, placements})
        if (found.count != 0)
            findings->push_back(found);
    return largest;
}

static void FindSizeFaults(const Mc3dsOptions &options, const Mc3dsFile *scene, double largest,
                           std::vector<Finding> *findings)
{
    float extent = -Mc3dsLargest, least[3], most[3];
    Mc3dsFindBounds(scene, least, most);
    for (int axis = 0; axis < 3; ++axis)
        extent = std::max(extent, most[axis] - least[axis]);
    const bool fits = options.flags & MC3DS_FIT_SIZE;
    const float scale = fits ? options.size / extent : options.scale;
    if (fits && (!(extent > 0.0f) || !std::isfinite(extent) || !std::isfinite(scale) || scale == 0.0f))
        findings->push_back({.kind = FindingKind::NoExtent});
    else if (largest * static_cast<double>(scale) > static_cast<double>(Mc3dsLargest))
        findings->push_back({.kind = FindingKind::ScaleTooLarge});
}

void FindAnimationFault(const Mc3dsFile *scene, const std::string &scenePath, std::vector<Finding> *findings)
{
    if (const std::string why = WhyNoAnimation(scene, scenePath); !why.empty())
        findings->push_back({.kind = FindingKind::NoAnimation, .weight = Weight::Loss, .detail = why});
}

void FindNumberFaults(const Mc3dsOptions &options, const Mc3dsFile *scene, std::vector<Finding> *findings)
{
    FindSizeFaults(options, scene, FindNotFinite(options, scene, findings), findings);
}
