// Scenes and .vue files damaged at every position, each in several ways. Every load must end, its scene must
// be valid, and every output must accept it.

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "check_reports.h"
#include "check_scene.h"
#include "harness.h"
#include "seeds.h"

namespace fs = std::filesystem;

static int level1Errors;

static void CountError(int32_t level, const char *text)
{
    EXPECT_EQ(NoteReport('E', level, text), "");
    level1Errors += level == 1;
}

static void CheckMessage(int32_t level, const char *text)
{
    EXPECT_EQ(NoteReport('M', level, text), "");
}

struct DamageTest : SceneTest, testing::WithParamInterface<std::string> {
    std::string base; // path of both files up to the extension, in /dev/shm if possible; a crash leaves them
    Seed seed;
    int cases = 0;
    size_t places = SIZE_MAX; // bytes, and chunks, of a file that are damaged at most

    void SetUp() override
    {
        SceneTest::SetUp();
        base = fs::current_path().filename().string() + '.';
        if (std::ofstream("/dev/shm/" + base + "3ds"))
            base = "/dev/shm/" + base;
        Mc3dsSetErrorCallback(CountError);
        Mc3dsSetMessageCallback(CheckMessage);
        const bool isSample = GetParam() == "windmill" || GetParam() == "orrery";
        const char *isLong = std::getenv("MC3DS_LONG");
        if (isSample && (isLong == nullptr || *isLong != '1')) // the whole samples take half an hour
            places = 200;
        const std::string sample = SamplePath(GetParam());
        seed =
            isSample ? Seed{"", ReadFile(sample + ".3DS"), ReadFile(sample + ".vue")} : FindSeed(GetParam());
        WriteFile(base + "3ds", seed.scene);
        if (!seed.vue.empty())
            WriteFile(base + "vue", seed.vue);
    }

    void TearDown() override
    {
        fs::remove(base + "3ds");
        fs::remove(base + "vue");
        SceneTest::TearDown();
    }

    // Loads the current files and writes every target.
    void Try(const char *damage, size_t at, uint32_t value)
    {
        SCOPED_TRACE(damage + std::to_string(at) + ": " + std::to_string(value));
        ++cases;
        level1Errors = 0;
        ForgetReports();
        Mc3dsFile *file = Mc3dsLoadFile((base + "3ds").c_str());
        EXPECT_EQ(CheckLoad(file), "");
        EXPECT_EQ(CheckScene(file), "");
        EXPECT_TRUE(file || level1Errors == 1) << "null without its report";
        for (const uint32_t flags : {MC3DS_ANIMATION | MC3DS_HEADER, MC3DS_SOURCE, MC3DS_DIRECT})
            EXPECT_EQ(CheckOutput(file, flags), "");
        Mc3dsUnloadFile(file);
    }

    void TryBytes(const std::string &sound, const std::string &path)
    {
        for (size_t at = 0; at < sound.size(); at += sound.size() / places + 1) {
            WriteFile(path, sound.substr(0, at));
            Try("cut at ", at, 0);
            const auto byte = static_cast<unsigned char>(sound[at]);
            for (const int value : {byte + 1, byte - 1, 0, 255}) {
                std::string bytes = sound;
                bytes[at] = static_cast<char>(value);
                WriteFile(path, bytes);
                Try("byte at ", at, static_cast<uint32_t>(value));
            }
        }
        if (!sound.empty())
            WriteFile(path, sound);
    }

    void TryNumber(size_t at, int width, size_t onePast)
    {
        for (const uint32_t value : {0u, 5u, 6u, static_cast<uint32_t>(onePast), 0x80000000u, 0xFFFFFFFFu}) {
            std::string bytes = seed.scene;
            PutNumberAt(bytes, at, width, width == 2 && value > 0xFFFF ? value >> 16 : value);
            WriteFile(base + "3ds", bytes);
            Try("number at ", at, value);
        }
    }
};

TEST_P(DamageTest, EveryDamagedFileEndsInASoundSceneOrInNone)
{
    Try("whole", 0, 0);
    const std::vector<ChunkPlace> chunks = FindChunks(seed.scene);
    for (size_t i = 0; i < chunks.size(); i += chunks.size() / places + 1) {
        const ChunkPlace &chunk = chunks[i], &parent = chunks[chunk.parent];
        TryNumber(chunk.start + 2, 4, parent.start + parent.size - chunk.start + 1);
        if (chunk.countAt != 0)
            TryNumber(chunk.countAt, chunk.countWidth,
                      NumberAt(seed.scene, chunk.countAt, chunk.countWidth) + 1);
    }
    TryBytes(seed.scene, base + "3ds");
    TryBytes(seed.vue, base + "vue");
    RecordProperty("cases", cases);
    std::printf("%d cases\n", cases);
}

static std::vector<std::string> Names()
{
    std::vector<std::string> names = {"windmill", "orrery"};
    for (const Seed &seed : Seeds())
        names.push_back(seed.name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Scenes, DamageTest, testing::ValuesIn(Names()),
                         [](const auto &test) { return test.param; });
