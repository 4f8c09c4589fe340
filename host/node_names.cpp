// A few of the file's own bytes: the names that nodes of the keyframer give.
#include <fstream>
#include <map>

#include "host.h"

constexpr uint16_t mainChunk = 0x4D4D, keyframerChunk = 0xB000, objectNodeChunk = 0xB002,
                   nodeHeaderChunk = 0xB010;
constexpr size_t nameMost = 11; // of what the library takes of a name

struct Span {
    uint64_t at, end; // bytes of the file
};

static uint32_t ReadNumber(std::istream &file, int width)
{
    uint32_t number = 0;
    for (int i = 0; i < width; ++i)
        number |= static_cast<uint32_t>(file.get() & 0xFF) << (8 * i);
    return number;
}

// Takes the next chunk off the span, up to the first that doesn't fit in it.
static bool TakeChunk(std::istream &file, Span *span, uint16_t *tag, Span *inside)
{
    file.seekg(static_cast<std::streamoff>(span->at));
    *tag = static_cast<uint16_t>(ReadNumber(file, 2));
    const uint64_t size = ReadNumber(file, 4);
    if (!file || size < 6 || size > span->end - span->at)
        return false;
    *inside = {span->at + 6, span->at + size};
    span->at += size;
    return true;
}

// The first chunk of that tag.
static bool FindChunk(std::istream &file, Span within, uint16_t wanted, Span *inside)
{
    for (uint16_t tag = 0; TakeChunk(file, &within, &tag, inside);)
        if (tag == wanted)
            return true;
    return false;
}

static std::map<std::string, size_t> CountNodeNames(const std::string &scenePath)
{
    std::map<std::string, size_t> names;
    std::ifstream file(PathOf(scenePath), std::ios::binary);
    Span main, keyframer, node, header;
    if (!FindChunk(file, {0, UINT32_MAX}, mainChunk, &main))
        return names;
    for (uint16_t mainTag = 0; TakeChunk(file, &main, &mainTag, &keyframer);) {
        for (uint16_t tag = 0; mainTag == keyframerChunk && TakeChunk(file, &keyframer, &tag, &node);) {
            if (tag != objectNodeChunk || !FindChunk(file, node, nodeHeaderChunk, &header))
                continue;
            file.seekg(static_cast<std::streamoff>(header.at));
            std::string name;
            for (char c = 0; name.size() < nameMost && file.get(c) && c != '\0';)
                name += c;
            ++names[name];
        }
        file.clear();
    }
    return names;
}

void ReportSharedMeshes(const Mc3dsFile *scene, const std::string &scenePath)
{
    size_t count = 0;
    std::string first;
    std::map<std::string, size_t> names = CountNodeNames(scenePath);
    for (uint32_t i = 0; i < scene->objectCount && !names.empty(); ++i) {
        const Mc3dsObject &object = scene->objects[i];
        const auto nodes = names.find(object.name);
        if (nodes == names.end())
            continue;
        if (nodes->second > 1 && object.nodeId >= 0 && count++ == 0)
            first = InQuotes(object.name) + ", in " + std::to_string(nodes->second) + " nodes";
        names.erase(nodes); // another object of that name gets none of them
    }
    if (count != 0)
        ReportWarning("meshes placed by several nodes, of which only the last counts: " +
                      std::to_string(count) + "; the first: " + first);
}
