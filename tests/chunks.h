// Builds 3D Studio files in a few readable lines. Each function returns the bytes of one part of the file:
//   Scene({NamedMesh("BOX", {Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), Faces({0, 1, 2})})})
#ifndef MC3DS_TESTS_CHUNKS_H
#define MC3DS_TESTS_CHUNKS_H

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

namespace chunks {

using Bytes = std::string;
using Pieces = std::vector<Bytes>;

inline Bytes Number(uint32_t value, int width)
{
    Bytes bytes;
    for (int i = 0; i < width; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFFu);
    return bytes;
}
inline Bytes U8(uint32_t value)
{
    return Number(value, 1);
}
inline Bytes U16(uint32_t value)
{
    return Number(value, 2);
}
inline Bytes U32(uint32_t value)
{
    return Number(value, 4);
}
inline Bytes F32(float value)
{
    return U32(std::bit_cast<uint32_t>(value));
}
inline Bytes F32s(const std::vector<float> &values)
{
    Bytes bytes;
    for (const float value : values)
        bytes += F32(value);
    return bytes;
}
inline Bytes Text(const Bytes &text)
{
    return text + '\0';
}
inline Bytes Join(const Pieces &pieces)
{
    Bytes bytes;
    for (const Bytes &piece : pieces)
        bytes += piece;
    return bytes;
}

// The caller sets the length field, for damaged files. Chunk computes it.
inline Bytes ChunkOfLength(uint16_t tag, uint32_t length, const Pieces &pieces)
{
    return U16(tag) + U32(length) + Join(pieces);
}
inline Bytes Chunk(uint16_t tag, const Pieces &pieces = {})
{
    const Bytes data = Join(pieces);
    return ChunkOfLength(tag, static_cast<uint32_t>(data.size() + 6), {data});
}

inline Bytes NamedObject(const Bytes &name, const Pieces &pieces)
{
    return Chunk(0x4000, {Text(name), Join(pieces)});
}
inline Bytes Mesh(const Pieces &pieces)
{
    return Chunk(0x4100, pieces);
}
inline Bytes NamedMesh(const Bytes &name, const Pieces &pieces)
{
    return NamedObject(name, {Mesh(pieces)});
}
// x, y, z of each vertex, in world space.
inline Bytes Points(const std::vector<float> &xyz)
{
    return Chunk(0x4110, {U16(static_cast<uint32_t>(xyz.size() / 3)), F32s(xyz)});
}
inline Bytes TexVerts(const std::vector<float> &uv)
{
    return Chunk(0x4140, {U16(static_cast<uint32_t>(uv.size() / 2)), F32s(uv)});
}
// Three corners of each face; all its edges are visible.
inline Bytes Faces(const std::vector<uint16_t> &corners, const Pieces &children = {})
{
    Bytes data = U16(static_cast<uint32_t>(corners.size() / 3));
    for (size_t i = 0; i < corners.size(); ++i)
        data += U16(corners[i]) + (i % 3 == 2 ? U16(7) : "");
    return Chunk(0x4120, {data, Join(children)});
}
inline Bytes MaterialGroup(const Bytes &material, const std::vector<uint16_t> &faces)
{
    Bytes data = Text(material) + U16(static_cast<uint32_t>(faces.size()));
    for (const uint16_t face : faces)
        data += U16(face);
    return Chunk(0x4130, {data});
}
// The x, y and z axes, then the position.
inline Bytes MeshMatrix(const std::vector<float> &rows)
{
    return Chunk(0x4160, {F32s(rows)});
}

inline Bytes Colour24(uint32_t r, uint32_t g, uint32_t b)
{
    return Chunk(0x0011, {U8(r), U8(g), U8(b)});
}
inline Bytes Percent(uint32_t value)
{
    return Chunk(0x0030, {U16(value)});
}
// tag is 0xA200 for the texture, 0xA210 for the opacity and 0xA220 for the reflection.
inline Bytes Map(uint16_t tag, const Bytes &name)
{
    return Chunk(tag, {Percent(100), Chunk(0xA300, {Text(name)})});
}
// All chunks that a material needs besides its name. The colours are colour chunks; shading is 0 wireframe,
// 1 flat, 2 Gouraud, 3 Phong, 4 metal.
inline Bytes Finish(const Bytes &ambient, const Bytes &diffuse, const Bytes &specular, uint32_t shading,
                    uint32_t shininess = 25, uint32_t transparency = 0)
{
    return Join({Chunk(0xA010, {ambient}), Chunk(0xA020, {diffuse}), Chunk(0xA030, {specular}),
                 Chunk(0xA040, {Percent(shininess)}), Chunk(0xA050, {Percent(transparency)}),
                 Chunk(0xA100, {U16(shading)})});
}
inline Bytes Material(const Bytes &name, const Pieces &pieces)
{
    return Chunk(0xAFFF, {Chunk(0xA000, {Text(name)}), Join(pieces)});
}

inline const Bytes midGrey = Colour24(128, 128, 128);

// A material that is grey and flat.
inline Bytes Grey(const Bytes &name, const Pieces &more = {})
{
    return Material(name, {Finish(midGrey, midGrey, midGrey, 1), Join(more)});
}

constexpr uint16_t noParent = 0xFFFF;

inline Bytes Kfhdr(uint32_t frames)
{
    return Chunk(0xB00A, {U16(5), Text("SCENE"), U32(frames)});
}
// parent is the index of a node chunk, from 0; nodes of every kind count.
inline Bytes ObjectNode(const Bytes &name, uint16_t parent, const Pieces &pieces = {})
{
    return Chunk(0xB002, {Chunk(0xB010, {Text(name), U32(0), U16(parent)}), Join(pieces)});
}
inline Bytes Pivot(float x, float y, float z)
{
    return Chunk(0xB013, {F32s({x, y, z})});
}

struct Key {
    uint32_t frame;
    std::vector<float> values; // x, y, z of a position or scale; angle, x, y, z of a rotation
    uint16_t flags = 0;        // one float of spline for each of the low five bits
    std::vector<float> spline = {};
};

// tag is 0xB020 for positions, 0xB021 for rotations, 0xB022 for scales.
inline Bytes Track(uint16_t tag, const std::vector<Key> &keys)
{
    Bytes data = U16(0) + U32(0) + U32(0) + U32(static_cast<uint32_t>(keys.size()));
    for (const Key &key : keys)
        data += U32(key.frame) + U16(key.flags) + F32s(key.spline) + F32s(key.values);
    return Chunk(tag, {data});
}

// A whole file; without keyframer pieces it has no keyframer section.
inline Bytes Scene(const Pieces &editor, const Pieces &keyframer = {})
{
    return Chunk(0x4D4D, {Chunk(0x3D3D, editor), keyframer.empty() ? "" : Chunk(0xB000, keyframer)});
}

} // namespace chunks

#endif
