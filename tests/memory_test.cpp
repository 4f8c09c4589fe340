// Every allocation of the library fails in turn, alone or with all later ones. `--wrap` redirects malloc,
// calloc, realloc and free of every object of this program, the library included, to the functions below.

#include <cstdio>
#include <cstdlib>
#include <set>

#include "check_scene.h"
#include "frame/load_state.h"
#include "frame/outcome.h"
#include "harness.h"
#include "seeds.h"
#if defined(MC3DS_HAVE_MCLMODEL)
#include "mclmodel.h"
#endif

static struct {
    bool counting;
    int allocations; // so far
    int failing;     // number of the first that fails
    bool onward;     // all later ones fail as well
    int live;        // blocks handed out and not freed
    bool refusesNew; // operator new too
} memory;

static bool IsRefused()
{
    if (!memory.counting)
        return false;
    ++memory.allocations;
    return memory.allocations == memory.failing || (memory.onward && memory.allocations > memory.failing);
}

extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);

static void *Counted(void *block)
{
    memory.live += block != nullptr;
    return block;
}

void *__wrap_malloc(size_t size)
{
    return IsRefused() ? nullptr : Counted(__real_malloc(size));
}

void *__wrap_calloc(size_t count, size_t size)
{
    return IsRefused() ? nullptr : Counted(__real_calloc(count, size));
}

void *__wrap_realloc(void *block, size_t size)
{
    if (IsRefused())
        return nullptr;
    return block ? __real_realloc(block, size) : Counted(__real_malloc(size));
}

void __wrap_free(void *block)
{
    memory.live -= block != nullptr;
    __real_free(block);
}
}

#if SIZE_MAX > UINT32_MAX // operator new has another symbol where sizes have 32 bits
constexpr bool newIsRefused = true;

extern "C" void *__real__Znwm(size_t size);

extern "C" void *__wrap__Znwm(size_t size)
{
    return memory.refusesNew && IsRefused() ? throw std::bad_alloc() : __real__Znwm(size);
}
#else
constexpr bool newIsRefused = false;
#endif

static int refused; // runs with a refused allocation in the current test

// Runs work and refuses allocation number failing. False if work needs fewer allocations.
template <class Work>
static bool RunShortOfMemory(int failing, bool onward, Work work)
{
    memory = {true, 0, failing, onward, memory.live, memory.refusesNew};
    work();
    memory.counting = false;
    refused += memory.allocations >= failing;
    return memory.allocations >= failing;
}

struct MemoryTest : SceneTest, testing::WithParamInterface<bool> {
    void SetUp() override
    {
        SceneTest::SetUp();
        refused = 0;
    }

    void TearDown() override
    {
        std::printf("%d runs short of memory\n", refused);
        SceneTest::TearDown();
    }
};

// The files of an output; for a direct build, the fault found in its model.
static std::string WriteAll(const LoadedScene &scene, uint32_t flags)
{
    Mc3dsOptions options = DefaultOptions(flags);
    return (flags & MC3DS_DIRECT) != 0 ? CheckOutput(scene.get(), flags) : Output(scene, options);
}

static std::string Describe(const LoadedScene &scene)
{
    uint32_t keys = 0;
    for (uint32_t i = 0; scene && i < scene->objectCount; ++i)
        keys += scene->objects[i].positionKeyCount + scene->objects[i].rotationKeyCount +
                scene->objects[i].scaleKeyCount;
    return WriteAll(scene, MC3DS_ANIMATION) + std::to_string(keys) + " keys";
}

TEST(NamesWithoutMemory, AreComparedOneByOne)
{
    const char records[3][4] = {"A", "B", "B"};
    const std::pair<const char *, uint32_t> rows[] = {{"A", 0}, {"B", 1}, {"C", 3}};
    for (const auto &row : rows) {
        Mc3dsNames names = {};
        uint32_t found = UINT32_MAX;
        EXPECT_TRUE(
            RunShortOfMemory(1, true, [&] { found = Mc3dsFindName(&names, records, 4, 3, row.first); }));
        EXPECT_EQ(found, row.second) << row.first;
    }
}

TEST_P(MemoryTest, ALoadIsWholeOrTellsOnceWhatHasNoMemory)
{
    std::set<std::string> heard;
    for (const char *name : {"BareEditor", "LongNames", "Replacements", "Animated", "Hidden"}) {
        const std::string whole = Describe(LoadBytes(FindSeed(name).scene, FindSeed(name).vue));
        for (int failing = 1;; ++failing) {
            SCOPED_TRACE(std::string(name) + ", allocation " + std::to_string(failing));
            TakeReports();
            const int liveBefore = memory.live;
            LoadedScene scene;
            if (!RunShortOfMemory(failing, GetParam(), [&] { scene = Load("scene.3ds"); }))
                break;
            EXPECT_TRUE(Mc3dsGetOutcome()->outOfMemory);
            size_t told = 0;
            for (const Report &report : TakeReports())
                if (report.channel == 'E' && report.level == 0) {
                    ++told;
                    heard.insert(report.text);
                }
            EXPECT_TRUE(told == 1 || GetParam() || (told == 0 && (!scene || Describe(scene) == whole)));
            EXPECT_EQ(scene == nullptr, failing <= 3);
            EXPECT_EQ(told == 0 && !scene, failing <= 2) << "without a report";
            scene.reset();
            EXPECT_EQ(memory.live, liveBefore);
            const LoadedScene next = Load("scene.3ds");
            EXPECT_FALSE(Mc3dsGetOutcome()->outOfMemory);
            EXPECT_EQ(Describe(next), whole) << "the next load";
        }
    }
    EXPECT_EQ(heard, (std::set<std::string>{
                         "malloc failed allocating global material", "malloc failed allocating global object",
                         "malloc failed allocating Material Group", "Out of memory allocating vertex array",
                         "Out of memory allocating faces", "Out of memory allocating keys",
                         "Out of memory allocating frames"}));
}

TEST_P(MemoryTest, AnOutputIsWholeOrTellsWhatIsMissingOrWritesNothing)
{
    for (const char *name : {"Textures", "Materials", "Deep"})
        for (const uint32_t flags :
             {MC3DS_CENTRE, MC3DS_SOURCE, MC3DS_ANIMATION | MC3DS_HEADER, MC3DS_PER_OBJECT, MC3DS_DIRECT}) {
            const LoadedScene scene = LoadBytes(FindSeed(name).scene, FindSeed(name).vue);
            TakeReports();
            const std::string whole = WriteAll(scene, flags), wholeReports = TakeReportLines("E", 0);
            for (int failing = 1;; ++failing) {
                SCOPED_TRACE(std::string(name) + ", flags " + std::to_string(flags) + ", allocation " +
                             std::to_string(failing));
                const int liveBefore = memory.live;
                std::string text;
                if (!RunShortOfMemory(failing, GetParam(), [&] { text = WriteAll(scene, flags); }))
                    break;
                const bool noted = Mc3dsGetOutcome()->outOfMemory;
                const std::string lacking = TakeReportLines("E", 0);
                const bool told = lacking != wholeReports;
                EXPECT_LE(CountOf(lacking, "\n") - CountOf(lacking, "E0 Out of memory for the name"), 1u)
                    << lacking;
                const bool modelLacks = text.ends_with(": out of memory"); // as the Meshcaster library says
                EXPECT_TRUE(modelLacks || CountOf(text, "Begin") == CountOf(text, "End"));
                EXPECT_TRUE(told || text == whole || modelLacks) << text;
                EXPECT_TRUE(noted || (flags & MC3DS_DIRECT)) << lacking;
                EXPECT_TRUE(noted || !told) << lacking;
                EXPECT_EQ(text.empty() || modelLacks, whole.empty() || failing == 1);
                EXPECT_EQ(memory.live, liveBefore);
                EXPECT_EQ(CheckScene(scene.get()), "");
                EXPECT_EQ(WriteAll(scene, flags), whole) << "the next output";
                EXPECT_FALSE(Mc3dsGetOutcome()->outOfMemory);
                TakeReports();
            }
        }
}

#if defined(MC3DS_HAVE_MCLMODEL)
TEST(ModelsWithoutMemory, NameTheCallThatHadNone)
{
    std::set<std::string> heard;
    const auto build = [] {
        McModelBegin();
        McClump *clump = nullptr;
        McClumpBegin();
        McTransformBegin();
        for (int i = 0; i < 3; ++i)
            McVertex(1, 2, 3);
        McSetSurfaceTexture("A");
        McTriangle(1, 2, 3);
        McTransformEnd();
        McProtoInstance("P");
        McClumpEnd(&clump);
        McModelEnd();
        McModelView model;
        McClumpView view;
        view.geometry.faceCount = 0;
        if (McGetModel(clump, &model))
            McGetClump(clump, &view);
        for (size_t i = 0; i < view.geometry.faceCount; ++i)
            EXPECT_LT(static_cast<size_t>(view.geometry.faces[i].surface), model.surfaceCount);
        McFreeModel(clump);
    };
    memory.refusesNew = true;
    for (int failing = 1;; ++failing) {
        McClearErrors();
        const int liveBefore = memory.live;
        if (!RunShortOfMemory(failing, false, build))
            break;
        EXPECT_EQ(memory.live, liveBefore);
        if (McErrorCount() != 0) // memory that isn't given back is no error
            heard.insert(McFirstError());
    }
    memory.refusesNew = false;
    McClearErrors();
    std::set<std::string> expected = {"McModelBegin: out of memory",     "McClumpBegin: out of memory",
                                      "McTransformBegin: out of memory", "McVertex: out of memory",
                                      "McTriangle: out of memory",       "McProtoInstance: out of memory"};
    if (newIsRefused)
        expected.insert("McSetSurfaceTexture: out of memory");
    else
        expected.erase("McProtoInstance: out of memory"), heard.erase("McProtoInstance: out of memory");
    EXPECT_EQ(heard, expected);
}
#endif

INSTANTIATE_TEST_SUITE_P(Once, MemoryTest, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(FromThenOn, MemoryTest, testing::Values(true));
