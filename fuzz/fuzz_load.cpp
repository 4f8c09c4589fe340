// Loads a scene from arbitrary bytes and writes it in one form.
//   cmake --preset strict-clang && cmake --build --preset strict-clang && cd build/strict-clang/fuzz
//   ./write_seeds corpus && ./fuzz_load -dict=../../../fuzz/chunks.dict -timeout=20 corpus/load

#include <cstdint>

#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    LoadAndWrite(data, size, nullptr, 0);
    return 0;
}
