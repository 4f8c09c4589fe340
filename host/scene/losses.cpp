// Finds the parts of a scene that an output lacks.
#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "scene.h"

static Finding &Add(FindingKind kind, Weight weight, std::vector<Finding> *findings)
{
    findings->push_back({.kind = kind, .weight = weight});
    return findings->back();
}

void FindCutEnd(const Mc3dsFile *scene, std::vector<Finding> *findings)
{
    if (scene->fileSize >= scene->rootSize)
        return;
    Finding &cut = Add(FindingKind::CutFile, Weight::Loss, findings);
    cut.count = scene->fileSize;
    cut.of = scene->rootSize;
}

static void FindOrphans(const Mc3dsFile *scene, std::vector<Finding> *findings)
{
    std::vector<uint32_t> lost;
    FindTree(scene, &lost);
    if (lost.empty())
        return;
    Finding &orphans = Add(FindingKind::OrphanObjects, Weight::Loss, findings);
    orphans.count = lost.size();
    orphans.of = scene->objectCount;
    orphans.names = {{scene->objects[lost.front()].safeName}};
}

// A mesh has one placement: that of the last node that names it.
static void FindLostPlacements(const Mc3dsFile *scene, std::vector<Finding> *findings)
{
    Finding lost = {.kind = FindingKind::LostPlacements, .weight = Weight::Loss};
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        if (object.nodeCount < 2)
            continue;
        if (lost.count++ == 0) {
            lost.names = {{object.name}};
            lost.most = object.nodeCount;
        }
        lost.of += object.nodeCount - 1;
    }
    if (lost.count != 0)
        findings->push_back(lost);
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

// The missing materials that faces use.
static std::vector<NamedPart> MissingMaterials(const Mc3dsFile *scene, const std::vector<uint64_t> &facesOf)
{
    std::unordered_set<std::string_view> known;
    for (int32_t i = 1; i < scene->materialCount; ++i)
        known.insert(scene->materials[i].name);
    std::vector<NamedPart> missing;
    for (uint32_t i = 0; i < scene->lostMaterialCount; ++i) {
        const Mc3dsLostMaterial &lost = scene->lostMaterials[i];
        if (!lost.fault && facesOf[i] != 0)
            missing.push_back({lost.name, known.contains(lost.name)});
    }
    return missing;
}

static void FindLostMaterials(const Mc3dsFile *scene, std::vector<Finding> *findings)
{
    Finding bare = {.kind = FindingKind::BareFaces, .weight = Weight::Loss};
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        bare.of += static_cast<uint64_t>(object.faceCount);
        for (int32_t at = 0; at < object.faceCount; ++at)
            bare.count += object.faces[at].material == 0;
    }
    const std::vector<uint64_t> facesOf = CountFacesOfLost(scene);
    bare.names = MissingMaterials(scene, facesOf);
    if (bare.count != 0)
        findings->push_back(bare);
    for (uint32_t i = 0; i < scene->lostMaterialCount; ++i)
        if (const Mc3dsLostMaterial &lost = scene->lostMaterials[i]; lost.fault) {
            Finding &invalid = Add(FindingKind::InvalidMaterial, Weight::Loss, findings);
            invalid.count = facesOf[i];
            invalid.names = {{lost.name}};
            invalid.detail = lost.fault;
        }
}

void FindLosses(const Mc3dsFile *scene, uint32_t flags, std::vector<Finding> *findings)
{
    if (!(flags & (MC3DS_FLAT | MC3DS_PER_OBJECT)))
        FindOrphans(scene, findings);
    if (!(flags & MC3DS_PER_OBJECT))
        FindLostPlacements(scene, findings);
    FindLostMaterials(scene, findings);
}

void FindSharedNames(const Mc3dsFile *scene, std::vector<Finding> *findings)
{
    std::unordered_set<std::string_view> names;
    Finding shared = {.kind = FindingKind::SharedNames};
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        if (const char *name = scene->objects[i].safeName; !names.insert(name).second && shared.count++ == 0)
            shared.names = {{name}};
    if (shared.count != 0)
        findings->push_back(shared);
}

void FindUnplayedKeys(const Mc3dsFile *scene, std::vector<Finding> *findings)
{
    uint64_t moving = 0;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        moving +=
            std::max({object.positionKeyCount, object.rotationKeyCount, object.scaleKeyCount}) > 1 ? 1 : 0;
    }
    if (moving == 0 || scene->hasAnimation || scene->vueError != 0)
        return;
    Finding &keys = Add(FindingKind::UnplayedKeys, Weight::Note, findings);
    keys.count = moving;
    keys.of = scene->frameCount;
}
