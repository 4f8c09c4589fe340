#!/usr/bin/env -S python3 -B
"""Writes a scene for the timings: the same bytes for the same arguments.

With FRAMES it also writes the .vue file beside the scene. VERTICES and FACES are counts per mesh.
"""
import argparse
import sys
from array import array
from itertools import accumulate
from random import Random

from chunks import (chunk, floats, frame_count, material, mesh, named_object, node, scene, text, u16, u32)

NO_PARENT = 0xFFFF
MOST_PARENTS = 0x8000  # higher node numbers don't work as parents


def native(numbers):
    if sys.byteorder == "big":
        numbers.byteswap()
    return numbers.tobytes()


def walk(random, count, axes, start, step):
    """A random walk, so that numbers have as many digits as those of a modelled surface."""
    numbers = array("f", bytes(4 * count * axes))
    for axis in range(axes):
        steps = (step * (random.random() - 0.5) for _ in range(count - 1))
        numbers[axis::axes] = array("f", accumulate(steps, initial=start * (random.random() - 0.5)))
    return native(numbers)


def faces_in_groups(random, vertices, faces):
    """Nearly all faces belong to one of three groups; the rest have the default material."""
    corners = array("H", bytes(8 * faces))
    corners[0::4] = array("H", (i % vertices for i in range(faces)))
    corners[1::4] = array("H", ((i + 1) % vertices for i in range(faces)))
    corners[2::4] = array("H", (int(i + 2 + 40 * random.random()) % vertices for i in range(faces)))
    corners[3::4] = array("H", [7]) * faces
    groups = []
    for third in range(3):
        numbers = range(faces * third // 3, faces * (third + 1) // 3)
        group = array("H", (i for i in numbers if random.random() > 0.05))
        name = material_name(int(4 * random.random()))
        groups.append(chunk(0x4130, text(name), u16(len(group)), native(group)))
    return chunk(0x4120, u16(faces), native(corners), *groups)


def placement(random):
    """Random axes that aren't quite perpendicular, and a random position."""
    axes = [float(i % 4 == 0) + random.uniform(-0.2, 0.2) for i in range(9)]
    return axes + [random.uniform(-300, 300) for _ in range(3)]


def track(random, tag, values, spread):
    keys = b""
    for frame in (0, 10, 20):
        spline = floats(random.uniform(-1, 1), random.uniform(-1, 1)) if frame == 10 else b""
        keys += u32(frame) + u16(3 if spline else 0) + spline
        keys += floats(*(value + random.uniform(-spread, spread) for value in values))
    return chunk(tag, u16(0), u32(0, 0, 3), keys)


def nodes(random, meshes):
    """Each node has an earlier one as its parent. As in real files, most are in the order of the meshes."""
    order = list(range(meshes))
    for i in range(meshes // 16):
        j, k = int(meshes * random.random()), int(meshes * random.random())
        order[j], order[k] = order[k], order[j]
    for i, number in enumerate(order):
        parent = int(random.random() * min(i, MOST_PARENTS)) if i else NO_PARENT
        yield node(mesh_name(number), parent, chunk(0xB013, floats(*(random.uniform(-5, 5) for _ in "xyz"))),
                   track(random, 0xB020, (0, 0, 0), 100), track(random, 0xB021, (0, 0, 0, 1), 0.9),
                   track(random, 0xB022, (1, 1, 1), 0.1))


def mesh_name(i):
    return "Mesh%05d" % i


def material_name(i):
    return "%s %d" % ("PAINT" if i % 2 else "STONE", i)


def texture(i):
    return chunk(0xA200, chunk(0x0030, u16(100)), chunk(0xA300, text("GRAIN%d.TGA" % i)))


def write_vue(random, path, meshes, frames):
    with open(path, "w") as file:
        for frame in range(frames + 1):
            file.write("frame %d\n" % frame)
            for i in range(meshes):
                numbers = " ".join("%f" % number for number in placement(random))
                file.write('transform "%s" %s\n' % (mesh_name(i), numbers))


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("file")
    parser.add_argument("meshes", type=int)
    parser.add_argument("vertices", type=int)
    parser.add_argument("faces", type=int)
    parser.add_argument("--nodes", action="store_true", help="a hierarchy, with pivots and key tracks")
    parser.add_argument("--frames", type=int, default=0)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    random = Random(options.seed)

    editor = [material(material_name(i), 1 + i, ((20 + i, 30, 40), (50 * i, 200 - 40 * i, 99), (229,) * 3),
                       40 if i == 3 else 0, texture(i) if i % 2 else b"") for i in range(4)]
    for i in range(options.meshes):
        editor.append(named_object(mesh_name(i), mesh(
            chunk(0x4110, u16(options.vertices), walk(random, options.vertices, 3, 600, 3)),
            chunk(0x4140, u16(options.vertices), walk(random, options.vertices, 2, 4, 0.02)),
            chunk(0x4160, floats(*placement(random))),
            faces_in_groups(random, options.vertices, options.faces))))
    keyframer = [frame_count(options.frames)] if options.frames else []
    if options.nodes:
        keyframer += nodes(random, options.meshes)
    with open(options.file, "wb") as file:
        file.write(scene(b"".join(editor), b"".join(keyframer)))
    if options.frames:
        write_vue(random, options.file[:-3] + "vue", options.meshes, options.frames)


if __name__ == "__main__":
    main()
