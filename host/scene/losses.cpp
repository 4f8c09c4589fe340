// Finds the parts of a scene that an output lacks, for conversions and for --info.
#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "info.h"

std::string CutFileText(const Mc3dsFile *scene)
{
    if (scene->fileSize >= scene->rootSize)
        return "";
    return "the file is cut short: " + std::to_string(scene->fileSize) + " of " +
           std::to_string(scene->rootSize) + " bytes";
}

static void AddLostObjects(const Mc3dsFile *scene, std::vector<std::string> *losses)
{
    std::vector<uint32_t> lost;
    FindTree(scene, &lost);
    if (!lost.empty())
        losses->push_back("objects without a parent in the scene, left out: " + std::to_string(lost.size()) +
                          " of " + std::to_string(scene->objectCount) + "; --flat writes them; the first: " +
                          InQuotes(scene->objects[lost.front()].safeName));
}

// A mesh has one placement: that of the last node that names it.
static void AddLostPlacements(const Mc3dsFile *scene, std::vector<std::string> *losses)
{
    uint64_t meshes = 0, placements = 0;
    std::string first;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        if (object.nodeCount < 2)
            continue;
        if (meshes++ == 0)
            first = InQuotes(object.name) + ", in " + std::to_string(object.nodeCount) + " nodes";
        placements += object.nodeCount - 1;
    }
    if (meshes != 0)
        losses->push_back("meshes placed by several nodes, of which only the last counts: " +
                          std::to_string(meshes) + "; " + Counted(placements, "placement") +
                          (placements == 1 ? " is" : " are") + " lost; the first: " + first);
}

// For each lost material: how many faces name it and have no other one.
static std::vector<uint64_t> CountFacesOfLost(const Mc3dsFile *scene)
{
    std::vector<uint64_t> faces(scene->lostMaterialCount);
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        for (uint32_t j = 0; j < object.groupCount; ++j) {
            const Mc3dsMaterialGroup &group = object.groups[j];
            for (uint32_t at = 0; group.lost != 0 && at < group.count; ++at)
                faces[group.lost - 1] += object.faces[group.faces[at]].material == 0;
        }
    }
    return faces;
}

// Some names of missing materials that faces use.
static std::string MissingNames(const Mc3dsFile *scene, const std::vector<uint64_t> &facesOf)
{
    constexpr size_t namedMost = 3;
    std::unordered_set<std::string_view> known;
    for (int32_t i = 1; i < scene->materialCount; ++i)
        known.insert(scene->materials[i].name);
    std::string text;
    size_t names = 0;
    for (uint32_t i = 0; i < scene->lostMaterialCount; ++i) {
        const Mc3dsLostMaterial &lost = scene->lostMaterials[i];
        if (lost.fault || facesOf[i] == 0 || names++ >= namedMost)
            continue;
        text += (names == 1 ? "; they name " : ", ") + InQuotes(lost.name) +
                (known.contains(lost.name) ? ", which comes later in the file" : ", which the file lacks");
    }
    return text + (names > namedMost ? " and " + std::to_string(names - namedMost) + " more" : "");
}

static void AddLostMaterials(const Mc3dsFile *scene, std::vector<std::string> *losses)
{
    uint64_t faces = 0, bare = 0;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        faces += static_cast<uint64_t>(object.faceCount);
        for (int32_t at = 0; at < object.faceCount; ++at)
            bare += object.faces[at].material == 0;
    }
    const std::vector<uint64_t> facesOf = CountFacesOfLost(scene);
    if (bare != 0)
        losses->push_back(std::to_string(bare) + " of " + std::to_string(faces) +
                          " faces have no material and are flat green" + MissingNames(scene, facesOf));
    for (uint32_t i = 0; i < scene->lostMaterialCount; ++i)
        if (const Mc3dsLostMaterial &lost = scene->lostMaterials[i]; lost.fault)
            losses->push_back(lost.fault + (": material " + InQuotes(lost.name)) + " is left out; it costs " +
                              Counted(facesOf[i], "face"));
}

std::vector<std::string> FindLosses(const Mc3dsFile *scene, uint32_t flags)
{
    std::vector<std::string> losses;
    if (!(flags & (MC3DS_FLAT | MC3DS_PER_OBJECT)))
        AddLostObjects(scene, &losses);
    if (!(flags & MC3DS_PER_OBJECT))
        AddLostPlacements(scene, &losses);
    AddLostMaterials(scene, &losses);
    return losses;
}

std::string SharedNamesText(const Mc3dsFile *scene)
{
    std::unordered_set<std::string_view> names;
    uint32_t shared = 0;
    const char *first = "";
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        if (!names.insert(scene->objects[i].safeName).second && shared++ == 0)
            first = scene->objects[i].safeName;
    if (shared == 0)
        return "";
    return "objects with the name of another one, which --protos can't tell apart: " +
           std::to_string(shared) + "; the first: " + InQuotes(first);
}

std::string LostKeysText(const Mc3dsFile *scene)
{
    uint64_t moving = 0;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        moving +=
            std::max({object.positionKeyCount, object.rotationKeyCount, object.scaleKeyCount}) > 1 ? 1 : 0;
    }
    if (moving == 0 || scene->hasAnimation || scene->vueError != 0)
        return "";
    return "keys of " + Counted(moving, "object") + " move" +
           (scene->frameCount == 0 ? "" : " over " + Counted(scene->frameCount, "frame")) +
           "; animation comes from a .vue file alone, and there is none";
}

std::vector<std::string> FindAllLosses(const Mc3dsFile *scene)
{
    std::vector<std::string> losses;
    if (const std::string cut = CutFileText(scene); !cut.empty())
        losses.push_back(cut);
    for (const std::string &loss : FindLosses(scene, 0))
        losses.push_back(loss);
    for (const std::string &other : {SharedNamesText(scene), LostKeysText(scene)})
        if (!other.empty())
            losses.push_back(other);
    return losses;
}

// Faces with a vertex number out of range aren't written.
static void AddCounts(const Mc3dsObject &object, GeometryCounts *counts)
{
    const auto limit = static_cast<uint32_t>(object.vertexCount);
    const auto isSound = [limit](const Mc3dsFace &face) {
        return face.a < limit && face.b < limit && face.c < limit;
    };
    ++counts->objects;
    counts->vertices += limit;
    bool allAreSound = true;
    for (int32_t i = 0; i < object.faceCount; ++i) {
        const Mc3dsFace &face = object.faces[i];
        allAreSound = allAreSound && isSound(face);
        counts->triangles += face.material == 0 && isSound(face);
    }
    for (uint32_t i = 0; i < object.groupCount; ++i) {
        const Mc3dsMaterialGroup &group = object.groups[i];
        if (group.material != 0 && allAreSound)
            counts->triangles += group.count;
        for (uint32_t at = 0; group.material != 0 && !allAreSound && at < group.count; ++at)
            counts->triangles += isSound(object.faces[group.faces[at]]);
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
