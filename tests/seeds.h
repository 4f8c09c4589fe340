// Small scenes that together hold every chunk the reader knows, sound ones and odd ones, and the places in a
// scene where damage hurts most.
#ifndef MC3DS_TESTS_SEEDS_H
#define MC3DS_TESTS_SEEDS_H

#include <cstdint>
#include <string>
#include <vector>

struct Seed {
    std::string name;
    std::string scene;
    std::string vue; // empty: none lies beside the scene
};

const std::vector<Seed> &Seeds();
const Seed &FindSeed(const std::string &name);

struct ChunkPlace {
    size_t start, size; // of the whole chunk, no further than its parent's end
    size_t parent;      // index into the list; the root has its own
    size_t countAt;     // where its 16- or 32-bit count stands; 0 for a chunk without
    int countWidth;     // bytes
};

// All chunks of a scene, each behind its parent; the reader's own rules for where children begin.
std::vector<ChunkPlace> FindChunks(const std::string &scene);

uint32_t NumberAt(const std::string &bytes, size_t at, int width);
void PutNumberAt(std::string &bytes, size_t at, int width, uint32_t number);

#endif
