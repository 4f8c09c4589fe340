// Small valid and odd scenes that together contain every chunk the reader knows, and the positions in a scene
// where damage has most effect.
#ifndef MC3DS_TESTS_SEEDS_H
#define MC3DS_TESTS_SEEDS_H

#include <cstdint>
#include <string>
#include <vector>

struct Seed {
    std::string name;
    std::string scene;
    std::string vue; // empty: no .vue file
};

const std::vector<Seed> &Seeds();
const Seed &FindSeed(const std::string &name);

struct ChunkPlace {
    size_t start, size; // of the whole chunk, cut at its parent's end
    size_t parent;      // index into the list; the root is its own parent
    size_t countAt;     // position of its 16- or 32-bit count; 0: no count
    int countWidth;     // bytes
};

// All chunks of a scene, each after its parent. Children begin where the reader looks for them.
std::vector<ChunkPlace> FindChunks(const std::string &scene);

uint32_t NumberAt(const std::string &bytes, size_t at, int width);
void PutNumberAt(std::string &bytes, size_t at, int width, uint32_t number);

#endif
