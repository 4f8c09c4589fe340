// A binary tree. The path to a name follows the bits of its hash, then, for equal hashes, those of the name.
// This limits the depth to 32 + 8 x 20 levels for all names without rebalancing.

#include <cassert>
#include <cstdlib>
#include <cstring>

#include "load_state.h"
#include "outcome.h"

constexpr uint32_t none = UINT32_MAX;

static uint32_t HashName(const char *name)
{
    uint32_t hash = 2166136261u;
    for (; *name != '\0'; ++name)
        hash = (hash ^ static_cast<unsigned char>(*name)) * 16777619u;
    return hash ^ hash >> 15;
}

// Names end in a NUL, so no bit after the end of both is ever read.
static unsigned PathBit(const char *name, uint32_t hash, unsigned level)
{
    if (level < 32)
        return hash >> level & 1;
    level -= 32;
    return static_cast<unsigned char>(name[level / 8]) >> level % 8 & 1;
}

// The link to the first record of that name, or the empty link where it belongs.
static uint32_t *FindLink(Mc3dsNames *names, const char *records, size_t size, const char *name,
                          uint32_t hash)
{
    uint32_t *link = &names->root;
    for (unsigned level = 0; *link != none; ++level) {
        Mc3dsNameNode &node = names->nodes[*link];
        if (node.hash == hash && std::strcmp(records + *link * size, name) == 0)
            break;
        link = &node.children[PathBit(name, hash, level)];
    }
    return link;
}

// Checks only by the newest indexed record that none was removed or renamed.
[[maybe_unused]] static bool IsIntact(const Mc3dsNames *names, const char *records, size_t size,
                                      uint32_t count)
{
    const uint32_t indexed = names->indexed;
    return indexed <= count &&
           (indexed == 0 || names->nodes[indexed - 1].hash == HashName(records + (indexed - 1) * size));
}

static bool Extend(Mc3dsNames *names, const char *records, size_t size, uint32_t count)
{
    assert(IsIntact(names, records, size, count));
    if (names->indexed == 0)
        names->root = none;
    if (count > names->capacity) {
        const uint64_t capacity = uint64_t{count} * 2;
        void *nodes = Mc3dsResize(names->nodes, capacity, sizeof(Mc3dsNameNode));
        if (!nodes) {
            Mc3dsNoteLackOfMemory();
            return false;
        }
        names->nodes = static_cast<Mc3dsNameNode *>(nodes);
        names->capacity = static_cast<uint32_t>(capacity);
    }
    for (uint32_t &i = names->indexed; i < count; ++i) {
        const char *name = records + i * size;
        const uint32_t hash = HashName(name);
        uint32_t *link = FindLink(names, records, size, name, hash);
        if (*link == none)
            *link = i;
        names->nodes[i] = {hash, *link, {none, none}};
    }
    return true;
}

// Look-ups mostly follow the order of the records or repeat the last name. Returns count if neither matches.
static uint32_t Guess(const Mc3dsNames *names, const char *records, size_t size, uint32_t count,
                      const char *name)
{
    for (uint32_t i = names->found; i < count && i - names->found <= 1; ++i)
        if (std::strcmp(records + i * size, name) == 0)
            return names->nodes[i].first;
    return count;
}

uint32_t Mc3dsFindName(Mc3dsNames *names, const void *records, size_t size, uint32_t count, const char *name)
{
    const auto *first = static_cast<const char *>(records);
    if (count == 0)
        return 0;
    uint32_t index = 0;
    if (Extend(names, first, size, count)) {
        index = Guess(names, first, size, count, name);
        if (index == count)
            index = *FindLink(names, first, size, name, HashName(name));
        if (index == none)
            return count;
        names->found = index;
        return index;
    }
    while (index < count && std::strcmp(first + index * size, name) != 0)
        ++index;
    return index;
}

void Mc3dsFreeNames(Mc3dsNames *names)
{
    std::free(names->nodes);
    *names = {};
}
