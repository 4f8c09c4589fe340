// write_seeds [FOLDER]: writes the scenes and .vue files of tests/seeds.cpp to FOLDER/load and FOLDER/vue.
// The default is the current folder.

#include <filesystem>
#include <fstream>

#include "seeds.h"

namespace fs = std::filesystem;

int main(int count, char **arguments)
{
    const fs::path folder = count > 1 ? arguments[1] : ".";
    fs::create_directories(folder / "load");
    fs::create_directories(folder / "vue");
    for (const Seed &seed : Seeds()) {
        std::ofstream(folder / "load" / seed.name, std::ios::binary) << seed.scene;
        if (!seed.vue.empty())
            std::ofstream(folder / "vue" / seed.name, std::ios::binary) << seed.vue;
    }
    return 0;
}
