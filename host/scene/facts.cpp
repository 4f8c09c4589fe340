#include "scene.h"

#include <memory>
#include <new>
#include <set>

#include "output/output.h"

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
    const uint32_t none = scene->objectCount, nodes = Mc3dsParentNumbers(scene);
    Mc3dsHierarchy children = {};
    Mc3dsBuildHierarchy(scene, &children);
    const std::unique_ptr<Mc3dsHierarchy, void (*)(Mc3dsHierarchy *)> owner(&children, Mc3dsFreeHierarchy);
    if (!children.firstChild && none != 0)
        throw std::bad_alloc();
    std::vector<TreeRow> tree, waiting; // the last one is next
    for (uint32_t i = none; i-- > 0;)
        if (scene->objects[i].parentNode == 0xFFFF)
            waiting.push_back({i, 0, waiting.empty()});
    const auto wait = [&](uint32_t object, uint32_t depth) {
        if (object != none)
            waiting.push_back({object, depth, children.nextSibling[object] == none});
    };
    std::vector<bool> reached(none);
    while (!waiting.empty()) {
        const TreeRow row = waiting.back();
        waiting.pop_back();
        tree.push_back(row);
        reached[row.object] = true;
        if (row.depth > 0)
            wait(children.nextSibling[row.object], row.depth);
        const auto node = static_cast<uint32_t>(scene->objects[row.object].nodeId); // -1 becomes the largest
        if (node < nodes)
            wait(children.firstChild[node], row.depth + 1);
    }
    for (uint32_t i = 0; i < none; ++i)
        if (!reached[i])
            unreached->push_back(i);
    return tree;
}

static void AddObject(const Mc3dsFile *scene, const Mc3dsObject *object, SceneFacts *facts)
{
    facts->movingCount += scene->hasAnimation && object->hasFrames;
    std::set<int32_t> materials;
    for (int32_t i = 0; i < object->faceCount; ++i) {
        const int32_t material = object->faces[i].material;
        if (i == 0 || material != object->faces[i - 1].material)
            materials.insert(material);
        ++facts->facesOf.at(static_cast<size_t>(material));
    }
    facts->materialsOf.emplace_back(materials.begin(), materials.end());
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

SceneFacts FindFacts(const Mc3dsFile *scene, const std::string &scenePath)
{
    SceneFacts facts;
    facts.facesOf.resize(static_cast<size_t>(scene->materialCount));
    facts.tree = FindTree(scene, &facts.unreached);
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        AddObject(scene, &scene->objects[i], &facts);
    facts.counts = CountScene(scene);
    Mc3dsFindBounds(scene, facts.least, facts.most);
    facts.hasBounds =
        facts.least[0] <= facts.most[0] && facts.least[1] <= facts.most[1] && facts.least[2] <= facts.most[2];
    facts.textures = FindTextures(scene, scenePath);
    return facts;
}

// Faces without all their vertices aren't written.
static void AddCounts(const Mc3dsObject &object, GeometryCounts *counts)
{
    const auto isWritten = [&object](uint32_t face) {
        return Mc3dsHasVertices(&object, &object.faces[face]);
    };
    ++counts->objects;
    counts->vertices += static_cast<uint64_t>(object.vertexCount);
    for (uint32_t i = 0; i < static_cast<uint32_t>(object.faceCount); ++i)
        counts->triangles += object.faces[i].material == 0 && isWritten(i);
    for (uint32_t i = 0; i < object.groupCount; ++i) {
        const Mc3dsMaterialGroup &group = object.groups[i];
        for (uint32_t at = 0; group.material != 0 && at < group.count; ++at)
            counts->triangles += isWritten(group.faces[at]);
    }
}

GeometryCounts CountModel(const Mc3dsFile *scene, uint32_t flags)
{
    GeometryCounts counts;
    std::vector<uint32_t> unreached;
    for (const TreeRow &row : FindTree(scene, &unreached))
        AddCounts(scene->objects[row.object], &counts);
    if (flags & (MC3DS_FLAT | MC3DS_PER_OBJECT))
        for (const uint32_t object : unreached)
            AddCounts(scene->objects[object], &counts);
    return counts;
}

GeometryCounts CountScene(const Mc3dsFile *scene)
{
    GeometryCounts counts;
    counts.objects = scene->objectCount;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        counts.vertices += static_cast<uint64_t>(scene->objects[i].vertexCount);
        counts.triangles += static_cast<uint64_t>(scene->objects[i].faceCount);
    }
    return counts;
}
