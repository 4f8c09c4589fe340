// Whether readers of a scene stay inside its chunks. Where one is too short for its own counts, they take
// what they lack from the chunks after it, so that any change elsewhere would change what they read.
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

bool Mc3dsIsSound(const Mc3dsPart &part)
{
    if (part.missing == 0 && !IsSoundItself(part))
        return false;
    for (const Mc3dsPart &child : part.children)
        if (!Mc3dsIsSound(child))
            return false;
    return true;
}
