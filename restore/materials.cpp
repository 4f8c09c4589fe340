// Completes materials. Where a field is missing, readers of the format agree on most values: no shine,
// opaque, smooth shading, and for a surface without an ambient colour its diffuse one. Without a diffuse
// colour it is the grey that the modeller itself begins with.
#include <algorithm>
#include <cstddef>
#include <unordered_map>

#include "parts.h"

enum : uint16_t {
    ambientTag = 0xA010,
    diffuseTag = 0xA020,
    specularTag = 0xA030,
    shininessTag = 0xA040,
    transparencyTag = 0xA050,
    shadingTag = 0xA100,
    mapNameTag = 0xA300,
    floatColourTag = 0x0010,
    byteColourTag = 0x0011,
    linearByteColourTag = 0x0012,
    linearFloatColourTag = 0x0013,
    shortPercentTag = 0x0030,
    floatPercentTag = 0x0031,
};
constexpr uint16_t mapTags[] = {0xA200, 0xA210, 0xA220};
constexpr uint16_t gouraud = 2;
constexpr uint16_t shadingMost = 4;
constexpr size_t headerSize = 6;
constexpr size_t mapNameMost = 15; // readers cut longer ones

static std::string Packed(uint16_t tag, const std::string &content)
{
    std::string bytes;
    Mc3dsAppendNumber(&bytes, tag);
    Mc3dsAppendNumber(&bytes, static_cast<uint32_t>(content.size() + headerSize));
    return bytes + content;
}

// The chunks inside a field, as far as they are whole.
struct Inner {
    uint16_t tag;
    std::string_view content;
};

static std::vector<Inner> InnerOf(std::string_view content)
{
    std::vector<Inner> inner;
    while (content.size() >= headerSize) {
        const uint32_t size = Mc3dsNumberAt<uint32_t>(content, 2);
        if (size < headerSize || size > content.size())
            break;
        inner.push_back({Mc3dsNumberAt<uint16_t>(content, 0), content.substr(headerSize, size - headerSize)});
        content.remove_prefix(size);
    }
    return inner;
}

// False if a chunk is no colour.
static bool ReadColour(const Inner &chunk, double colour[3])
{
    const bool isFloat = chunk.tag == floatColourTag || chunk.tag == linearFloatColourTag;
    const bool isByte = chunk.tag == byteColourTag || chunk.tag == linearByteColourTag;
    if ((!isFloat && !isByte) || chunk.content.size() < (isFloat ? size_t{12} : size_t{3}))
        return false;
    for (size_t i = 0; i < 3; ++i)
        colour[i] = isFloat ? static_cast<double>(Mc3dsNumberAt<float>(chunk.content, 4 * i))
                            : static_cast<unsigned char>(chunk.content[i]) / 255.0;
    return true;
}

static bool IsFraction(double value)
{
    return value >= 0.0 && value <= 1.0;
}

static double Clamped(double value, double otherwise)
{
    return std::isfinite(value) ? std::clamp(value, 0.0, 1.0) : otherwise;
}

// Readers take the first chunk of a field. True if that is a colour in range.
static bool IsGoodColour(const Mc3dsPart &field)
{
    const std::vector<Inner> inner = InnerOf(Mc3dsContent(field));
    double colour[3];
    return !inner.empty() && (inner.front().tag == floatColourTag || inner.front().tag == byteColourTag) &&
           ReadColour(inner.front(), colour) && IsFraction(colour[0]) && IsFraction(colour[1]) &&
           IsFraction(colour[2]);
}

// The colour that a field means, as a chunk that readers take; otherwise where it means none. Linear colours
// only count where there is no other.
static std::string ColourOf(const Mc3dsPart *field, const std::string &otherwise)
{
    const auto inner = field ? InnerOf(Mc3dsContent(*field)) : std::vector<Inner>();
    double colour[3] = {};
    const auto find = [&](uint16_t tagMost) {
        return std::find_if(inner.begin(), inner.end(), [&](const Inner &chunk) {
            return chunk.tag <= tagMost && ReadColour(chunk, colour);
        });
    };
    auto found = find(byteColourTag);
    if (found == inner.end())
        found = find(linearFloatColourTag);
    if (found == inner.end())
        return otherwise;
    if (found->tag == byteColourTag || found->tag == linearByteColourTag)
        return Packed(byteColourTag, std::string(found->content.substr(0, 3)));
    std::string floats;
    for (const double value : colour)
        Mc3dsAppendNumber(&floats, static_cast<float>(Clamped(value, 0.0)));
    return Packed(floatColourTag, floats);
}

static bool ReadPercentage(const Mc3dsPart &field, double *value)
{
    const std::vector<Inner> inner = InnerOf(Mc3dsContent(field));
    if (inner.empty())
        return false;
    const Inner &first = inner.front();
    if (first.tag == shortPercentTag && first.content.size() >= 2)
        *value = Mc3dsNumberAt<uint16_t>(first.content, 0) / 100.0;
    else if (first.tag == floatPercentTag && first.content.size() >= 4)
        *value = static_cast<double>(Mc3dsNumberAt<float>(first.content, 0));
    else
        return false;
    return true;
}

static void SetField(Mc3dsTree *tree, Mc3dsPart *material, uint16_t tag, const std::string &content)
{
    // Later fields of a kind replace earlier ones in readers, so all have to say the same.
    bool isThere = false;
    for (Mc3dsPart &child : material->children)
        if (child.tag == tag) {
            Mc3dsSetContent(tree, &child, content);
            isThere = true;
        }
    if (!isThere)
        material->children.push_back(Mc3dsMakePart(tree, tag, content));
}

static const Mc3dsPart *LastField(const Mc3dsPart &material, uint16_t tag)
{
    const Mc3dsPart *last = nullptr;
    for (const Mc3dsPart &child : material.children)
        last = child.tag == tag ? &child : last;
    return last;
}

static uint32_t CompleteColours(Mc3dsTree *tree, Mc3dsPart *material)
{
    const std::string black = Packed(byteColourTag, std::string(3, '\0')),
                      grey = Packed(byteColourTag, std::string(3, '\x96'));
    const std::string ambient = ColourOf(LastField(*material, ambientTag), grey);
    const std::string diffuse = ColourOf(LastField(*material, diffuseTag), ambient);
    uint32_t count = 0;
    for (const auto &[tag, otherwise] :
         {std::pair(diffuseTag, diffuse), {ambientTag, diffuse}, {specularTag, black}}) {
        const Mc3dsPart *field = LastField(*material, tag);
        if (field && IsGoodColour(*field))
            continue;
        SetField(tree, material, tag, ColourOf(field, otherwise));
        ++count;
    }
    return count;
}

// A float above 1 is taken for a percentage of 100.
static uint32_t CompletePercentages(Mc3dsTree *tree, Mc3dsPart *material)
{
    uint32_t count = 0;
    for (const uint16_t tag : {shininessTag, transparencyTag}) {
        const Mc3dsPart *field = LastField(*material, tag);
        double value = 0.0;
        const bool isRead = field && ReadPercentage(*field, &value);
        if (isRead && IsFraction(value))
            continue;
        const bool isFloat = isRead && InnerOf(Mc3dsContent(*field)).front().tag == floatPercentTag;
        std::string number;
        Mc3dsAppendNumber(&number, static_cast<uint16_t>(std::lround(
                                       100 * Clamped(isFloat && value > 1 ? value / 100 : value, 0.0))));
        SetField(tree, material, tag, Packed(shortPercentTag, number));
        ++count;
    }
    return count;
}

static uint32_t CompleteShading(Mc3dsTree *tree, Mc3dsPart *material)
{
    const Mc3dsPart *field = LastField(*material, shadingTag);
    if (field && Mc3dsContent(*field).size() >= 2 &&
        Mc3dsNumberAt<uint16_t>(Mc3dsContent(*field), 0) <= shadingMost)
        return 0;
    std::string number;
    Mc3dsAppendNumber(&number, gouraud);
    SetField(tree, material, shadingTag, number);
    return 1;
}

// A map begins with its strength. Readers that rely on it take the name for the strength where that is
// missing.
static uint32_t CompleteMaps(Mc3dsTree *tree, Mc3dsPart *material)
{
    uint32_t count = 0;
    std::string full;
    Mc3dsAppendNumber(&full, uint16_t{100});
    for (Mc3dsPart &child : material->children) {
        if (std::find(std::begin(mapTags), std::end(mapTags), child.tag) == std::end(mapTags))
            continue;
        const std::vector<Inner> inner = InnerOf(Mc3dsContent(child));
        if (inner.empty() || inner.front().tag != mapNameTag ||
            Mc3dsTextOf(inner.front().content).size() > mapNameMost)
            continue;
        Mc3dsSetContent(tree, &child, Packed(shortPercentTag, full) + std::string(Mc3dsContent(child)));
        ++count;
    }
    return count;
}

// Readers that find no whole chunk in a field take the one after it, or stop.
static bool IsWholeField(std::string_view content)
{
    size_t size = 0;
    for (const Inner &chunk : InnerOf(content)) {
        size += headerSize + chunk.content.size();
        if (chunk.tag == mapNameTag && Mc3dsTextOf(chunk.content).size() == chunk.content.size())
            return false;
    }
    return size != 0 && size == content.size();
}

static bool HasWholeFields(const Mc3dsPart &material)
{
    constexpr uint16_t tags[] = {ambientTag,      diffuseTag, specularTag, shininessTag,
                                 transparencyTag, mapTags[0], mapTags[1],  mapTags[2]};
    for (const Mc3dsPart &child : material.children)
        if (std::find(std::begin(tags), std::end(tags), child.tag) != std::end(tags) &&
            !IsWholeField(Mc3dsContent(child)))
            return false;
    return true;
}

static std::string_view NameOf(const Mc3dsPart &material)
{
    const Mc3dsPart *name = LastField(material, Mc3dsTagMaterialName);
    return name ? Mc3dsTextOf(Mc3dsContent(*name)) : std::string_view();
}

static void Complete(Mc3dsRestoring *restoring, Mc3dsPart *material)
{
    constexpr uint64_t roomForAll = 200;
    const std::string name(NameOf(*material));
    if (name.empty() || material->damagedSize != 0 || !HasWholeFields(*material) ||
        restoring->room < roomForAll)
        return; // faces can't name it; or leave it to the readers
    const uint32_t count =
        CompleteColours(&restoring->tree, material) + CompletePercentages(&restoring->tree, material) +
        CompleteShading(&restoring->tree, material) + CompleteMaps(&restoring->tree, material);
    if (count != 0 && Mc3dsTakeRoom(restoring, Mc3dsRestoreKind::Materials, name, roomForAll))
        Mc3dsRecord(restoring, Mc3dsRestoreKind::Materials, name, count);
}

// Where each material is named first: the index of the object in the editor section.
static std::unordered_map<std::string_view, size_t> FirstUses(const Mc3dsPart &editor)
{
    std::unordered_map<std::string_view, size_t> uses;
    for (size_t i = 0; i < editor.children.size(); ++i)
        for (const Mc3dsPart &mesh : editor.children[i].children)
            for (const Mc3dsPart &faces : mesh.children)
                for (const Mc3dsPart &group : faces.children)
                    if (editor.children[i].tag == Mc3dsTagObject && group.tag == Mc3dsTagFaceMaterial)
                        uses.try_emplace(Mc3dsTextOf(Mc3dsContent(group)), i);
    return uses;
}

static void MoveAhead(Mc3dsRestoring *restoring, Mc3dsPart *editor)
{
    const auto uses = FirstUses(*editor);
    std::vector<Mc3dsPart> ahead, others;
    std::unordered_set<std::string_view> seen;
    std::unordered_set<std::string> recorded;
    for (const Mc3dsRestoreRecord &record : restoring->records)
        recorded.insert(record.name);
    const auto isLate = [&uses, &seen](const Mc3dsPart &part, size_t index) {
        if (part.tag != Mc3dsTagMaterial)
            return false;
        const std::string_view name = NameOf(part);
        const auto use = uses.find(name);
        return seen.insert(name).second && use != uses.end() && use->second < index;
    };
    size_t first = SIZE_MAX;
    std::vector<size_t> late;
    for (size_t i = 0; i < editor->children.size(); ++i) {
        if (editor->children[i].tag == Mc3dsTagObject)
            first = std::min(first, i);
        if (isLate(editor->children[i], i))
            late.push_back(i);
    }
    if (late.empty())
        return;
    for (const size_t i : late) {
        const std::string name(NameOf(editor->children[i]));
        if (recorded.insert(name).second)
            Mc3dsRecord(restoring, Mc3dsRestoreKind::Materials, name, 0);
        ahead.push_back(std::move(editor->children[i]));
    }
    for (size_t i = 0, next = 0; i < editor->children.size(); ++i)
        if (next < late.size() && late[next] == i)
            ++next;
        else
            others.push_back(std::move(editor->children[i]));
    others.insert(others.begin() + static_cast<std::ptrdiff_t>(first), std::make_move_iterator(ahead.begin()),
                  std::make_move_iterator(ahead.end()));
    editor->children = std::move(others);
    restoring->keyframer.reset();
}

void Mc3dsRestoreMaterials(Mc3dsRestoring *restoring)
{
    const std::vector<Mc3dsPart *> editors = Mc3dsCurrentKeyframer(restoring).editors;
    for (Mc3dsPart *editor : editors) {
        for (Mc3dsPart &part : editor->children)
            if (part.tag == Mc3dsTagMaterial)
                Complete(restoring, &part);
        MoveAhead(restoring, editor);
    }
}
