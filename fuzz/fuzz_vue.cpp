// Loads a .vue file from arbitrary bytes, with a scene of three frames.
//   cmake --preset strict-clang && cmake --build --preset strict-clang && cd build/strict-clang/fuzz
//   ./write_seeds corpus && ./fuzz_vue -dict=../../../fuzz/chunks.dict -timeout=20 corpus/vue

#include <cstdint>

#include "fuzz.h"
#include "seeds.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::string scene = FindSeed("Animated").scene;
    LoadAndWrite(scene.data(), scene.size(), data, size);
    return 0;
}
