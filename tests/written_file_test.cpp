// The program's check that the files written by the library are complete.
#if defined(MC3DS_HOST_PARTS)

#include <algorithm>

#include "../host/files/files.h"
#include "harness.h"

using namespace chunks;

struct WrittenFileTest : SceneTest {};

TEST_F(WrittenFileTest, NoFileThatIsCutAnywhereCountsAsWhole)
{
    const Pieces mesh = {Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), Faces({0, 1, 2})})};
    const LoadedScene scene = LoadBytes(Scene({NamedObject("BOX", mesh), NamedObject("LID", mesh)},
                                              {Kfhdr(3), ObjectNode("BOX", noParent), ObjectNode("LID", 0)}),
                                        "frame 0 transform BOX 1 0 0 0 1 0 0 0 1 7 0 0");
    ASSERT_TRUE(scene);
    const struct {
        TextKind kind;
        uint32_t flags;
        const char *name;
    } rows[] = {
        {TextKind::Script, 0, "out.mcx"},
        {TextKind::Source, MC3DS_SOURCE, "out.c"},
        {TextKind::Script, MC3DS_PER_OBJECT, "out1.mcx"},
        {TextKind::Source, MC3DS_PER_OBJECT | MC3DS_SOURCE, "o0.mcx"},
        {TextKind::Header, MC3DS_HEADER, "out.h"},
        {TextKind::Animation, MC3DS_ANIMATION, "out.anm"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        Mc3dsOptions options = DefaultOptions(row.flags);
        Mc3dsOutput(scene.get(), &options, nullptr);
        const OutputFile file = {row.kind, row.name, row.name, false, row.name};
        const std::string text = ReadFile(row.name);
        ASSERT_GT(text.size(), 100u);
        EXPECT_TRUE(IsWhole(file, scene.get()));
        // Cuts at each of the last 150 bytes, and before those at every 29th.
        for (size_t length = text.size(); length > 0;) {
            length -= length + 150 > text.size() ? 1 : std::min<size_t>(length, 29);
            std::filesystem::resize_file(row.name, length);
            EXPECT_FALSE(IsWhole(file, scene.get())) << length;
        }
        std::filesystem::remove(row.name);
        EXPECT_FALSE(IsWhole(file, scene.get()));
    }
}

#endif
