// The overview of a scene for programs.
#include <charconv>
#include <cmath>
#include <cstdio>

#include "host.h"
#include "info.h"

static bool IsUtf8(std::string_view text)
{
    static const uint32_t least[] = {0, 0x80, 0x800, 0x10000}; // by the bytes behind the first
    for (size_t i = 0; i < text.size(); ++i) {
        const auto first = static_cast<unsigned char>(text[i]);
        const size_t more = first < 0x80 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
        uint32_t code = more == 0 ? first : first & (0x3Fu >> more);
        if ((first & 0xC0) == 0x80 || first > 0xF4 || more >= text.size() - i)
            return false;
        for (const size_t end = i + more; i < end;) {
            const auto next = static_cast<unsigned char>(text[++i]);
            if ((next & 0xC0) != 0x80)
                return false;
            code = code << 6 | (next & 0x3F);
        }
        if (code < least[more] || code > 0x10FFFF || code >> 11 == 0x1B) // the last: half of a UTF-16 pair
            return false;
    }
    return true;
}

// A text that isn't UTF-8 becomes one character for each byte, U+0000 to U+00FF.
static std::string Quote(std::string_view text)
{
    const bool isUtf8 = IsUtf8(text);
    std::string json = "\"";
    for (const char c : text) {
        constexpr char digits[] = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F || (byte > 0x7F && !isUtf8))
            json += {'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 15]};
        else if (c == '"' || c == '\\')
            json += {'\\', c};
        else
            json += c;
    }
    return json + '"';
}

static std::string Value(uint64_t number)
{
    return std::to_string(number);
}

static std::string Value(float number)
{
    char digits[40];
    if (!std::isfinite(number))
        return "null"; // JSON has no word for it
    return std::string(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

static std::string Value(bool value)
{
    return value ? "true" : "false";
}

// The items between brackets; write makes the text of one.
template <class Items, class Write>
static std::string List(const Items &items, const Write &write)
{
    std::string json = "[";
    for (const auto &item : items)
        json += (json.size() > 1 ? "," : "") + write(item);
    return json + ']';
}

static std::string Triple(const float (&numbers)[3])
{
    return List(numbers, [](float number) { return Value(number); });
}

static std::string Same(const std::string &json)
{
    return json;
}

static std::string Counts(const char *key, const std::map<std::string, size_t> &counts)
{
    return List(counts, [key](const auto &entry) {
        return std::string("{\"") + key + "\":" + Quote(entry.first) +
               ",\"count\":" + Value(uint64_t{entry.second}) + '}';
    });
}

static std::string ObjectJson(const Mc3dsFile *scene, const SceneSummary &summary, uint32_t index,
                              const std::string &parent, const std::string &depth)
{
    const Mc3dsObject &object = scene->objects[index];
    return "{\"name\":" + Quote(object.name) + ",\"outputName\":" + Quote(object.safeName) +
           ",\"instanceName\":" + Quote(object.instanceName) +
           ",\"dummy\":" + Value(IsDummy(scene, &object)) + ",\"parent\":" + parent + ",\"depth\":" + depth +
           ",\"vertices\":" + Value(static_cast<uint64_t>(object.vertexCount)) +
           ",\"faces\":" + Value(static_cast<uint64_t>(object.faceCount)) + ",\"materials\":" +
           List(summary.materialsOf[index],
                [](int32_t material) { return Value(static_cast<uint64_t>(material)); }) +
           ",\"textured\":" + Value(object.hasTexture != 0) + ",\"pivot\":" + Triple(object.pivot) +
           ",\"positionKeys\":" + Value(uint64_t{object.positionKeyCount}) +
           ",\"rotationKeys\":" + Value(uint64_t{object.rotationKeyCount}) +
           ",\"scaleKeys\":" + Value(uint64_t{object.scaleKeyCount}) +
           ",\"animated\":" + Value(scene->hasAnimation && object.hasFrames) + '}';
}

// In the order of the scene's records, so that an index here is the tag of the object's clump less 2.
static std::string ObjectsJson(const Mc3dsFile *scene, const SceneSummary &summary)
{
    std::vector<std::string> parents(scene->objectCount, "null"), depths(scene->objectCount, "null"), objects;
    std::vector<uint32_t> ancestors; // the row of the tree for each depth
    for (const TreeRow &row : summary.tree) {
        ancestors.resize(row.depth);
        if (row.depth > 0)
            parents[row.object] = Value(uint64_t{ancestors.back()});
        depths[row.object] = Value(uint64_t{row.depth});
        ancestors.push_back(row.object);
    }
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        objects.push_back(ObjectJson(scene, summary, i, parents[i], depths[i]));
    return List(objects, Same);
}

static std::string MaterialJson(const Mc3dsMaterial &material, uint64_t faces)
{
    return "{\"name\":" + Quote(material.name) + ",\"faces\":" + Value(faces) +
           ",\"shading\":" + Quote(ShadingName(material.shading)) +
           ",\"ambient\":" + Triple(material.ambient) + ",\"diffuse\":" + Triple(material.diffuse) +
           ",\"specular\":" + Triple(material.specular) + ",\"shininess\":" + Value(material.shininess) +
           ",\"transparency\":" + Value(material.transparency) +
           ",\"texture\":" + Quote(material.textureMap) + ",\"opacityMap\":" + Quote(material.opacityMap) +
           ",\"reflectionMap\":" + Quote(material.reflectionMap) + '}';
}

static std::string SceneJson(const Mc3dsFile *scene, const SceneSummary &summary)
{
    std::vector<std::string> materials;
    for (int32_t i = 0; i < scene->materialCount; ++i)
        materials.push_back(MaterialJson(scene->materials[i], summary.facesOf[static_cast<size_t>(i)]));
    std::string json = ",\"vertices\":" + Value(summary.vertexCount) +
                       ",\"faces\":" + Value(summary.faceCount) +
                       ",\"dummies\":" + Value(uint64_t{scene->dummyCount}) +
                       ",\"frames\":" + Value(uint64_t{scene->frameCount}) +
                       ",\"animation\":" + Value(scene->hasAnimation != 0) +
                       ",\"ambient\":" + Triple(scene->ambient) + ",\"bounds\":";
    json += summary.hasBounds
                ? "{\"least\":" + Triple(summary.least) + ",\"most\":" + Triple(summary.most) + '}'
                : "null";
    json += ",\"objects\":" + ObjectsJson(scene, summary);
    // Entry 0 is the library's own default, of faces without a known material.
    json += ",\"materials\":" + List(materials, Same);
    json += ",\"textures\":" + List(summary.textures, [](const TextureFile &file) {
                return "{\"name\":" + Quote(file.name) +
                       ",\"found\":" + (file.found.empty() ? "null" : Quote(file.found)) + '}';
            });
    return json;
}

void PrintJson(const Mc3dsFile *scene, const std::string &scenePath, const SceneNotes &notes)
{
    std::string json = "{\"scene\":" + Quote(scenePath) + ",\"loaded\":" + Value(scene != nullptr);
    if (scene)
        json += SceneJson(scene, Summarise(scene, scenePath));
    json += ",\"leftBehind\":{\"lights\":" + List(notes.lights, Quote) +
            ",\"cameras\":" + List(notes.cameras, Quote) + ",\"hidden\":" + List(notes.hidden, Quote) +
            ",\"unsupported\":" + Counts("what", notes.unsupported) +
            ",\"chunks\":" + Counts("tag", notes.chunks) + "},\"reports\":" + Counts("text", notes.reports) +
            "}\n";
    std::fwrite(json.data(), 1, json.size(), stdout);
}
