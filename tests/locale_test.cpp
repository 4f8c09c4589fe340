// The host's locale must not affect what the library reads or writes.
#include <bit>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "command.h"
#include "harness.h"
#include "worked_scene.h"

struct LocaleTest : SceneTest {
    void TearDown() override
    {
        std::setlocale(LC_ALL, "C");
        SceneTest::TearDown();
    }
};

// All output forms of the scene, and all reports of the load and of the outputs.
static std::string Everything()
{
    const LoadedScene scene = LoadBytes(WorkedScene(), WorkedVue());
    std::string all;
    for (const uint32_t flags : {MC3DS_HEADER | MC3DS_ANIMATION, MC3DS_SOURCE | MC3DS_FIT_SIZE | MC3DS_CENTRE,
                                 MC3DS_FLAT | MC3DS_ANIMATION, MC3DS_PER_OBJECT}) {
        Mc3dsOptions options = DefaultOptions(flags);
        options.scale = 0.37f;
        options.size = 123456.7f;
        all += Output(scene, options);
    }
    return all + TakeReportLines();
}

TEST_F(LocaleTest, ADecimalCommaOfTheHostChangesNothing)
{
    const std::string plain = Everything();
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
    EXPECT_EQ(Everything(), plain);
}
