#include <algorithm>
#include <cmath>
#include <system_error>

#include "host.h"

namespace fs = std::filesystem;

static std::string FindOtherCase(const fs::path &wanted)
{
    std::error_code failure;
    const fs::path folder = wanted.has_parent_path() ? wanted.parent_path() : fs::path(".");
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure))
        if (InLowerCase(entry->path().filename().string()) == InLowerCase(wanted.filename().string()))
            return entry->path().filename().string();
    return "";
}

// Why the scene has no animation, if it has none.
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
    else if (const std::string other = FindOtherCase(PathOf(vue)); other.empty())
        why = "there is no " + InQuotes(vue);
    else
        why = "there is " + InQuotes(other) + ", but it must be called " +
              InQuotes(PathOf(vue).filename().string());
    ReportWarning("no animation: " + why);
}

// For each object, whether following its parents leads to the top.
static std::vector<bool> FindPlaced(const Mc3dsFile *scene)
{
    constexpr uint32_t none = UINT32_MAX;
    std::vector<uint32_t> ownerOfNode(0x8000, none);
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        if (scene->objects[i].nodeId >= 0 && scene->objects[i].nodeId < 0x8000)
            ownerOfNode[static_cast<size_t>(scene->objects[i].nodeId)] = i;
    std::vector<bool> placed(scene->objectCount, false), seen(scene->objectCount, false);
    std::vector<uint32_t> path;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        bool atTop = false;
        path.clear();
        for (uint32_t at = i; at != none && !atTop;) {
            const uint16_t parent = scene->objects[at].parentNode;
            atTop = parent == 0xFFFF || placed[at];
            if (!atTop && seen[at])
                break;
            seen[at] = true;
            path.push_back(at);
            at = parent < 0x8000 ? ownerOfNode[parent] : none;
        }
        for (const uint32_t on : path)
            placed[on] = atTop;
    }
    return placed;
}

// Objects that hang from no object that is written.
static void ReportLostObjects(const Mc3dsFile *scene)
{
    const std::vector<bool> placed = FindPlaced(scene);
    const auto lost = std::count(placed.begin(), placed.end(), false);
    if (lost == 0)
        return;
    const auto first = std::find(placed.begin(), placed.end(), false) - placed.begin();
    ReportWarning("objects that hang from no object and are left out: " + std::to_string(lost) + " of " +
                  std::to_string(scene->objectCount) +
                  "; --flat writes them; the first: " + InQuotes(scene->objects[first].safeName));
}

static bool IsFinite(const Mc3dsTransform &transform)
{
    for (const auto &row : transform.m)
        for (const double value : row)
            if (!std::isfinite(value))
                return false;
    return true;
}

// Returns the largest of all finite co-ordinates.
static double ReportNoNumbers(const HostOptions &options, const Mc3dsFile *scene)
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
                      InQuotes(firstVertex));
    if (placements != 0)
        ReportWarning("placements" + noNumbers + std::to_string(placements) + "; the first is that of " +
                      InQuotes(firstPlacement));
    return largest;
}

// The bounds are those that the library takes: of what the file has, before anything is placed.
static void ReportBadSize(const HostOptions &options, const Mc3dsFile *scene, double largest)
{
    float extent = -Mc3dsLargest;
    for (int axis = 0; axis < 3; ++axis) {
        float low = Mc3dsLargest, high = -Mc3dsLargest;
        for (uint32_t i = 0; i < scene->objectCount; ++i) {
            low = std::min(low, scene->objects[i].boundsMin[axis]);
            high = std::max(high, scene->objects[i].boundsMax[axis]);
        }
        extent = std::max(extent, high - low);
    }
    const bool fits = options.flags & MC3DS_FIT_SIZE;
    const float scale = fits ? options.size / extent : options.scale;
    if (fits && (!(extent > 0.0f) || !std::isfinite(extent) || !std::isfinite(scale) || scale == 0.0f))
        ReportWarning(
            "the scene has no extent that --size could be made of, and is written with a scale of no "
            "use; --scale needs none");
    else if (largest * static_cast<double>(scale) > static_cast<double>(Mc3dsLargest))
        ReportWarning("the scale takes co-ordinates beyond what a number holds, and they are written as inf");
}

// Meshes that several nodes place.
static void ReportSharedMeshes(const Mc3dsFile *scene)
{
    size_t count = 0;
    std::string first;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        if (object.nodeCount > 1 && count++ == 0)
            first = InQuotes(object.name) + ", in " + std::to_string(object.nodeCount) + " nodes";
    }
    if (count != 0)
        ReportWarning("meshes placed by several nodes, of which only the last counts: " +
                      std::to_string(count) + "; the first: " + first);
}

void ReportSceneNotes(const HostOptions &options, const Mc3dsFile *scene, const std::string &scenePath)
{
    if (options.flags & MC3DS_ANIMATION)
        ReportMissingAnimation(scene, scenePath);
    if (!(options.flags & (MC3DS_FLAT | MC3DS_PER_OBJECT)))
        ReportLostObjects(scene);
    if (!(options.flags & MC3DS_PER_OBJECT))
        ReportSharedMeshes(scene);
    ReportNames(options, scene);
    ReportBadSize(options, scene, ReportNoNumbers(options, scene));
}
