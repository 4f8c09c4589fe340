// Changes one chunk and corrects the lengths of its parents, so that the reader still reaches all later
// chunks. About one mutation in five corrects nothing.

#include <cstddef>
#include <cstring>
#include <random>
#include <string>

#include "seeds.h"

extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t maxSize);

// Replaces count bytes of a chunk and adds the difference to the lengths of the chunk and its parents.
static void Replace(std::string &scene, const std::vector<ChunkPlace> &chunks, size_t chunk, size_t at,
                    size_t count, const std::string &bytes)
{
    for (size_t i = chunk;; i = chunks[i].parent) {
        const size_t length = chunks[i].size + bytes.size() - count;
        PutNumberAt(scene, chunks[i].start + 2, 4, static_cast<uint32_t>(length));
        if (i == 0)
            break;
    }
    scene.replace(at, count, bytes);
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize, unsigned seed)
{
    std::minstd_rand random(seed);
    const auto pick = [&](size_t count) { return static_cast<size_t>(random()) % count; };
    std::string scene(reinterpret_cast<const char *>(data), size);
    const std::vector<ChunkPlace> chunks = FindChunks(scene);
    if (chunks.size() < 2 || pick(5) == 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    const size_t chosen = 1 + pick(chunks.size() - 1), other = 1 + pick(chunks.size() - 1);
    const ChunkPlace place = chunks[chosen], source = chunks[other];
    const std::string copy = scene.substr(source.start, source.size);
    switch (pick(5)) {
    case 0: Replace(scene, chunks, place.parent, place.start, place.size, ""); break;
    case 1: Replace(scene, chunks, place.parent, place.start, place.size, copy); break;
    case 2: Replace(scene, chunks, place.parent, place.start, 0, copy); break;
    case 3: scene.replace(place.start, 2, copy, 0, 2); break;
    default: {
        std::string content = scene.substr(place.start + 6, place.size - 6);
        const size_t length = content.size();
        content.resize(length + 64);
        content.resize(LLVMFuzzerMutate(reinterpret_cast<uint8_t *>(content.data()), length, length + 64));
        Replace(scene, chunks, chosen, place.start + 6, length, content);
    }
    }
    if (scene.size() > maxSize)
        return LLVMFuzzerMutate(data, size, maxSize);
    std::memcpy(data, scene.data(), scene.size());
    return scene.size();
}
