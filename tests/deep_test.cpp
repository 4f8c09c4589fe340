// The deepest hierarchy that the file format can express.
#include <pthread.h>

#include <algorithm>

#include "harness.h"
#if defined(MC3DS_HAVE_MCLMODEL)
#include "mclmodel.h"
#endif

using namespace chunks;

struct DeepTest : SceneTest {};

constexpr int depth = 32769; // parent numbers have 15 bits; the root has no parent

static std::string Chain()
{
    Pieces nodes = {Kfhdr(1)};
    for (int i = 0; i < depth; ++i)
        nodes.push_back(ObjectNode("$$$DUMMY", static_cast<uint16_t>(i - 1), {Pivot(1, 0, 0)}));
    return Scene({}, {Join(nodes)});
}

static void BuildAndFree(const LoadedScene &scene, uint32_t flags, [[maybe_unused]] size_t clumps)
{
    Mc3dsOptions options = DefaultOptions(MC3DS_DIRECT | flags);
    McClump *clump = nullptr;
    Mc3dsOutput(scene.get(), &options, &clump);
    ASSERT_NE(clump, nullptr);
#if defined(MC3DS_HAVE_MCLMODEL)
    McModelView model = {};
    McGetModel(clump, &model);
    EXPECT_EQ(model.clumpCount, clumps);
    McFreeModel(clump);
    EXPECT_EQ(McErrorCount(), 0u) << McFirstError();
#endif
}

static void *LoadAndWrite(void *)
{
    const LoadedScene scene = LoadBytes(Chain(), "frame 0\ntransform Dummy0 1 0 0 0 1 0 0 0 1 0 0 0\n");
    EXPECT_EQ(scene->objectCount, static_cast<uint32_t>(depth));
    EXPECT_EQ(scene->rootCount, 1u);
    BuildAndFree(scene, 0, depth);
    BuildAndFree(scene, MC3DS_MERGED, 1);
    for (const uint32_t shape : {0u, MC3DS_FLAT}) {
        Mc3dsOptions options = DefaultOptions(MC3DS_ANIMATION | shape);
        options.outputFile = "no/script"; // can't be written; its indentation alone would be 20 GB
        Output(scene, options);
        const std::string frames = ReadFile("output/out.anm");
        EXPECT_EQ(std::count(frames.begin(), frames.end(), '\n'), shape == MC3DS_FLAT ? 2 : depth + 1);
    }
    EXPECT_EQ(TakeReportLines("E", 0), "");
    return nullptr;
}

TEST_F(DeepTest, AChainAsLongAsCanBeNeedsNoMoreThanAnOrdinaryStack)
{
    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, size_t{8} << 20), 0);
    ASSERT_EQ(pthread_create(&thread, &attributes, LoadAndWrite, nullptr), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}
