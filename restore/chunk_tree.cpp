#include "chunk_tree.h"

#include <algorithm>

constexpr size_t headerSize = 6;
constexpr size_t leaf = SIZE_MAX;

std::string_view Mc3dsTextOf(std::string_view content)
{
    constexpr size_t textMost = 128;
    return content.substr(0, std::min(content.substr(0, textMost + 1).find('\0'), content.size()));
}

// The bytes before the children; leaf if the part is copied as a whole. Kinds count only where the format has
// them, so the depth is limited.
static size_t ChildrenStart(uint16_t parent, uint16_t tag, std::string_view content)
{
    if (tag == Mc3dsTagEditor || tag == Mc3dsTagKeyframer)
        return parent == Mc3dsTagMain ? 0 : leaf;
    if (parent == Mc3dsTagEditor && tag == Mc3dsTagMaterial)
        return 0;
    if (parent == Mc3dsTagEditor && tag == Mc3dsTagObject) {
        const size_t length = Mc3dsTextOf(content).size();
        return length < content.size() && length <= 128 ? length + 1 : leaf;
    }
    if (parent == Mc3dsTagObject && tag == Mc3dsTagMesh)
        return 0;
    if (parent == Mc3dsTagMesh && tag == Mc3dsTagFaces && content.size() >= 2) {
        const size_t length = 2 + size_t{8} * Mc3dsNumberAt<uint16_t>(content, 0);
        return length <= content.size() ? length : leaf;
    }
    if (parent == Mc3dsTagKeyframer && tag >= Mc3dsTagAmbientNode && tag <= Mc3dsTagSpotNode)
        return 0;
    return leaf;
}

// The size of the chunk at the start of inside as far as it is there; 0 if it is none. missing: how much more
// its parent says that it has.
static size_t ChunkSize(std::string_view inside, uint32_t missing)
{
    if (inside.size() < headerSize)
        return 0;
    const uint64_t size = Mc3dsNumberAt<uint32_t>(inside, 2);
    return size < headerSize || size > inside.size() + uint64_t{missing}
               ? 0
               : static_cast<size_t>(std::min<uint64_t>(size, inside.size()));
}

static size_t CountChunks(std::string_view inside, uint32_t missing)
{
    size_t count = 0;
    for (size_t size; (size = ChunkSize(inside, missing)) != 0; ++count)
        inside.remove_prefix(size);
    return count;
}

// inside: all bytes of the part after its own content.
static void ReadChildren(std::string_view inside, Mc3dsPart *part)
{
    part->children.reserve(CountChunks(inside, part->missing));
    for (size_t there; (there = ChunkSize(inside, part->missing)) != 0;) {
        Mc3dsPart child;
        child.tag = Mc3dsNumberAt<uint16_t>(inside, 0);
        child.missing = static_cast<uint32_t>(Mc3dsNumberAt<uint32_t>(inside, 2) - there);
        const std::string_view content = inside.substr(headerSize, there - headerSize);
        const size_t start = ChildrenStart(part->tag, child.tag, content);
        if (start == leaf && child.missing != 0)
            break;
        child.content = content.data();
        child.contentSize = static_cast<uint32_t>(std::min(start, content.size()));
        if (start != leaf)
            ReadChildren(content.substr(start), &child);
        part->children.push_back(std::move(child));
        inside.remove_prefix(there);
    }
    part->damaged = inside.data();
    part->damagedSize = static_cast<uint32_t>(inside.size());
}

bool Mc3dsReadTree(std::string_view bytes, Mc3dsTree *tree)
{
    if (bytes.size() < headerSize)
        return false;
    Mc3dsPart &root = tree->root;
    root.tag = Mc3dsNumberAt<uint16_t>(bytes, 0);
    const uint32_t size = Mc3dsNumberAt<uint32_t>(bytes, 2);
    if ((root.tag != Mc3dsTagMain && root.tag != Mc3dsTagEditor) || size < headerSize ||
        bytes.size() > UINT32_MAX)
        return false;
    const size_t there = std::min<size_t>(size, bytes.size());
    root.missing = static_cast<uint32_t>(size - there);
    ReadChildren(bytes.substr(headerSize, there - headerSize), &root);
    tree->rest = bytes.substr(there);
    return true;
}

uint64_t Mc3dsPartSize(const Mc3dsPart &part)
{
    uint64_t size = headerSize + Mc3dsContent(part).size() + part.damagedSize;
    for (const Mc3dsPart &child : part.children)
        size += Mc3dsPartSize(child);
    return size;
}

static void Write(const Mc3dsPart &part, std::string *bytes)
{
    const size_t start = bytes->size();
    Mc3dsAppendNumber(bytes, part.tag);
    Mc3dsAppendNumber(bytes, uint32_t{0});
    bytes->append(part.content, part.contentSize);
    for (const Mc3dsPart &child : part.children)
        Write(child, bytes);
    bytes->append(part.damaged, part.damagedSize);
    const auto size = static_cast<uint32_t>(bytes->size() - start + part.missing);
    for (size_t i = 0; i < 4; ++i)
        (*bytes)[start + 2 + i] = static_cast<char>(size >> (8 * i) & 0xFF);
}

std::string Mc3dsWriteTree(const Mc3dsTree &tree)
{
    std::string bytes;
    bytes.reserve(static_cast<size_t>(Mc3dsPartSize(tree.root) + tree.rest.size()));
    Write(tree.root, &bytes);
    return bytes.append(tree.rest);
}

void Mc3dsSetContent(Mc3dsTree *tree, Mc3dsPart *part, std::string content)
{
    const std::string &kept = tree->strings.emplace_back(std::move(content));
    part->content = kept.data();
    part->contentSize = static_cast<uint32_t>(kept.size());
}

Mc3dsPart Mc3dsMakePart(Mc3dsTree *tree, uint16_t tag, std::string content)
{
    Mc3dsPart part;
    part.tag = tag;
    Mc3dsSetContent(tree, &part, std::move(content));
    return part;
}

const Mc3dsPart *Mc3dsFindPart(const Mc3dsPart *parent, uint16_t tag)
{
    for (const Mc3dsPart &child : parent->children)
        if (child.tag == tag)
            return &child;
    return nullptr;
}

Mc3dsPart *Mc3dsFindPart(Mc3dsPart *parent, uint16_t tag)
{
    return const_cast<Mc3dsPart *>(Mc3dsFindPart(static_cast<const Mc3dsPart *>(parent), tag));
}

size_t Mc3dsCountParts(const Mc3dsPart &parent, uint16_t tag)
{
    return static_cast<size_t>(std::count_if(parent.children.begin(), parent.children.end(),
                                             [tag](const Mc3dsPart &child) { return child.tag == tag; }));
}
