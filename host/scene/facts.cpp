#include "info.h"

#include <algorithm>
#include <set>

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

// Node numbers are unique, so no object is listed twice. Objects whose parents form a cycle are never
// reached.
std::vector<TreeRow> FindTree(const Mc3dsFile *scene, std::vector<uint32_t> *unreached)
{
    const uint32_t none = scene->objectCount;
    const uint32_t nodes =
        std::min(scene->nodeCounter, 0x8000u); // outputs compare parent numbers as signed 16-bit numbers
    std::vector<uint32_t> firstChild(nodes, none), nextSibling(scene->objectCount, none);
    uint32_t firstRoot = none;
    for (uint32_t i = scene->objectCount; i-- > 0;) {
        const uint16_t parent = scene->objects[i].parentNode;
        if (parent != 0xFFFF && parent >= nodes)
            continue;
        uint32_t *first = parent == 0xFFFF ? &firstRoot : &firstChild[parent];
        nextSibling[i] = *first;
        *first = i;
    }
    std::vector<TreeRow> tree, waiting;
    std::vector<bool> reached(scene->objectCount);
    const auto wait = [&](uint32_t object, uint32_t depth) {
        if (object != none)
            waiting.push_back({object, depth, nextSibling[object] == none});
    };
    wait(firstRoot, 0);
    while (!waiting.empty()) {
        const TreeRow row = waiting.back();
        waiting.pop_back();
        tree.push_back(row);
        reached[row.object] = true;
        wait(nextSibling[row.object], row.depth);
        const auto node = static_cast<uint32_t>(scene->objects[row.object].nodeId); // -1 becomes the largest
        if (node < nodes)
            wait(firstChild[node], row.depth + 1);
    }
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        if (!reached[i])
            unreached->push_back(i);
    return tree;
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
}

bool FindSceneBounds(const Mc3dsFile *scene, float least[3], float most[3])
{
    bool found = true;
    for (int axis = 0; axis < 3; ++axis) {
        least[axis] = Mc3dsLargest;
        most[axis] = -Mc3dsLargest;
        for (uint32_t i = 0; i < scene->objectCount; ++i) {
            least[axis] = std::min(least[axis], scene->objects[i].boundsMin[axis]);
            most[axis] = std::max(most[axis], scene->objects[i].boundsMax[axis]);
        }
        found = found && least[axis] <= most[axis];
    }
    return found;
}

std::vector<TextureFile> FindTextures(const Mc3dsFile *scene, const std::string &scenePath)
{
    std::set<std::string> names;
    for (int32_t i = 0; i < scene->materialCount; ++i) {
        const Mc3dsMaterial &material = scene->materials[i];
        for (const char *name : {material.textureMap, material.opacityMap, material.reflectionMap})
            if (*name != '\0')
                names.insert(name);
    }
    std::map<std::string, std::string> found = FindBeside(PathOf(scenePath), names);
    std::vector<TextureFile> textures;
    for (const std::string &name : names)
        textures.push_back({name, found[name]});
    return textures;
}

SceneSummary Summarise(const Mc3dsFile *scene, const std::string &scenePath)
{
    SceneSummary summary;
    summary.facesOf.resize(static_cast<size_t>(scene->materialCount));
    summary.tree = FindTree(scene, &summary.unreached);
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        AddObject(scene, &scene->objects[i], &summary);
    summary.hasBounds = FindSceneBounds(scene, summary.least, summary.most);
    summary.textures = FindTextures(scene, scenePath);
    return summary;
}
