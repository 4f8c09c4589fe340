// --info for programs.
#include <cstdio>

#include "restored_json.h"

static Json CountsJson(const char *what, const std::map<std::string, size_t> &counts)
{
    Json list = Json::array();
    for (const auto &[name, count] : counts)
        list.push_back({{what, name}, {"count", count}});
    return list;
}

static Json ObjectJson(const Mc3dsFile *scene, const SceneFacts &facts, uint32_t index, const Json &parent,
                       const Json &depth)
{
    const Mc3dsObject &object = scene->objects[index];
    return {{"name", object.name},
            {"outputName", object.safeName},
            {"instanceName", object.instanceName},
            {"dummy", IsDummy(scene, &object)},
            {"parent", parent},
            {"depth", depth},
            {"vertices", object.vertexCount},
            {"faces", object.faceCount},
            {"materials", facts.materialsOf[index]},
            {"textured", object.hasTexture != 0},
            {"pivot", object.pivot},
            {"positionKeys", object.positionKeyCount},
            {"rotationKeys", object.rotationKeyCount},
            {"scaleKeys", object.scaleKeyCount},
            {"animated", scene->hasAnimation && object.hasFrames}};
}

// In the order of the scene's records: the tag of an object's clump is its index here + 2.
static Json ObjectsJson(const Mc3dsFile *scene, const SceneFacts &facts)
{
    std::vector<Json> parents(scene->objectCount), depths(scene->objectCount), objects;
    std::vector<uint32_t> ancestors; // by depth: the index of the object
    for (const TreeRow &row : facts.tree) {
        ancestors.resize(row.depth);
        if (row.depth > 0)
            parents[row.object] = ancestors.back();
        depths[row.object] = row.depth;
        ancestors.push_back(row.object);
    }
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        objects.push_back(ObjectJson(scene, facts, i, parents[i], depths[i]));
    return objects;
}

static Json MaterialJson(const Mc3dsMaterial &material, uint64_t faces)
{
    return {{"name", material.name},
            {"faces", faces},
            {"shading", ShadingName(material.shading)},
            {"ambient", material.ambient},
            {"diffuse", material.diffuse},
            {"specular", material.specular},
            {"shininess", material.shininess},
            {"transparency", material.transparency},
            {"texture", material.textureMap},
            {"opacityMap", material.opacityMap},
            {"reflectionMap", material.reflectionMap}};
}

static void AddScene(const Mc3dsFile *scene, const SceneFacts &facts, Json *json)
{
    Json materials = Json::array(), textures = Json::array(), bounds;
    // Entry 0 is the library's default material, for faces without a known one.
    for (int32_t i = 0; i < scene->materialCount; ++i)
        materials.push_back(MaterialJson(scene->materials[i], facts.facesOf[static_cast<size_t>(i)]));
    for (const TextureFile &file : facts.textures)
        textures.push_back({{"name", file.name}, {"found", file.found.empty() ? Json() : Json(file.found)}});
    if (facts.hasBounds)
        bounds = {{"least", facts.least}, {"most", facts.most}};
    json->update({{"vertices", facts.counts.vertices},
                  {"faces", facts.counts.triangles},
                  {"dummies", scene->dummyCount},
                  {"frames", scene->frameCount},
                  {"animation", scene->hasAnimation != 0},
                  {"ambient", scene->ambient},
                  {"bounds", bounds},
                  {"objects", ObjectsJson(scene, facts)},
                  {"materials", materials},
                  {"textures", textures}});
}

void PrintJson(const Mc3dsFile *scene, const SceneResult &result,
               const std::map<std::string, size_t> &reports)
{
    Json json = {{"scene", result.scene}, {"loaded", scene != nullptr}};
    LeftBehind left;
    Json losses = Json::array();
    if (scene) {
        AddScene(scene, FindFacts(scene, result.scene), &json);
        left = FindLeftBehind(scene, result.isRestored);
    }
    for (const Finding &loss : left.losses)
        losses.push_back(SentenceOf(loss));
    for (const Finding &note : result.notes)
        if (note.kind == FindingKind::StandElsewhere)
            losses.push_back(SentenceOf(note));
    json["leftBehind"] = {{"losses", losses},
                          {"lights", left.lights},
                          {"cameras", left.cameras},
                          {"hidden", left.hidden},
                          {"unsupported", CountsJson("what", left.unsupported)},
                          {"chunks", CountsJson("tag", left.chunks)}};
    json["restored"] = RestoredJson(result.restored);
    json["reports"] = CountsJson("text", reports);
    const std::string text = JsonText(json, 0);
    std::fwrite(text.data(), 1, text.size(), stdout);
}
