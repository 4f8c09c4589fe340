// Compares whole outputs of one scene byte by byte. MC3DS_UPDATE_GOLDEN=1 in the environment regenerates the
// golden files: review the difference before you commit it.
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "command.h"
#include "frame/number_text.h"
#include "harness.h"
#include "seeds.h"
#include "worked_scene.h"

struct GoldenTest : SceneTest {
    void TearDown() override
    {
        std::setlocale(LC_ALL, "C");
        SceneTest::TearDown();
    }
};

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

static void ExpectGoldenOutputs()
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

TEST_F(GoldenTest, TheWorkedSceneComesOutAsItAlwaysDid)
{
    ExpectGoldenOutputs();
}

// Together the seeds have every chunk that the reader knows, and many faults.
TEST_F(GoldenTest, EverySeedIsReportedAsItAlwaysWas)
{
    std::string reports;
    for (const Seed &seed : Seeds()) {
        LoadBytes(seed.scene, seed.vue);
        reports += "==> " + seed.name + '\n' + TakeLoadReports();
    }
    EXPECT_TRUE(MatchesGolden(reports, "seed_reports.txt"));
}

TEST_F(GoldenTest, ADecimalCommaOfTheHostChangesNothing)
{
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8") && !std::setlocale(LC_ALL, "German_Germany")) {
#if defined(_WIN32)
        FAIL() << "no German locale";
#else
        if (RunCommand("localedef --version").status != 0)
            GTEST_SKIP() << "no locale with decimal commas, and no localedef to make one";
        // In the byte order of the target machine. Fails without Debian's package locales.
        const char *order = std::endian::native == std::endian::big ? "--big-endian" : "--little-endian";
        MustRun(std::string("localedef ") + order + " -i de_DE -f UTF-8 ./de_DE.UTF-8");
        const std::string folder = std::filesystem::current_path().string();
        setenv("LOCPATH", folder.c_str(), 1);
        ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8"));
        unsetenv("LOCPATH");
#endif
    }
    char number[8];
    std::snprintf(number, sizeof number, "%.1f", 0.5);
    ASSERT_STREQ(number, "0,5");
    ExpectGoldenOutputs();
}

// Odd multiples of 1/128 are halfway between two numbers of six decimals; printf rounds to the even one.
TEST_F(GoldenTest, NumbersAreThoseOfPrintf)
{
    uint64_t pattern = 88172645463325252;
    for (int i = -20001; i < 20001; i += 2) {
        pattern ^= pattern << 13, pattern ^= pattern >> 7, pattern ^= pattern << 17;
        double any;
        std::memcpy(&any, &pattern, sizeof any);
        const double near = static_cast<double>(pattern >> 20) / 1e6; // about 2^24
        for (const double number : {i / 128.0, near, std::nextafter(i / 128.0, 1e9), std::fmod(any, 1e12)}) {
            if (!std::isfinite(number))
                continue;
            char ours[400], wide[400], theirs[800];
            *Mc3dsPutFixed(ours, number) = *Mc3dsPutFixedWide(wide, number) = '\0';
            std::snprintf(theirs, sizeof theirs, "%f %10.6f", number, number);
            ASSERT_EQ(ours + (std::string(" ") + wide), theirs);
            const auto narrow = static_cast<float>(number);
            *Mc3dsPutFixed(ours, narrow) = *Mc3dsPutFixedWide(wide, narrow) = '\0';
            std::snprintf(theirs, sizeof theirs, "%f %10.6f", static_cast<double>(narrow),
                          static_cast<double>(narrow));
            ASSERT_EQ(ours + (std::string(" ") + wide), theirs);
        }
    }
}
