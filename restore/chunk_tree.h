// The chunks of a .3DS file as a tree that can be changed and written again.
#ifndef MC3DS_RESTORE_CHUNK_TREE_H
#define MC3DS_RESTORE_CHUNK_TREE_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

enum Mc3dsRestoreTag : uint16_t {
    Mc3dsTagMain = 0x4D4D,
    Mc3dsTagEditor = 0x3D3D,
    Mc3dsTagObject = 0x4000,
    Mc3dsTagHidden = 0x4010,
    Mc3dsTagMesh = 0x4100,
    Mc3dsTagPoints = 0x4110,
    Mc3dsTagPointFlags = 0x4111,
    Mc3dsTagFaces = 0x4120,
    Mc3dsTagFaceMaterial = 0x4130,
    Mc3dsTagTexture = 0x4140,
    Mc3dsTagSmoothing = 0x4150,
    Mc3dsTagMatrix = 0x4160,
    Mc3dsTagMaterialName = 0xA000,
    Mc3dsTagMaterial = 0xAFFF,
    Mc3dsTagKeyframer = 0xB000,
    Mc3dsTagAmbientNode = 0xB001,
    Mc3dsTagObjectNode = 0xB002,
    Mc3dsTagSpotNode = 0xB007, // the last kind of node
    Mc3dsTagFrames = 0xB00A,
    Mc3dsTagNodeHeader = 0xB010,
    Mc3dsTagInstanceName = 0xB011,
    Mc3dsTagPivot = 0xB013,
    Mc3dsTagPositions = 0xB020,
    Mc3dsTagRotations = 0xB021,
    Mc3dsTagScales = 0xB022,
    Mc3dsTagNodeId = 0xB030,
};

// A chunk. Kept small: a scene of many objects has a hundred thousand of them.
struct Mc3dsPart {
    const char *content = nullptr; // before the children; in the bytes of the file, or in strings of the tree
    const char *damaged = nullptr; // after the last child that can be read, in the bytes of the file
    uint32_t contentSize = 0, damagedSize = 0;
    uint32_t missing = 0; // how much the length in the file exceeds the bytes, as in a cut file
    uint16_t tag = 0;
    std::vector<Mc3dsPart> children;
};

struct Mc3dsTree {
    Mc3dsPart root;
    std::string_view rest;           // what follows the main chunk
    std::deque<std::string> strings; // new contents
};

// False if the bytes don't begin with a main chunk or an editor section. The tree refers to the bytes.
bool Mc3dsReadTree(std::string_view bytes, Mc3dsTree *tree);
uint64_t Mc3dsPartSize(const Mc3dsPart &part);
std::string Mc3dsWriteTree(const Mc3dsTree &tree);

inline std::string_view Mc3dsContent(const Mc3dsPart &part)
{
    return {part.content, part.contentSize};
}

void Mc3dsSetContent(Mc3dsTree *tree, Mc3dsPart *part, std::string content);
Mc3dsPart Mc3dsMakePart(Mc3dsTree *tree, uint16_t tag, std::string content);
// The first child of that kind; null if there is none.
Mc3dsPart *Mc3dsFindPart(Mc3dsPart *parent, uint16_t tag);
const Mc3dsPart *Mc3dsFindPart(const Mc3dsPart *parent, uint16_t tag);
size_t Mc3dsCountParts(const Mc3dsPart &parent, uint16_t tag);
// The text at the start of the content without its end. npos of the content if it has no end within 128
// bytes.
std::string_view Mc3dsTextOf(std::string_view content);

// Numbers of a file are little-endian. at must be inside the bytes.
template <class Number>
Number Mc3dsNumberAt(std::string_view bytes, size_t at)
{
    Number number;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&number, bytes.data() + at, sizeof number);
    } else {
        char turned[sizeof number];
        for (size_t i = 0; i < sizeof number; ++i)
            turned[i] = bytes[at + sizeof number - 1 - i];
        std::memcpy(&number, turned, sizeof number);
    }
    return number;
}

template <class Number>
void Mc3dsAppendNumber(std::string *bytes, Number number)
{
    char own[sizeof number];
    std::memcpy(own, &number, sizeof number);
    if constexpr (std::endian::native != std::endian::little)
        std::reverse(own, own + sizeof number);
    bytes->append(own, sizeof number);
}

#endif
