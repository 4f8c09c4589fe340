// Script, compiled C source and direct build must make the same calls.
#if !defined(_WIN32) // a Windows program can't override a library that another library imports
#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>

#include "command.h"
#include "harness.h"
#include "script.h"
#include "worked_scene.h"

using namespace chunks;

struct DirectTargets : SceneTest {};

using Calls = std::vector<std::vector<std::string>>;

// The calls of a script as the recorder prints them. Calls for the matrix itself have no line in a script.
static Calls ScriptCalls(const std::string &script)
{
    const std::map<std::string, int> values = {
        {"NULL", 0},   {"HS", 2},        {"EDITABLE", 4}, {"Null", 0},  {"Lit", 1},   {"Foreshorten", 2},
        {"Filter", 4}, {"WIREFRAME", 2}, {"SOLID", 4},    {"FACET", 1}, {"VERTEX", 2}};
    Calls calls = {{"CreateMatrix"}};
    for (const std::vector<std::string> &words : Statements(script)) {
        const std::string &name = words[0];
        if (name == "Transform") {
            for (size_t i = 0; i < 16; ++i)
                calls.push_back(
                    {"MatrixElement", "1", std::to_string(i / 4), std::to_string(i % 4), words.at(i + 1)});
            calls.push_back({"TransformCTM", "1"});
        } else if (name == "Hints" || name == "TextureModes" || name.ends_with("Sampling")) {
            int sum = 0;
            for (size_t i = 1; i < words.size(); ++i)
                sum += values.at(words[i]);
            calls.push_back({name, std::to_string(sum)});
        } else {
            calls.push_back(words);
        }
    }
    calls.push_back({"DestroyMatrix", "1"});
    return calls;
}

// Numbers may differ by half a unit of the sixth decimal plus the rounding to float.
static bool SameWord(const std::string &a, const std::string &b)
{
    double x = 0, y = 0;
    const char *const endA = a.data() + a.size(), *const endB = b.data() + b.size();
    if (std::from_chars(a.data(), endA, x).ptr != endA || std::from_chars(b.data(), endB, y).ptr != endB)
        return a == b;
    return std::fabs(x - y) <= 0.501e-6 + 1.2e-7 * std::fabs(x);
}

static testing::AssertionResult SameCalls(const Calls &calls, const Calls &others)
{
    for (size_t i = 0; i < std::max(calls.size(), others.size()); ++i) {
        const std::vector<std::string> a = i < calls.size() ? calls[i] : Calls::value_type(),
                                       b = i < others.size() ? others[i] : Calls::value_type();
        if (!std::equal(a.begin(), a.end(), b.begin(), b.end(), SameWord))
            return testing::AssertionFailure() << "call " << i << ": " << testing::PrintToString(a)
                                               << "\nagainst: " << testing::PrintToString(b);
    }
    return testing::AssertionSuccess();
}

static std::string Folder(const std::string &path)
{
    return Quoted(std::filesystem::path(path).parent_path().string());
}

static const std::string compile = Quoted(MC3DS_C_COMPILER) + " " MC3DS_C_FLAGS " -Wall -Wextra -Werror -I" +
                                   Quoted(MC3DS_MCL_INCLUDE_DIR) + " -I" + Quoted(MC3DS_INCLUDE_DIR) + " ";

// Builds the program direct, and recorder.o for the programs that run generated sources.
static void BuildRecorders()
{
    const std::string recorder = Quoted(MC3DS_GOLDEN_DIR "/../call_recorder.c");
    MustRun(compile + "-DMC3DS_FUNCTION=McBuildScene -c " + recorder + " -o recorder.o");
    MustRun(compile + "-c " + recorder + " -o direct.o");
    // Only clang's C++ compiler links the sanitizer runtime that a C++ library needs.
    MustRun(Quoted(MC3DS_CXX_COMPILER) + " " MC3DS_C_FLAGS " direct.o " + Quoted(MC3DS_LIBRARY) + " " +
            Quoted(MC3DS_MCL_LIBRARY) + " -Wl,-rpath," + Folder(MC3DS_LIBRARY) + " -Wl,-rpath," +
            Folder(MC3DS_MCL_LIBRARY) + " -o direct");
}

struct TargetRow {
    Bytes scene;
    uint32_t flags, surfaceFlags, hintFlags;
    float scale;
};

TEST_F(DirectTargets, AllThreeMakeTheSameCalls)
{
    BuildRecorders();
    ASSERT_FALSE(HasFailure());
    const Bytes odd = NamedMesh(
        "ODD", {Points({1.0f / 3, -0.0f, 1e-7f, 123456.789f, -7.7f, 0.1f, -1e5f, 2e-3f, 9.99999949f}),
                TexVerts({0.1f, -3.7f, 12.3456789f, 1e-6f, 40.4f, 0.3f}), Faces({0, 1, 2}),
                MeshMatrix({0.8f, 0.6f, 0, -0.6f, 0.8f, 0, 0.1f, 0.2f, 1.7f, -3.3f, 1e4f, 0.7f})});
    const Bytes roots = Scene({odd, WorkedMaterials(), WorkedMeshes()});
    const TargetRow rows[] = {
        {WorkedScene(), 0, MC3DS_TEXTURES, 0, 2},
        {WorkedScene(), MC3DS_ANIMATION | MC3DS_CENTRE, 0x1F & ~MC3DS_TEXTURE_EXTENSION, 3, 0.1f},
        {WorkedScene(), MC3DS_PROTOS | MC3DS_OPACITY, MC3DS_TEXTURES | MC3DS_TEXTURE_FORESHORTEN, 1, 1},
        {WorkedScene(), MC3DS_FLAT | MC3DS_ANIMATION | MC3DS_PROTOS, MC3DS_TEXTURE_LIT, 2, 3},
        {WorkedScene(), MC3DS_MERGED | MC3DS_FIT_SIZE, MC3DS_TEXTURES | MC3DS_TEXTURE_FILTER, 0, 1},
        {roots, 0, MC3DS_TEXTURES | MC3DS_TEXTURE_EXTENSION, 0, 1},
        {roots, MC3DS_MERGED | MC3DS_FLAT | MC3DS_CENTRE | MC3DS_FIT_SIZE, 0, 2, 1},
        {Scene({odd}, {ObjectNode("ODD", 5)}), MC3DS_MERGED, 0, 0, 1},
        {Scene({odd}, {ObjectNode("ODD", 5)}), 0, 0, 0, 1},
    };
    for (const TargetRow &row : rows) {
        SCOPED_TRACE(&row - rows);
        const LoadedScene scene = LoadBytes(row.scene, WorkedVue());
        Mc3dsOptions options = DefaultOptions(row.flags);
        options.surfaceFlags = row.surfaceFlags;
        options.hintFlags = row.hintFlags;
        options.scale = row.scale;
        options.size = 100;
        options.opacity = 0.3f;
        Output(scene, options);
        const std::string script = ReadFile("output/out.mcx");
        options.flags |= MC3DS_SOURCE;
        options.outputFile = "out.c";
        Output(scene, options);
        // The function declares the clump variable even if no clump ends.
        const bool ends = script.find("ClumpEnd") != std::string::npos;
        MustRun(compile + (ends ? "" : "-Wno-unused-variable ") + "output/out.c recorder.o -o built");
        const std::string direct = MustRun(MC3DS_EMULATOR " ./direct scene.3ds " + std::to_string(row.flags) +
                                           ' ' + std::to_string(row.surfaceFlags) + ' ' +
                                           std::to_string(row.hintFlags) + ' ' + std::to_string(row.scale));
        EXPECT_TRUE(SameCalls(Statements(direct), Statements(MustRun(MC3DS_EMULATOR " ./built"))));
        EXPECT_TRUE(SameCalls(Statements(direct.substr(0, direct.find("result"))), ScriptCalls(script)));
    }
}
#endif
