// The library as its hosts see it: headers, exports, callbacks.
#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <thread>

#if !defined(_WIN32)
#include <pthread.h>
#endif
#if defined(__SANITIZE_ADDRESS__) // gcc
#define MC3DS_LEAKS_ARE_CHECKED
#elif defined(__has_feature) // clang
#if __has_feature(address_sanitizer)
#define MC3DS_LEAKS_ARE_CHECKED
#endif
#endif
#if defined(MC3DS_LEAKS_ARE_CHECKED)
#include <sanitizer/lsan_interface.h>
#endif

#include "command.h"
#include "harness.h"
#include "worked_scene.h"

struct PublicFace : SceneTest {};

#if !defined(_WIN32) // Windows programs may run on another system than their compiler
TEST_F(PublicFace, TheHeadersCompileAloneAndTogetherInBothLanguages)
{
    WriteFile("alone.c", "#include <mcl3ds20.h>\n#include <mcl3ds20.h>\nMc3dsOptions options;\n");
    WriteFile("together.c", "#include <mclmodel.h>\n#include <mcl3ds20.h>\nMcClump *clump;\n"
                            "Mc3dsCallback f(Mc3dsFile *s, Mc3dsOptions *o);\n"
                            "Mc3dsCallback f(Mc3dsFile *s, Mc3dsOptions *o) {\n"
                            "Mc3dsOutput(s, o, &clump); return Mc3dsSetErrorCallback(0); }\n");
    const std::string strict = " -pedantic -Wall -Wextra -Werror -fsyntax-only -I" +
                               Quoted(MC3DS_INCLUDE_DIR) + " -I" + Quoted(MC3DS_MCL_INCLUDE_DIR) + " ";
    for (const char *source : {"alone.c", "together.c"}) {
        MustRun(Quoted(MC3DS_C_COMPILER) + " -std=c99" + strict + source);
        MustRun(Quoted(MC3DS_CXX_COMPILER) + " -std=c++17 -x c++" + strict + source);
    }
}

TEST_F(PublicFace, TheLibraryExportsSixNamesAndNothingElse)
{
    std::istringstream symbols(MustRun("nm -D --defined-only " + Quoted(MC3DS_LIBRARY)));
    std::vector<std::string> names;
    for (std::string address, kind, name; symbols >> address >> kind >> name;)
        names.push_back(kind + " " + name);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"T Mc3dsGetVersion", "T Mc3dsLoadFile", "T Mc3dsOutput",
                                               "T Mc3dsSetErrorCallback", "T Mc3dsSetMessageCallback",
                                               "T Mc3dsUnloadFile"}));
}
#endif

static int heard;

static void Throw(int32_t, const char *)
{
    ++heard;
    throw std::runtime_error("a host that throws");
}

TEST_F(PublicFace, ACallbackMayThrowOrBeMissing)
{
    const auto work = [](Mc3dsCallback callback) {
        Mc3dsSetErrorCallback(callback);
        Mc3dsSetMessageCallback(callback);
        Mc3dsOptions options = DefaultOptions(MC3DS_HEADER | MC3DS_ANIMATION);
        EXPECT_FALSE(Load("missing.3ds"));
        return Output(LoadBytes(WorkedScene(), WorkedVue()), options);
    };
    const Mc3dsCallback silent = [](int32_t, const char *) { ++heard; };
    const std::string written = work(silent);
    EXPECT_GT(std::exchange(heard, 0), 80);
    EXPECT_EQ(work(Throw), written);
    const int heardThrowing = std::exchange(heard, 0);
    EXPECT_EQ(work(nullptr), written);
    EXPECT_EQ(heard, 0);
    work(silent);
    EXPECT_EQ(heardThrowing, heard);
}

#if !defined(_WIN32)
// Runs work in a thread that ends at its first report. True if the thread ended there.
template <class Work>
static bool ThreadEndsInside(Work work)
{
    bool wentOn = false;
    std::thread([&] {
#if defined(MC3DS_LEAKS_ARE_CHECKED)
        const __lsan::ScopedDisabler whatTheCallHeldIsLost;
#endif
        const Mc3dsCallback before =
            Mc3dsSetMessageCallback([](int32_t, const char *) { pthread_exit(nullptr); });
        work();
        Mc3dsSetMessageCallback(before);
        wentOn = true;
    }).join();
    return !wentOn;
}

TEST_F(PublicFace, AThreadMayEndInACallback)
{
    const LoadedScene scene = LoadBytes(WorkedScene());
    Mc3dsOptions options = DefaultOptions();
    const std::string expected = Output(scene, options);
    EXPECT_TRUE(ThreadEndsInside([] { Mc3dsLoadFile("scene.3ds"); }));
    EXPECT_TRUE(ThreadEndsInside([&] { Mc3dsOutput(scene.get(), &options, nullptr); }));
    Mc3dsSetMessageCallback(nullptr);
    EXPECT_EQ(Output(LoadBytes(WorkedScene()), options), expected);
}
#endif

TEST_F(PublicFace, SettersGiveBackWhatWasSetBeforeEachForItself)
{
    Mc3dsCallback error = [](int32_t, const char *) {},
                  message = [](int32_t level, const char *) { heard = level; };
    Mc3dsSetErrorCallback(nullptr);
    Mc3dsSetMessageCallback(nullptr);
    EXPECT_EQ(Mc3dsSetErrorCallback(error), nullptr);
    EXPECT_EQ(Mc3dsSetMessageCallback(message), nullptr);
    EXPECT_EQ(Mc3dsSetErrorCallback(nullptr), error);
    EXPECT_EQ(Mc3dsSetMessageCallback(nullptr), message);
    EXPECT_STREQ(Mc3dsGetVersion(), "3.0");
    EXPECT_EQ(Mc3dsGetVersion(), Mc3dsGetVersion());
}

TEST_F(PublicFace, AFileThatCannotBeOpenedIsToldOnceAndALongPathIsCut)
{
    for (const std::string &path : {std::string("missing.3ds"), std::string(300, 'x')}) {
        EXPECT_FALSE(Load(path));
        EXPECT_EQ(TakeReportLines(), "E1 " + ("Unable to open file <" + path + '>').substr(0, 255) + "\n");
    }
    Mc3dsUnloadFile(nullptr);
    EXPECT_EQ(Mc3dsLoadFile(nullptr), nullptr);
    EXPECT_EQ(TakeReportLines(), "");
}
