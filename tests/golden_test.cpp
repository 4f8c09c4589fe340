// Compares whole outputs of one scene byte by byte. MC3DS_UPDATE_GOLDEN=1 in the environment regenerates the
// golden files: review the difference before you commit it.
#include "harness.h"
#include "worked_scene.h"

struct GoldenTest : SceneTest {};

struct GoldenRow {
    const char *name;
    uint32_t flags, surfaceFlags, hintFlags;
};

// Outputs of the worked scene, in the order of the report log.
constexpr GoldenRow goldenRows[] = {
    {"script.mcx", 0, MC3DS_TEXTURES, 0},
    {"source.txt", MC3DS_SOURCE | MC3DS_HEADER | MC3DS_ANIMATION,
     MC3DS_TEXTURES | MC3DS_TEXTURE_LIT | MC3DS_TEXTURE_FILTER, MC3DS_HINT_HS | MC3DS_HINT_EDITABLE},
    {"protos.mcx", MC3DS_PROTOS, MC3DS_TEXTURES | MC3DS_TEXTURE_EXTENSION, MC3DS_HINT_EDITABLE},
    {"flat.txt", MC3DS_FLAT | MC3DS_ANIMATION | MC3DS_HEADER, 0, MC3DS_HINT_HS},
    {"merged.mcx", MC3DS_MERGED | MC3DS_CENTRE | MC3DS_FIT_SIZE | MC3DS_OPACITY, MC3DS_TEXTURE_FORESHORTEN,
     0},
    {"merged_source.txt", MC3DS_MERGED | MC3DS_FLAT | MC3DS_PROTOS | MC3DS_SOURCE, 0, 0},
    {"per_object.txt", MC3DS_PER_OBJECT | MC3DS_HEADER | MC3DS_ANIMATION | MC3DS_PROTOS | MC3DS_MERGED,
     MC3DS_TEXTURES, 0},
    {"per_object_source.txt", MC3DS_PER_OBJECT | MC3DS_SOURCE | MC3DS_CENTRE, MC3DS_TEXTURES, 0},
};

TEST_F(GoldenTest, TheWorkedSceneComesOutAsItAlwaysDid)
{
    const LoadedScene scene = LoadBytes(WorkedScene(), WorkedVue());
    ASSERT_TRUE(scene);
    for (const GoldenRow &row : goldenRows) {
        Mc3dsOptions options = DefaultOptions(row.flags);
        options.surfaceFlags = row.surfaceFlags;
        options.hintFlags = row.hintFlags;
        options.textureExtension = "bmp";
        options.scale = 2;
        options.size = 100;
        options.opacity = 0.25f;
        EXPECT_TRUE(MatchesGolden(Output(scene, options), row.name));
    }
    EXPECT_TRUE(MatchesGolden(TakeReportLines(), "reports.txt"));
}
