// The chunks of a .3DS file as a tree that can be changed and written again.
#ifndef MC3DS_RESTORE_CHUNK_TREE_H
#define MC3DS_RESTORE_CHUNK_TREE_H

#include <cstdint>
#include <cstring>
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

struct Mc3dsPart {
    uint16_t tag = 0;
    uint32_t missing = 0;     // how much the length in the file exceeds the bytes, as in a cut file
    std::string_view content; // before the children; in the bytes of the file, or in own
    std::string_view damaged; // after the last child that can be read
    std::vector<Mc3dsPart> children;
    std::string own; // new content; see Mc3dsSetContent
    bool isOwn = false;
};

struct Mc3dsTree {
    Mc3dsPart root;
    std::string_view rest; // what follows the main chunk
};

// False if the bytes don't begin with a main chunk or an editor section. The tree refers to the bytes.
bool Mc3dsReadTree(std::string_view bytes, Mc3dsTree *tree);
uint64_t Mc3dsPartSize(const Mc3dsPart &part);
std::string Mc3dsWriteTree(const Mc3dsTree &tree);

inline std::string_view Mc3dsContent(const Mc3dsPart &part)
{
    return part.isOwn ? std::string_view(part.own) : part.content;
}

void Mc3dsSetContent(Mc3dsPart *part, std::string content);
Mc3dsPart Mc3dsMakePart(uint16_t tag, std::string content);
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
    uint64_t bits = 0;
    for (size_t i = 0; i < sizeof(Number); ++i)
        bits |= uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
    if constexpr (sizeof(Number) == 4) {
        const auto word = static_cast<uint32_t>(bits);
        Number number;
        std::memcpy(&number, &word, 4);
        return number;
    } else {
        return static_cast<Number>(bits);
    }
}

template <class Number>
void Mc3dsAppendNumber(std::string *bytes, Number number)
{
    uint32_t bits = 0;
    if constexpr (sizeof(Number) == 4)
        std::memcpy(&bits, &number, 4);
    else
        bits = number;
    for (size_t i = 0; i < sizeof(Number); ++i)
        bytes->push_back(static_cast<char>(bits >> (8 * i) & 0xFF));
}

#endif
