// The host's locale must not show in anything the library reads or writes.
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

// The scene's outputs of every form, with all reports of the load and of the outputs.
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
        // Of the byte order of the machine that the test is for. Fails where Debian's package locales is
        // lacking.
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
