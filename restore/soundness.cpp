// Whether readers of a scene stay inside its chunks. Where one is too short for its own counts, they take
// what they lack from the chunks after it, so that any change elsewhere would change what they read.
#include <algorithm>

#include "parts.h"

static bool HasText(std::string_view content, size_t at, size_t after)
{
    if (content.size() < at)
        return false;
    const size_t length = Mc3dsTextOf(content.substr(at)).size();
    return at + length < content.size() && content.size() >= at + length + 1 + after;
}

static bool HasArray(std::string_view content, size_t entrySize)
{
    return content.size() >= 2 && content.size() >= 2 + entrySize * Mc3dsNumberAt<uint16_t>(content, 0);
}

static bool HasGroup(std::string_view content)
{
    return HasText(content, 0, 2) && HasArray(content.substr(Mc3dsTextOf(content).size() + 1), 2);
}

static bool IsSoundItself(const Mc3dsPart &part)
{
    const std::string_view content = Mc3dsContent(part);
    switch (part.tag) {
    case Mc3dsTagObject: return HasText(content, 0, 0);
    case Mc3dsTagPoints: return HasArray(content, 12);
    case Mc3dsTagFaces: return HasArray(content, 8);
    case Mc3dsTagTexture: return HasArray(content, 8);
    case Mc3dsTagFaceMaterial: return HasGroup(content);
    case Mc3dsTagMatrix: return content.size() >= 48;
    case Mc3dsTagPivot: return content.size() >= 12;
    case Mc3dsTagFrames: return HasText(content, 2, 4);
    case Mc3dsTagNodeHeader: return HasText(content, 0, 6);
    case Mc3dsTagInstanceName:
    case Mc3dsTagMaterialName: return HasText(content, 0, 0);
    default: return true;
    }
}

// What follows the last whole child: readers take the header of a chunk from it, and skip by its size.
static bool HasSoundEnd(const Mc3dsPart &part)
{
    constexpr uint32_t sizeMost = 0xF0000000; // a larger one is past 4 GiB in some places, and not in others
    return part.damagedSize == 0 ||
           (part.damagedSize >= 6 &&
            Mc3dsNumberAt<uint32_t>({part.damaged, part.damagedSize}, 2) <= sizeMost);
}

static bool IsSound(const Mc3dsPart &part)
{
    return (part.missing != 0 || (IsSoundItself(part) && HasSoundEnd(part))) &&
           std::all_of(part.children.begin(), part.children.end(), IsSound);
}

bool Mc3dsIsSound(const Mc3dsTree &tree)
{
    return std::all_of(tree.root.children.begin(), tree.root.children.end(), IsSound);
}
