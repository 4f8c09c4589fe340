// What an overview of a scene is made from: the scene's records, and what the library said while it read.
#include "info.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <system_error>

#include "host.h"

namespace fs = std::filesystem;

static SceneNotes *sceneNotes;
static Mc3dsCallback errorsBefore, messagesBefore;

// The text between the ends; false when it doesn't begin like that. A text that the library cut has no end.
static bool Between(std::string_view text, std::string_view begin, std::string_view end, std::string *middle)
{
    if (!text.starts_with(begin))
        return false;
    text.remove_prefix(begin.size());
    if (text.ends_with(end))
        text.remove_suffix(end.size());
    *middle = text;
    return true;
}

static void NoteMessage(std::string_view text)
{
    std::string name;
    if (Between(text, "Object <", ">", &name))
        sceneNotes->newestObject = name;
    else if (text.starts_with("Hidden Object"))
        sceneNotes->hidden.push_back(sceneNotes->newestObject);
    else if (Between(text, "\nLight <", "> ... skipping", &name))
        sceneNotes->lights.push_back(name);
    else if (Between(text, "\nCamera <", "> ... skipping", &name))
        sceneNotes->cameras.push_back(name);
    else if (Between(text, "Ignoring Chunk Tag <", ">", &name))
        ++sceneNotes->chunks[name];
    else
        for (const std::string_view end : {" ... skipping", " not currently supported by Meshcaster"})
            if (text.ends_with(end) && Between(text, text.starts_with('\t') ? "\t" : "", end, &name))
                ++sceneNotes->unsupported[name];
}

// The callbacks from before go first: what they have to tell about lack of memory mustn't get lost when there
// is none to note it in. Both leave errno to whoever called the library.
static void OnNotedMessage(int32_t level, const char *text)
{
    const int before = errno;
    if (messagesBefore)
        messagesBefore(level, text);
    NoteMessage(text);
    errno = before;
}

static void OnNotedError(int32_t level, const char *text)
{
    const int before = errno;
    if (errorsBefore)
        errorsBefore(level, text);
    ++sceneNotes->reports[text];
    errno = before;
}

void StartNotes(SceneNotes *notes)
{
    sceneNotes = notes;
    errorsBefore = Mc3dsSetErrorCallback(OnNotedError);
    messagesBefore = Mc3dsSetMessageCallback(OnNotedMessage);
}

void StopNotes()
{
    Mc3dsSetErrorCallback(errorsBefore);
    Mc3dsSetMessageCallback(messagesBefore);
    sceneNotes = nullptr;
}

bool IsDummy(const Mc3dsFile *scene, const Mc3dsObject *object)
{
    return scene->dummyCount != 0 && object->vertexCount == 0 && object->faceCount == 0 &&
           std::string_view(object->name).starts_with("Dummy");
}

const char *ShadingName(int32_t shading)
{
    static const char *const names[] = {"wireframe", "flat", "Gouraud", "Phong", "metal"};
    return shading >= 1 && shading <= 5 ? names[shading - 1] : "unknown shading";
}

// A node number belongs to one object at most, so that no object comes twice, and one whose parents run in a
// circle never comes.
static void FillTree(const Mc3dsFile *scene, SceneSummary *summary)
{
    constexpr size_t nodeNumbers = 0x8000; // outputs compare parent numbers as signed ones
    std::vector<std::vector<uint32_t>> children(nodeNumbers);
    std::vector<uint32_t> roots;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const uint16_t parent = scene->objects[i].parentNode;
        if (parent == 0xFFFF)
            roots.push_back(i);
        else if (parent < nodeNumbers)
            children[parent].push_back(i);
    }
    std::vector<TreeRow> waiting;
    const auto wait = [&waiting](const std::vector<uint32_t> &objects, uint32_t depth) {
        for (size_t i = objects.size(); i-- > 0;)
            waiting.push_back({objects[i], depth, i + 1 == objects.size()});
    };
    std::vector<bool> reached(scene->objectCount);
    wait(roots, 0);
    while (!waiting.empty()) {
        const TreeRow row = waiting.back();
        waiting.pop_back();
        summary->tree.push_back(row);
        reached[row.object] = true;
        const int32_t node = scene->objects[row.object].nodeId;
        if (node >= 0 && static_cast<size_t>(node) < nodeNumbers)
            wait(children[static_cast<size_t>(node)], row.depth + 1);
    }
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        if (!reached[i])
            summary->unreached.push_back(i);
}

static void AddObject(const Mc3dsFile *scene, const Mc3dsObject *object, SceneSummary *summary)
{
    summary->vertexCount += static_cast<uint64_t>(object->vertexCount);
    summary->faceCount += static_cast<uint64_t>(object->faceCount);
    summary->movingCount += scene->hasAnimation && object->hasFrames;
    std::set<int32_t> materials;
    for (int32_t i = 0; i < object->faceCount; ++i) {
        const int32_t material = object->faces[i].material;
        if (i == 0 || material != object->faces[i - 1].material)
            materials.insert(material);
        ++summary->facesOf.at(static_cast<size_t>(material));
    }
    summary->materialsOf.emplace_back(materials.begin(), materials.end());
    for (int axis = 0; axis < 3; ++axis) {
        summary->least[axis] = std::min(summary->least[axis], object->boundsMin[axis]);
        summary->most[axis] = std::max(summary->most[axis], object->boundsMax[axis]);
    }
}

static void FindTextures(const Mc3dsFile *scene, const fs::path &scenePath, SceneSummary *summary)
{
    std::map<std::string, TextureFile> textures;
    std::multimap<std::string, std::string> wanted; // by its lower case
    for (int32_t i = 0; i < scene->materialCount; ++i) {
        const Mc3dsMaterial &material = scene->materials[i];
        for (const char *name : {material.textureMap, material.opacityMap, material.reflectionMap})
            if (*name != '\0' && textures.try_emplace(name, TextureFile{name, ""}).second)
                wanted.emplace(InLowerCase(name), name);
    }
    std::error_code failure;
    const fs::path folder = scenePath.has_parent_path() ? scenePath.parent_path() : fs::path(".");
    for (fs::directory_iterator entry(folder, failure), end; !wanted.empty() && !failure && entry != end;
         entry.increment(failure)) {
        const std::string present = entry->path().filename().string();
        const auto [first, last] = wanted.equal_range(InLowerCase(present));
        for (auto at = first; at != last; ++at)
            if (TextureFile &file = textures[at->second]; file.found.empty() || present == file.name)
                file.found = present;
    }
    for (const auto &[name, file] : textures)
        summary->textures.push_back(file);
}

SceneSummary Summarise(const Mc3dsFile *scene, const std::string &scenePath)
{
    SceneSummary summary;
    summary.facesOf.resize(static_cast<size_t>(scene->materialCount));
    std::fill_n(summary.least, 3, Mc3dsLargest);
    std::fill_n(summary.most, 3, -Mc3dsLargest);
    FillTree(scene, &summary);
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        AddObject(scene, &scene->objects[i], &summary);
    summary.hasBounds = true;
    for (int axis = 0; axis < 3; ++axis)
        summary.hasBounds = summary.hasBounds && summary.least[axis] <= summary.most[axis];
    FindTextures(scene, PathOf(scenePath), &summary);
    return summary;
}
