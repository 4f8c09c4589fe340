// A mesh that several nodes place becomes as many meshes, each with one node.
#include "parts.h"

constexpr size_t nameMost = 10; // of an object in the format

// A name that no object has: the instance's own, or the mesh's with a number.
static std::string FreshName(const std::string &mesh, std::string_view instance,
                             std::unordered_set<std::string> *names, uint32_t *number)
{
    std::string name(instance.substr(0, nameMost));
    while (name.empty() || !names->insert(name).second) {
        const std::string end = '_' + std::to_string(++*number);
        name = mesh.substr(0, nameMost - std::min(nameMost, end.size())) + end;
    }
    return name;
}

static void Rename(Mc3dsTree *tree, Mc3dsPart *part, const std::string &name)
{
    const std::string_view content = Mc3dsContent(*part);
    const size_t length = Mc3dsTextOf(content).size();
    Mc3dsSetContent(tree, part, name + std::string(content.substr(length)));
}

static void RenameNode(Mc3dsTree *tree, Mc3dsPart *node, const std::string &name)
{
    Rename(tree, Mc3dsFindPart(node, Mc3dsTagNodeHeader), name);
    // With an instance name, readers would look for the mesh of the old one.
    std::erase_if(node->children, [](const Mc3dsPart &child) { return child.tag == Mc3dsTagInstanceName; });
}

// Returns the copies of one mesh for all its nodes but the first, which keeps the mesh.
static std::vector<Mc3dsPart> CopyMesh(Mc3dsRestoring *restoring, const Mc3dsMeshPart &mesh,
                                       const std::vector<Mc3dsNode *> &nodes,
                                       std::unordered_set<std::string> *names)
{
    const std::string &name = mesh.name;
    std::vector<Mc3dsPart> copies;
    uint32_t number = 0;
    const uint64_t added = nodes.size() - 1;
    const uint64_t bytes = added * (Mc3dsPartSize(*mesh.object) + nameMost);
    if (!Mc3dsTakeRoom(restoring, Mc3dsRestoreKind::Placements, name, bytes))
        return copies;
    restoring->copies.insert(name);
    for (size_t i = 1; i < nodes.size(); ++i) {
        const Mc3dsPart *instance = Mc3dsFindPart(nodes[i]->part, Mc3dsTagInstanceName);
        const std::string fresh = FreshName(
            name, instance ? Mc3dsTextOf(Mc3dsContent(*instance)) : std::string_view(), names, &number);
        restoring->copies.insert(fresh);
        copies.push_back(*mesh.object);
        Rename(&restoring->tree, &copies.back(), fresh);
        RenameNode(&restoring->tree, nodes[i]->part, fresh);
    }
    Mc3dsRecord(restoring, Mc3dsRestoreKind::Placements, name, added);
    return copies;
}

void Mc3dsRestorePlacements(Mc3dsRestoring *restoring)
{
    Mc3dsKeyframer &keyframer = Mc3dsCurrentKeyframer(restoring);
    std::unordered_set<std::string> names;
    for (const Mc3dsMeshPart &mesh : keyframer.meshes)
        names.emplace(mesh.name);
    for (const Mc3dsNode &node : keyframer.nodes)
        names.emplace(node.name);
    std::vector<std::vector<Mc3dsNode *>> nodesOf(keyframer.meshes.size());
    for (Mc3dsNode &node : keyframer.nodes)
        if (node.mesh != Mc3dsNothing)
            nodesOf[node.mesh].push_back(&node);
    size_t next = 0; // the meshes stand in the order of the file
    for (Mc3dsPart *editor : keyframer.editors) {
        std::vector<Mc3dsPart> children;
        std::vector<std::vector<Mc3dsPart>> copies(editor->children.size());
        bool isChanged = false;
        for (size_t i = 0; i < editor->children.size(); ++i) {
            if (next == keyframer.meshes.size() || keyframer.meshes[next].object != &editor->children[i])
                continue;
            if (nodesOf[next].size() > 1)
                copies[i] = CopyMesh(restoring, keyframer.meshes[next], nodesOf[next], &names);
            isChanged = isChanged || !copies[i].empty();
            ++next;
        }
        for (size_t i = 0; i < editor->children.size() && isChanged; ++i) {
            children.push_back(std::move(editor->children[i]));
            for (Mc3dsPart &copy : copies[i])
                children.push_back(std::move(copy));
        }
        if (isChanged)
            editor->children = std::move(children);
    }
    if (!restoring->copies.empty())
        restoring->keyframer.reset();
}
