"""Pieces of 3D Studio files as bytes."""
import struct


def chunk(tag, *pieces):
    data = b"".join(pieces)
    return struct.pack("<HI", tag, len(data) + 6) + data


def text(name):
    return name.encode() + b"\0"


def floats(*numbers):
    return struct.pack("<%df" % len(numbers), *numbers)


def u16(*numbers):
    return struct.pack("<%dH" % len(numbers), *numbers)


def u32(*numbers):
    return struct.pack("<%dI" % len(numbers), *numbers)


def named_object(name, *pieces):
    return chunk(0x4000, text(name), *pieces)


def mesh(*pieces):
    return chunk(0x4100, *pieces)


def scene(editor, keyframer=b""):
    return chunk(0x4D4D, chunk(0x3D3D, editor), chunk(0xB000, keyframer) if keyframer else b"")


def material(name, shading, colours, transparency, *maps):
    properties = [chunk(0xA010 + 16 * i, chunk(0x0011, bytes(colour))) for i, colour in enumerate(colours)]
    return chunk(0xAFFF, chunk(0xA000, text(name)), *properties,
                 chunk(0xA040, chunk(0x0030, u16(25))), chunk(0xA050, chunk(0x0030, u16(transparency))),
                 chunk(0xA100, u16(shading)), *maps)


def frame_count(frames):
    return chunk(0xB00A, u16(5), text("SCENE"), u32(frames))


def node(name, parent, *pieces):
    return chunk(0xB002, chunk(0xB010, text(name), u32(0), u16(parent)), *pieces)
