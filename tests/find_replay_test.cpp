// Replays files that once did harm, and some similar ones. A .3DS file is loaded alone, a .vue file with a
// scene that has frames.

#include "check_scene.h"
#include "harness.h"
#include "seeds.h"

namespace fs = std::filesystem;

static const fs::path findsFolder = fs::absolute(MC3DS_FINDS_DIR);

using FindReplayTest = SceneTest;

TEST_F(FindReplayTest, WhatFuzzingFoundStaysHarmless)
{
    int finds = 0;
    for (const fs::directory_entry &find : fs::directory_iterator(findsFolder)) {
        SCOPED_TRACE(find.path().filename().string());
        const std::string bytes = ReadFile(find.path());
        const bool vue = find.path().extension() == ".vue";
        const LoadedScene scene = LoadBytes(vue ? FindSeed("Animated").scene : bytes, vue ? bytes : "");
        for (const uint32_t flags : allOutputs)
            EXPECT_EQ(CheckOutput(scene.get(), flags), "");
        ++finds;
    }
    EXPECT_GT(finds, 0);
}
