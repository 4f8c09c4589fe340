// Files that open but can't be read or written. `--wrap` redirects the library's opening of scenes, fopen64
// and fflush of every object of this program to this file.

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

#include "frame/outcome.h"
#include "harness.h"
#include "seeds.h"

#include "frame/load_state.h"

extern "C" FILE *__real_fopen64(const char *path, const char *mode);
extern "C" FILE *__real__Z15Mc3dsOpenToReadPKcS0_(const char *path, const char *mode);

// Simulates the files whose path ends with suffix, unless suffix is empty.
static struct {
    std::string suffix, bytes;
    size_t position;
    int reads;                       // so far; each returns at most seven bytes
    int failing;                     // number of the first read that fails; all later ones fail too
    bool atEnd;                      // failing reads return end of file instead of an error
    bool isStuck = false;            // seeks fail once something has been read
    size_t badStart = 0, badEnd = 0; // bytes that can't be read
    bool isByteWise = false;         // each read returns one byte
} disk;

static ssize_t ReadPiece(void *, char *out, size_t size)
{
    if (++disk.reads >= disk.failing) {
        errno = EIO;
        return disk.atEnd ? 0 : -1;
    }
    const size_t left = disk.bytes.size() - std::min(disk.position, disk.bytes.size());
    size_t count = std::min({size, left, size_t{7}});
    if (disk.badEnd > disk.badStart)
        count = disk.isByteWise ? std::min(left, size_t{1}) : std::min(size, left);
    if (disk.position < disk.badEnd && disk.position + count > disk.badStart && count > 0) {
        errno = EIO;
        return -1;
    }
    std::memcpy(out, disk.bytes.data() + disk.bytes.size() - left, count);
    disk.position += count;
    return static_cast<ssize_t>(count);
}

static int MoveTo(void *, off64_t *offset, int whence)
{
    const size_t from = whence == SEEK_CUR ? disk.position : whence == SEEK_END ? disk.bytes.size() : 0;
    if (disk.isStuck && disk.reads > 0) {
        errno = ESPIPE;
        return -1;
    }
    *offset += static_cast<off64_t>(from);
    disk.position = static_cast<size_t>(*offset);
    return 0;
}

// Simulates the output files whose path ends with suffix, unless suffix is empty.
static struct {
    std::string suffix;
    Mc3dsFileStep failing; // this step fails
    int error;             // with this errno
    int writes;            // still allowed
    int writesAfter;       // number of writes after the first that failed
    FILE *stream;
} target;

static bool Fails(Mc3dsFileStep step)
{
    if (target.failing == step)
        errno = target.error;
    return target.failing == step;
}

static ssize_t WritePiece(void *, const char *, size_t size)
{
    if (target.failing != Mc3dsFileStep::Write || target.writes-- > 0)
        return static_cast<ssize_t>(size);
    target.writesAfter += target.writes < -1;
    errno = target.error;
    return 0;
}

static int EndTarget(void *)
{
    target.stream = nullptr;
    return Fails(Mc3dsFileStep::Close) ? -1 : 0;
}

extern "C" int __real_fflush(FILE *stream);

extern "C" int __wrap_fflush(FILE *stream)
{
    const bool isTarget = stream && stream == target.stream;
    return isTarget && Fails(Mc3dsFileStep::Flush) ? EOF : __real_fflush(stream);
}

extern "C" FILE *__wrap_fopen64(const char *path, const char *mode)
{
    if (mode[0] == 'w' && !target.suffix.empty() && std::string(path).ends_with(target.suffix)) {
        if (!Fails(Mc3dsFileStep::Open))
            target.stream = fopencookie(nullptr, mode, {nullptr, WritePiece, nullptr, EndTarget});
        return target.stream;
    }
    return __real_fopen64(path, mode);
}

extern "C" FILE *__wrap__Z15Mc3dsOpenToReadPKcS0_(const char *path, const char *mode)
{
    if (disk.suffix.empty() || !std::string(path).ends_with(disk.suffix))
        return __real__Z15Mc3dsOpenToReadPKcS0_(path, mode);
    return fopencookie(nullptr, mode, {ReadPiece, nullptr, MoveTo, nullptr});
}

using FileFailureTest = SceneTest;

TEST_F(FileFailureTest, AFileThatFailsInAnyReadEndsTheLoadAndHarmsNoOther)
{
    const Seed &seed = FindSeed("Animated");
    const auto loadFromDisk = [&](const std::string &suffix, int failing, bool atEnd) {
        disk = {suffix, suffix == "vue" ? seed.vue : seed.scene, 0, 0, failing, atEnd};
        const LoadedScene scene = Load("scene.3ds");
        const int expected = failing == INT32_MAX || atEnd ? 0 : EIO;
        if (scene && !suffix.empty()) {
            EXPECT_EQ(suffix == "3ds" ? scene->readError : scene->vueError, expected);
        }
        return TakeReportLines();
    };
    LoadBytes(seed.scene, seed.vue);
    const std::string whole = TakeReportLines();
    for (const std::string suffix : {"3ds", "vue"}) {
        EXPECT_EQ(loadFromDisk(suffix, INT32_MAX, false), whole) << "reads that come short do no harm";
        const int reads = disk.reads;
        EXPECT_GT(reads, 40);
        for (int failing = 1; failing < reads; ++failing)
            for (const bool atEnd : {false, true}) {
                SCOPED_TRACE(suffix + " fails in read " + std::to_string(failing));
                const std::string reports = loadFromDisk(suffix, failing, atEnd);
                const size_t first = reports.find("E0 File Error"), last = reports.rfind("E0 File Error");
                const bool told = first != std::string::npos;
                // An error in the length of a top-level chunk is reported as damage only: no number follows.
                const bool cut = reports.find("E1 Chunk header can't be read whole") != std::string::npos;
                // Nothing is lost if the failed bytes were only read ahead and never requested.
                if (atEnd)
                    EXPECT_FALSE(told) << reports;
                else if (suffix == "3ds")
                    EXPECT_TRUE(told || cut || reports == whole) << reports;
                else
                    EXPECT_TRUE(told && first == last) << reports;
                EXPECT_EQ(loadFromDisk("", 0, false), whole);
            }
    }
}

// Most disks fail a whole read if one of its bytes is bad. A loader that asks for one byte after the other
// meets only the bad bytes that it needs.
TEST_F(FileFailureTest, UnreadableBytesMatterOnlyWhereTheyAreRequested)
{
    using namespace chunks;
    const auto load = [](const std::string &suffix, const Bytes &bytes, size_t start, bool isByteWise) {
        disk = {suffix, bytes, 0, 0, INT32_MAX, false, false, start, start + 16, isByteWise};
        const LoadedScene scene = Load("scene.3ds");
        disk = {};
        const int error = !scene ? 0 : suffix == "vue" ? scene->vueError : scene->readError;
        return TakeReportLines() + std::to_string(error);
    };
    for (const Seed &seed : Seeds()) {
        if (seed.scene.size() > 20000)
            continue;
        SCOPED_TRACE(seed.name);
        LoadBytes(seed.scene, seed.vue);
        TakeReportLines();
        const size_t step = seed.scene.size() / 60 + 1;
        for (size_t start = 0; start < seed.scene.size(); start += step)
            EXPECT_EQ(load("3ds", seed.scene, start, false), load("3ds", seed.scene, start, true)) << start;
        for (size_t start = 0; start < seed.vue.size(); start += 7)
            EXPECT_EQ(load("vue", seed.vue, start, false), load("vue", seed.vue, start, true)) << start;
    }
    const Bytes skipped = Chunk(0x1234, {Bytes(200, ' ')}),
                mesh = NamedObject("A", {Mesh({Points({1, 2, 3})})});
    const Bytes scene = Scene({mesh, skipped, mesh});
    const std::string whole = load("3ds", scene + Bytes(100, ' '), SIZE_MAX - 16, false);
    EXPECT_EQ(load("3ds", scene + Bytes(100, ' '), scene.find(skipped) + 6, false), whole);
    EXPECT_EQ(load("3ds", scene + Bytes(100, ' '), scene.size() + 1, false), whole);
    EXPECT_NE(load("3ds", scene + Bytes(100, ' '), scene.find(skipped) + 5, false), whole);
}

TEST_F(FileFailureTest, AFileThatCannotBeSeekedIsReportedAsUnreadable)
{
    using namespace chunks;
    const Bytes mesh = NamedObject("A", {Mesh({})});
    disk = {"3ds", Scene({mesh, Chunk(0x1234, {Bytes(200000, ' ')}), mesh}), 0, 0, INT32_MAX, false, true};
    const LoadedScene scene = Load("scene.3ds");
    EXPECT_NE(TakeReportLines("E"), "");
    ASSERT_TRUE(scene);
    EXPECT_EQ(scene->readError, ESPIPE);
    disk = {};
}

// The number in which the file fails keeps the bytes that came and is filled up with 0xFF. Those after it are
// 0, each with a report.
TEST_F(FileFailureTest, AnArrayThatIsCutKeepsWhatCame)
{
    using namespace chunks;
    const std::vector<float> box = {1.5f, 2.5f, 3.5f, 4.5f, 5.5f, 6.5f};
    const Bytes bounds = Chunk(0xB014, {F32s(box)});
    const Bytes bytes =
        Scene({NamedObject("A", {Mesh({})})}, {Kfhdr(1), ObjectNode("A", noParent, {bounds})});
    const size_t start = bytes.find(bounds) + 6;
    size_t cuts = 0;
    for (int failing = 1; failing < 200; ++failing) {
        disk = {"3ds", bytes, 0, 0, failing, false};
        const LoadedScene scene = Load("scene.3ds");
        const std::string reports = TakeReportLines("E");
        if (disk.position <= start || disk.position >= start + 12)
            continue;
        ++cuts;
        ASSERT_TRUE(scene && scene->objectCount == 1);
        const size_t came = disk.position - start;
        for (size_t i = 0; i < 6; ++i) {
            const float got =
                i < 3 ? scene->objects[0].nodeBoundMin[i] : scene->objects[0].nodeBoundMax[i - 3];
            uint32_t wanted = std::bit_cast<uint32_t>(i <= came / 4 ? box[i] : 0.0f);
            if (i == came / 4)
                wanted |= UINT32_MAX << (8 * (came % 4));
            EXPECT_EQ(std::bit_cast<uint32_t>(got), wanted) << came << ' ' << i;
        }
        size_t told = 0;
        for (size_t at = reports.find("E0 File Error"); at != std::string::npos;
             at = reports.find("E0 File Error", at + 1))
            ++told;
        EXPECT_GE(told, 5 - came / 4);
    }
    EXPECT_GE(cuts, 4u);
    disk.suffix.clear();
}

TEST_F(FileFailureTest, AFolderIsNoSceneAndAPipeIsRefused)
{
    EXPECT_EQ(Load("."), nullptr);
    EXPECT_TRUE(Mc3dsGetOutcome()->isNoScene);
    EXPECT_EQ(TakeReportLines("E"), "E0 File Error\nE1 File is not a 3DS file\n");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string path = "/dev/fd/" + std::to_string(ends[0]);
    EXPECT_EQ(write(ends[1], FindSeed("BareEditor").scene.data(), 50), 50);
    EXPECT_EQ(Load(path), nullptr);
    EXPECT_EQ(Mc3dsGetOutcome()->openError, ESPIPE);
    EXPECT_EQ(TakeReportLines("E"), "E1 Unable to open file <" + path + ">\n");
    close(ends[0]);
    close(ends[1]);
    ASSERT_EQ(mkfifo("idle.3ds", 0600), 0); // nobody writes to it
    EXPECT_EQ(Load("idle.3ds"), nullptr);
    EXPECT_EQ(TakeReportLines("E"), "E1 Unable to open file <idle.3ds>\n");
    LoadBytes(FindSeed("Animated").scene);
    std::filesystem::remove("scene.vue");
    ASSERT_EQ(mkfifo("scene.vue", 0600), 0);
    TakeReportLines();
    const LoadedScene scene = Load("scene.3ds");
    ASSERT_TRUE(scene);
    EXPECT_EQ(scene->vueError, ESPIPE);
    EXPECT_EQ(scene->hasAnimation, 0u);
    EXPECT_EQ(TakeReportLines("E"), "");
    EXPECT_EQ(Load("missing.3ds"), nullptr);
    EXPECT_EQ(Mc3dsGetOutcome()->openError, ENOENT);
    EXPECT_EQ(Mc3dsLoadFile(nullptr), nullptr);
    EXPECT_EQ(Mc3dsGetOutcome()->openError, EINVAL);
}

TEST_F(FileFailureTest, AVueFileIsReadUpToTheSizeThatItHad)
{
    const Seed &seed = FindSeed("Animated");
    LoadBytes(seed.scene, seed.vue);
    std::filesystem::remove("scene.vue");
    std::filesystem::create_symlink("/dev/zero", "scene.vue"); // size 0, and no end
    LoadedScene scene = Load("scene.3ds");
    EXPECT_EQ(scene->hasAnimation, 1u);
    EXPECT_EQ(scene->vueError, 0);
    EXPECT_EQ(scene->fileSize, seed.scene.size());
    EXPECT_EQ(scene->rootSize, seed.scene.size());
    std::filesystem::remove("scene.vue");
    std::filesystem::create_directory("scene.vue");
    TakeReportLines();
    scene = Load("scene.3ds");
    EXPECT_EQ(scene->vueError, EISDIR);
    EXPECT_EQ(TakeReportLines("E"), "E0 File Error\n");
    std::filesystem::remove("scene.vue");
    std::filesystem::create_symlink("scene.vue", "scene.vue");
    scene = Load("scene.3ds");
    EXPECT_EQ(scene->hasAnimation, 0u);
    EXPECT_EQ(scene->vueError, ELOOP);
    EXPECT_EQ(TakeReportLines("E"), "");
}

TEST_F(FileFailureTest, TheFirstFailureOfAnOutputFileIsKept)
{
    using enum Mc3dsFileStep;
    constexpr uint32_t all = MC3DS_HEADER | MC3DS_ANIMATION;
    const struct {
        const char *suffix, *header;
        Mc3dsFileStep failing;
        int error, writes;
        uint32_t flags;
        Mc3dsFileStep step; // the expected outcome
        int expected;
        uint32_t file;
        const char *errors;
    } rows[] = {
        {"", "out.h", None, 0, 0, all, None, 0, 0, ""},
        {"out.mcx", "out.h", Open, EMFILE, 0, all, Open, EMFILE, 0, "E1 *\n"},
        {"out.anm", "out.h", Open, 0, 0, all, Open, EIO, 2, "E1 *\n"},
        {"out.h", "out.h", Write, ENOSPC, 0, all, Write, ENOSPC, 1, ""},
        {"out.mcx", "out.h", Write, EDQUOT, 1, all, Write, EDQUOT, 0, ""},
        {"out.mcx", "out.h", Write, 0, 2, all, Write, EIO, 0, ""},
        {"out.mcx", "no/out.h", Write, ENOSPC, 0, all, Write, ENOSPC, 0, "E1 *\n"},
        {"out.anm", "no/out.h", Write, ENOSPC, 0, all, Open, ENOENT, 1, "E1 *\n"},
        {"out.anm", "out.h", Flush, ENOSPC, 0, all, Flush, ENOSPC, 2, ""},
        {"out.h", "out.h", Close, EDQUOT, 0, all, Close, EDQUOT, 1, ""},
        {"1.mcx", "out.h", Close, EIO, 0, MC3DS_PER_OBJECT, Close, EIO, 1, ""},
        {"0.mcx", "out.h", Write, EFBIG, 0, MC3DS_PER_OBJECT, Write, EFBIG, 0, ""},
    };
    using namespace chunks;
    const std::vector<float> points(3 * 5000); // three blocks of text
    const Bytes mesh = Mesh({Points(points)});
    const LoadedScene scene =
        LoadBytes(Scene({NamedObject("A", {mesh}), NamedObject("B", {mesh})}, {Kfhdr(1)}), "frame 0\n");
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        target = {row.suffix, row.failing, row.error, row.writes, 0, nullptr};
        Mc3dsOptions options = DefaultOptions(row.flags);
        options.headerFile = row.header;
        TakeReports();
        errno = EBADF; // older than the call
        Output(scene, options);
        const Mc3dsOutcome &outcome = *Mc3dsGetOutcome();
        EXPECT_EQ(outcome.failedStep, row.step);
        EXPECT_EQ(outcome.failedError, row.expected);
        EXPECT_EQ(outcome.failedFile, row.file);
        EXPECT_FALSE(outcome.outOfMemory);
        EXPECT_EQ(target.writesAfter, 0);
        EXPECT_TRUE(LinesMatch(TakeReportLines("E"), row.errors));
    }
    target = {};
}
