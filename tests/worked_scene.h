// A scene with a little of every feature and numbers that can be checked by hand. The tree is BASE PLATE,
// Dummy0, ARM, TIP, each the parent of the next; the order of objects is BASE PLATE, ARM, TIP, Dummy0.
#ifndef MC3DS_TESTS_WORKED_SCENE_H
#define MC3DS_TESTS_WORKED_SCENE_H

#include "chunks.h"

inline chunks::Bytes WorkedMaterials()
{
    using namespace chunks;
    const Bytes black = Colour24(0, 0, 0), white = Colour24(255, 255, 255), red = Colour24(255, 0, 0);
    const Bytes half = Chunk(0x0010, {F32s({0.5f, 0.5f, 0.5f})});
    return Join({Material("RED", {Finish(red, red, white, 1)}),
                 Material("GLASS", {Finish(black, Colour24(0, 0, 255), white, 3, 90, 50),
                                    Map(0xA200, "BRICK.GIF"), Map(0xA210, "MASK.GIF")}),
                 Material("CHROME", {Finish(half, half, white, 4), Map(0xA220, "SKY.CEL")}),
                 Material("WIRE", {Finish(half, black, black, 0), Map(0xA200, "WOOD")}),
                 Material("CLAY", {Finish(half, half, black, 2)}),
                 Material("DULL", {Finish(half, half, half, 9)})});
}

inline chunks::Bytes WorkedMeshes()
{
    using namespace chunks;
    const Bytes plate =
        Mesh({Points({0, 0, 0, 20, 0, 0, 20, 10, 0, 0, 10, 0}), TexVerts({0, 0, 1, 0, 1, 1, 0, 1}),
              Faces({0, 1, 2, 0, 2, 3, 3, 1, 0},
                    {MaterialGroup("RED", {0}), MaterialGroup("GLASS", {1}), MaterialGroup("CLAY", {2})}),
              MeshMatrix({1, 0, 0, 0, 1, 0, 0, 0, 1, 10, 5, 0})});
    // A quarter turn about z, scaled by 2 along its own x axis. Face 1 has two materials, face 2 an unknown
    // one, face 3 none.
    const Bytes arm = Mesh(
        {Points({10, 5, 4, 10, 9, 4, 8, 5, 4, 10, 5, 6}),
         Faces({0, 1, 2, 0, 2, 3, 0, 3, 1, 1, 3, 2},
               {MaterialGroup("CHROME", {0, 1}), MaterialGroup("WIRE", {1}), MaterialGroup("NOWHERE", {2})}),
         MeshMatrix({0, 2, 0, -1, 0, 0, 0, 0, 1, 10, 5, 4})});
    const Bytes tip = Mesh({Points({10, 9, 6, 9, 9, 6, 10, 10, 6}), Faces({0, 1, 2}),
                            MeshMatrix({-1, 0, 0, 0, 1, 0, 0, 0, 1, 10, 9, 6})}); // mirrored
    return Join({NamedObject("SUN", {Chunk(0x4600)}), NamedObject("BASE PLATE", {plate}),
                 NamedObject("ARM", {arm}), NamedObject("GHOST", {tip, Chunk(0x4010)}),
                 NamedObject("EYE", {Chunk(0x4700)}), NamedObject("TIP", {tip})});
}

inline chunks::Bytes WorkedScene()
{
    using namespace chunks;
    const Bytes track = Track(0xB020, {{0, {1, 2, 3}}, {1, {4, 5, 6}, 0x11, {0.5f, 0.25f}}});
    return Scene({Chunk(0x3D3E, {U32(3)}), WorkedMaterials(), Chunk(0x0100, {F32(1)}),
                  Chunk(0x2100, {Colour24(51, 102, 153)}), WorkedMeshes()},
                 {Kfhdr(2), Chunk(0xB008, {U32(0), U32(2)}), Chunk(0xB009, {U32(1)}), Chunk(0xB001),
                  ObjectNode("BASE PLATE", noParent), Chunk(0xB003),
                  ObjectNode("$$$DUMMY", 0, {Pivot(0, 0, 3)}), ObjectNode("ARM", 2, {Pivot(1, 0, 0), track}),
                  ObjectNode("TIP", 3), ObjectNode("GHOST", 0)});
}

// TIP has no transform, Dummy0 has one in frame 0 only.
inline const char *WorkedVue()
{
    return "# two frames\n"
           "frame 0\n"
           "transform \"BASE PLATE\" 1 0 0 0 1 0 0 0 1 10 5 0\n"
           "transform Dummy0 1 0 0 0 1 0 0 0 1 0.5 0 0\n"
           "transform \"ARM\" 0 2 0 -1 0 0 0 0 1 10 5 5\n"
           "transform \"GHOST\" 1 0 0 0 1 0 0 0 1 0 0 0\n"
           "camera \"EYE\" 1 2 3\n"
           "FRAME 1\n"
           "Transform \"BASE PLATE\" 0 1 0 -1 0 0 0 0 1 10 5 0\n"
           "transform ARM 0 2 0 # half way\n -1 0 0 0 0 1 12.25 5 5\n";
}

#endif
