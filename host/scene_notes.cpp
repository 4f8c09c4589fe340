#include <algorithm>
#include <system_error>

#include "host.h"

namespace fs = std::filesystem;

static std::string LowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

static std::string FindOtherCase(const fs::path &wanted)
{
    std::error_code failure;
    const fs::path folder = wanted.has_parent_path() ? wanted.parent_path() : fs::path(".");
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure))
        if (LowerCase(entry->path().filename().string()) == LowerCase(wanted.filename().string()))
            return entry->path().filename().string();
    return "";
}

void ReportMissingAnimation(const Mc3dsFile *scene, const std::string &scenePath)
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
    else if (scene->fileNameIsCut || vue.empty())
        why =
            "the scene's path is too " + std::string(vue.empty() ? "short" : "long") + " for one to be found";
    else if (fs::exists(vue, failure))
        why = InQuotes(vue) + " could not be read";
    else if (const std::string other = FindOtherCase(vue); other.empty())
        why = "there is no " + InQuotes(vue);
    else
        why = "there is " + InQuotes(other) + ", but it must be called " +
              InQuotes(fs::path(vue).filename().string());
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

void ReportLostObjects(const Mc3dsFile *scene)
{
    const std::vector<bool> placed = FindPlaced(scene);
    const auto lost = std::count(placed.begin(), placed.end(), false);
    if (lost == 0)
        return;
    const auto first = std::find(placed.begin(), placed.end(), false) - placed.begin();
    ReportWarning(
        std::to_string(lost) + " of " + std::to_string(scene->objectCount) +
        " objects hang from something that is no object, and are left out without --flat; the first is " +
        InQuotes(scene->objects[first].safeName));
}
