// Writes the model of a direct build as binary glTF 2.0.
#include "gltf.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

namespace fs = std::filesystem;

using Stream = std::unique_ptr<FILE, int (*)(FILE *)>;

size_t AddGlbView(Glb *glb, const void *bytes, size_t size, size_t stride, int target)
{
    constexpr char zeros[4] = {};
    const size_t padding = (4 - size % 4) % 4;
    // Beyond what the format can count nothing is written, as the file would be refused.
    if (glb->size + size + padding <= UINT32_MAX && glb->error == 0) {
        errno = 0;
        if (std::fwrite(bytes, 1, size, glb->binary) != size ||
            std::fwrite(zeros, 1, padding, glb->binary) != padding)
            glb->error = errno != 0 ? errno : EIO;
    }
    Json view = {{"buffer", 0}, {"byteOffset", glb->size}, {"byteLength", size}};
    if (stride != 0)
        view["byteStride"] = stride;
    if (target != 0)
        view["target"] = target;
    glb->size += size + padding;
    glb->views.push_back(std::move(view));
    return glb->views.size() - 1;
}

size_t AddGlbAccessor(Glb *glb, size_t view, size_t offset, int componentType, size_t count, const char *type)
{
    Json accessor = {{"bufferView", view}};
    if (offset != 0)
        accessor["byteOffset"] = offset;
    accessor.update({{"componentType", componentType}, {"count", count}, {"type", type}});
    glb->accessors.push_back(std::move(accessor));
    return glb->accessors.size() - 1;
}

static std::string NameOf(const Mc3dsFile *scene, const PlacedMesh &mesh)
{
    if (mesh.instance)
        return mesh.instance->name;
    // Tag 1 is the clump around the scene; an object's tag is its index + 2.
    const auto object = static_cast<uint32_t>(mesh.clump->tag) - 2;
    return object < scene->objectCount ? scene->objects[object].safeName : "model";
}

// Adds the nodes and their placements, from a model without geometry.
static void AddNodes(Glb *glb, const Mc3dsFile *scene, const McClump *clump)
{
    std::vector<int> clumpAt; // by depth: the index of the clump's node
    VisitMeshes(clump, [&](const PlacedMesh &mesh) {
        const auto index = static_cast<int>(glb->nodes.size());
        const auto depth = static_cast<size_t>(mesh.depth);
        if (!mesh.instance) {
            clumpAt.resize(depth);
            clumpAt.push_back(index);
        }
        const int parent = mesh.instance ? clumpAt[depth] : depth > 0 ? clumpAt[depth - 1] : -1;
        Json json = {{"name", NameOf(scene, mesh)}};
        if (!mesh.instance)
            json["extras"] = {{"tag", mesh.clump->tag}};
        const int prototype = mesh.instance ? mesh.instance->prototype : -1;
        glb->nodes.push_back(
            {.json = std::move(json), .parent = parent, .world = mesh.world, .prototype = prototype});
    });
}

// Instances of a prototype share a mesh, except those with a residual placement.
static void AddMeshes(Glb *glb)
{
    std::map<int, size_t> shared;
    for (GlbNode &node : glb->nodes) {
        node.mesh = glb->meshes.size();
        if (node.prototype >= 0 && !node.isResidual) {
            const auto [known, isNew] = shared.try_emplace(node.prototype, node.mesh);
            node.mesh = known->second;
            if (!isNew)
                continue;
        }
        glb->meshes.push_back({node.json["name"]});
    }
}

// Builds the model in parts, as the whole model would take more memory than the scene.
static void AddGeometry(Glb *glb, const Mc3dsFile *scene, const Mc3dsOptions &asked, Reporter *reporter)
{
    constexpr uint64_t partMost = 500000; // vertices and faces
    for (uint32_t first = 0, end; first < scene->objectCount; first = end) {
        uint64_t size = 0;
        for (end = first; end < scene->objectCount && (end == first || size < partMost); ++end) // unnoticed
            size += static_cast<uint64_t>(scene->objects[end].vertexCount) +
                    static_cast<uint64_t>(scene->objects[end].faceCount);
        const Model model = BuildModel(scene, asked, -1, reporter, first, end);
        McModelView view = {};
        McGetModel(model.get(), &view);
        std::vector<bool> done(glb->meshes.size());
        size_t at = 0;
        VisitMeshes(model.get(), [&](const PlacedMesh &mesh) {
            if (at >= glb->nodes.size())
                return; // out of memory, which WriteGlb reports
            const GlbNode &node = glb->nodes[at++];
            if (!done[node.mesh] && mesh.geometry.faceCount != 0)
                AddGlbGeometry(glb, &glb->meshes[node.mesh], mesh.geometry, view.surfaces, node.residual);
            done[node.mesh] = true;
        });
        ReportModelErrors(reporter);
    }
}

// The document. Empty lists are omitted, as the format doesn't allow them.
static Json DocumentOf(Glb *glb)
{
    Json nodes = Json::array(), meshes = Json::array(), roots = Json::array();
    std::vector<Json> children(glb->nodes.size(), Json::array());
    std::vector<size_t> newIndex;
    for (GlbMesh &mesh : glb->meshes) {
        newIndex.push_back(meshes.size());
        if (!mesh.primitives.empty())
            meshes.push_back({{"name", mesh.name}, {"primitives", std::move(mesh.primitives)}});
    }
    for (size_t i = 0; i < glb->nodes.size(); ++i) {
        const GlbNode &node = glb->nodes[i];
        (node.parent < 0 ? roots : children[static_cast<size_t>(node.parent)]).push_back(i);
    }
    for (size_t i = 0; i < glb->nodes.size(); ++i) {
        GlbNode &node = glb->nodes[i];
        if (glb->meshes[node.mesh].bounds.least[0] <= glb->meshes[node.mesh].bounds.most[0])
            node.json["mesh"] = newIndex[node.mesh];
        if (!children[i].empty())
            node.json["children"] = std::move(children[i]);
        nodes.push_back(std::move(node.json));
    }
    Json scene = Json::object();
    if (!roots.empty())
        scene["nodes"] = roots;
    Json document = {
        {"asset", {{"version", "2.0"}, {"generator", std::string("3ds2mcx V") + Mc3dsGetVersion()}}},
        {"scene", 0},
        {"scenes", {scene}}};
    for (auto &[name, list] : {std::pair<const char *, Json &>{"nodes", nodes},
                               {"meshes", meshes},
                               {"materials", glb->materials},
                               {"textures", glb->textures},
                               {"images", glb->images},
                               {"animations", glb->animations},
                               {"accessors", glb->accessors},
                               {"bufferViews", glb->views}})
        if (!list.empty())
            document[name] = std::move(list);
    if (glb->size != 0)
        document["buffers"] = {{{"byteLength", glb->size}}};
    return document;
}

static void PutNumber(std::string *bytes, uint64_t number)
{
    for (int shift = 0; shift < 32; shift += 8)
        *bytes += static_cast<char>(number >> shift & 0xFF);
}

// The bytes of the file before the binary data. Empty if the file's size exceeds the 32 bits that the format
// has for it.
static std::string HeadOf(const Glb &glb, std::string json)
{
    json.pop_back(); // a line end
    json.append((4 - json.size() % 4) % 4, ' ');
    const uint64_t size = 12 + 8 + json.size() + (glb.size != 0 ? 8 + glb.size : 0);
    if (size > UINT32_MAX)
        return "";
    std::string head = "glTF";
    for (const uint64_t number : {uint64_t{2}, size, uint64_t{json.size()}})
        PutNumber(&head, number);
    head += "JSON" + json;
    if (glb.size != 0) {
        PutNumber(&head, glb.size);
        head += std::string("BIN\0", 4);
    }
    return head;
}

// Appends all of from, which is read from its start. Returns errno; 0 on success.
static int Append(FILE *from, FILE *to)
{
    std::vector<char> block(1 << 17);
    errno = 0;
    // A rewind would hide an error of the last flush.
    if (std::fflush(from) != 0 || std::fseek(from, 0, SEEK_SET) != 0)
        return errno != 0 ? errno : EIO;
    while (const size_t length = std::fread(block.data(), 1, block.size(), from))
        if (std::fwrite(block.data(), 1, length, to) != length)
            return errno != 0 ? errno : EIO;
    return std::ferror(from) ? EIO : 0;
}

static void ReportGlbNotes(const Glb &glb, const Mc3dsFile *scene, const Mc3dsOptions &asked, float scale,
                           Reporter *reporter)
{
    const auto note = [reporter](FindingKind kind, uint64_t count, double size) {
        ReportFinding(reporter, {.kind = kind, .weight = Weight::Note, .count = count, .size = size});
    };
    if (glb.lostFaces != 0)
        note(FindingKind::GlbBareFaces, glb.lostFaces, 0.0);
    Bounds bounds = NoBounds();
    for (const GlbMesh &mesh : glb.meshes) {
        Grow(&bounds, mesh.bounds.least);
        Grow(&bounds, mesh.bounds.most);
    }
    double size = 0.0;
    for (size_t axis = 0; axis < 3; ++axis)
        size = std::max(size, bounds.most[axis] - bounds.least[axis]);
    if (glb.worstError > 1e-5 * size)
        note(FindingKind::GlbNearest, 0, glb.worstError / static_cast<double>(scale));
    if (scene->hasAnimation && (asked.flags & MC3DS_MERGED))
        note(FindingKind::GlbMerged, 0, 0.0);
    ReportMissingTextures(glb, reporter);
}

// Writes the file from its head and the data. Returns errno; 0 on success.
static int WriteWhole(const std::string &head, const Glb &glb, const fs::path &file)
{
    errno = 0;
    Stream out(std::fopen(file.string().c_str(), "wb"), std::fclose);
    if (!out)
        return errno;
    int error = std::fwrite(head.data(), 1, head.size(), out.get()) == head.size() ? 0 : errno;
    error = error == 0 ? Append(glb.binary, out.get()) : error;
    const bool closed = std::fclose(out.release()) == 0;
    return error != 0 || closed ? error : errno;
}

std::string WriteGlb(const Mc3dsFile *scene, const Mc3dsOptions &asked, const std::string &scenePath,
                     const fs::path &file, const fs::path &working, Reporter *reporter, bool *isEmpty)
{
    errno = 0;
    const Stream binary(std::fopen(working.string().c_str(), "w+b"), std::fclose);
    if (!binary)
        return std::strerror(errno);
    std::error_code ignored;
    fs::remove(working, ignored); // where an open file can have no name, it goes with the private folder
    Glb glb = {};
    glb.binary = binary.get();
    glb.scenePath = scenePath;
    glb.reporter = reporter;
    float scale = 1.0f;
    AddNodes(&glb, scene, BuildModel(scene, asked, -1, reporter, 0, 0, &scale).get());
    PlaceGlbNodes(&glb, scene, asked, reporter);
    AddMeshes(&glb);
    AddGeometry(&glb, scene, asked, reporter);
    *isEmpty = std::all_of(glb.meshes.begin(), glb.meshes.end(),
                           [](const GlbMesh &mesh) { return mesh.primitives.empty(); });
    if (!*isEmpty)
        AddGlbAnimation(&glb, scene, asked, reporter);
    if (reporter->memoryRanOut)
        return "out of memory while building the model";
    ReportGlbNotes(glb, scene, asked, scale, reporter);
    if (*isEmpty)
        return "";
    const std::string head = HeadOf(glb, JsonText(DocumentOf(&glb), 0));
    if (head.empty())
        return "it would take 4 GiB or more, which its format can't count";
    const int error = glb.error != 0 ? glb.error : WriteWhole(head, glb, file);
    return error != 0 ? std::strerror(error) : "";
}
