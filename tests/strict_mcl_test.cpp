// Outputs and generated source compile with another Meshcaster header than the stand-in's.
#if !defined(_WIN32) // Windows programs may run on another system than their compiler
#include <regex>
#include <sstream>

#include "command.h"
#include "harness.h"
#include "worked_scene.h"

// Writes another Meshcaster header: its calls return a status, its constants are enumerators, and it has no
// extern "C", so callers in C++ must add it themselves.
struct StrictMcl : SceneTest {
    void SetUp() override
    {
        SceneTest::SetUp();
        std::string header = ReadFile(MC3DS_GOLDEN_DIR "/../../platform/mcl20/mclib.h");
        const std::pair<const char *, const char *> changes[] = {{"MCL_API void ", "int "},
                                                                 {"#define mcHS 2", "enum { mcHS = 2,"},
                                                                 {"#define mcVERTEX 2", "mcVERTEX = 2 };"},
                                                                 {"#define (mc[A-Z]+) ([0-9])", "$1 = $2,"},
                                                                 {"#ifdef __cplusplus", "#if 0"}};
        for (const auto &[old, other] : changes) {
            ASSERT_TRUE(Says(header, old));
            header = std::regex_replace(header, std::regex(old), other);
        }
        WriteFile("mclib.h", header);
    }
};

static std::string Compile(const char *compiler, const std::string &options)
{
    return Quoted(compiler) + " " MC3DS_C_FLAGS " -pedantic -Wall -Wextra -Werror -I. " + options;
}

TEST_F(StrictMcl, TheOutputsCompileAndCallFunctionsOfC)
{
    for (const auto &entry : std::filesystem::directory_iterator(MC3DS_GOLDEN_DIR "/../../src/output"))
        if (const std::string path = entry.path().string(); path.ends_with(".cpp"))
            MustRun(Compile(MC3DS_CXX_COMPILER, "-std=c++20 -c " + Quoted(path)));
    std::istringstream symbols(MustRun("nm -u statements.o"));
    int calls = 0;
    for (std::string kind, name; symbols >> kind >> name;)
        if (name.find("McSet") != std::string::npos || name.find("McModel") != std::string::npos) {
            EXPECT_TRUE(name.starts_with("Mc")) << name;
            ++calls;
        }
    EXPECT_EQ(calls, 13);
}

TEST_F(StrictMcl, GeneratedSourceCompiles)
{
    const LoadedScene scene = LoadBytes(WorkedScene(), WorkedVue());
    for (const uint32_t flags : {MC3DS_SOURCE, MC3DS_SOURCE | MC3DS_PROTOS | MC3DS_HEADER,
                                 MC3DS_SOURCE | MC3DS_FLAT | MC3DS_MERGED, MC3DS_SOURCE | MC3DS_PER_OBJECT})
        for (const uint32_t names : {0u, 3u}) {
            Mc3dsOptions options = DefaultOptions(flags);
            options.surfaceFlags = names != 0 ? 0x1Fu : 0;
            options.hintFlags = names;
            Output(scene, options);
            // A document declares the variable for texture co-ordinates even without textures.
            const char *file = (flags & MC3DS_PER_OBJECT) != 0 ? "output/o0.mcx" : "output/out.c";
            MustRun(Compile(MC3DS_C_COMPILER,
                            "-std=c99 -Wno-unused-variable -fsyntax-only -x c " + std::string(file)));
        }
}
#endif
