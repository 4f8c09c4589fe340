// Placements in the format's form (TRS): translation, rotation and scale along three axes, but no shear.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "gltf.h"

constexpr double framesPerSecond = 30.0;
constexpr uint32_t allFramesMost = 100000; // an hour; up to here each frame is sampled

struct Trs {
    float translation[3];
    float rotation[4]; // a quaternion: x, y, z, w
    float scale[3];
};

static Vector RowOf(const Matrix &m, size_t row)
{
    return {m[row * 4], m[row * 4 + 1], m[row * 4 + 2]};
}

// Whether all numbers are finite as floats, in which viewers keep them.
static bool FitsFloats(const Matrix &m)
{
    return std::all_of(m.begin(), m.end(),
                       [](double part) { return std::isfinite(static_cast<float>(part)); });
}

// Infinity if a number isn't finite.
static double Furthest(const Matrix &a, const Matrix &b)
{
    double most = 0.0;
    for (size_t i = 0; i < 16; ++i) {
        const double distance = std::abs(a[i] - b[i]);
        if (!std::isfinite(distance))
            return std::numeric_limits<double>::infinity();
        most = std::max(most, distance);
    }
    return most;
}

// Whether the axes are perpendicular and none has length 0.
static bool IsTrs(const Matrix &m)
{
    constexpr double tolerance = 1e-6;
    const Vector rows[3] = {RowOf(m, 0), RowOf(m, 1), RowOf(m, 2)};
    for (int i = 0; i < 3; ++i) {
        const Vector &a = rows[i], &b = rows[(i + 1) % 3];
        if (!(Dot(a, a) > 0.0) || !(std::abs(Dot(a, b)) <= tolerance * std::sqrt(Dot(a, a) * Dot(b, b))))
            return false;
    }
    return FitsFloats(m);
}

// Finds the rotation nearest to a placement, which may have shear and axes of length 0.
static void FindRotation(const Matrix &m, Vector axes[3])
{
    Matrix rotation = identityMatrix;
    for (size_t row = 0; row < 3; ++row) {
        Vector axis = RowOf(m, row);
        const double length = std::sqrt(Dot(axis, axis));
        for (size_t i = 0; i < 3; ++i)
            rotation[row * 4 + i] = length > 0.0 ? axis[i] / length : 0.0;
    }
    for (size_t row = 0; row < 3; ++row) {
        const size_t a = (row + 1) % 3, b = (row + 2) % 3;
        const Vector cross = Cross(RowOf(rotation, a), RowOf(rotation, b));
        const double length = std::sqrt(Dot(cross, cross));
        if (Dot(RowOf(rotation, row), RowOf(rotation, row)) == 0.0 && length > 0.0)
            for (size_t i = 0; i < 3; ++i)
                rotation[row * 4 + i] = cross[i] / length;
    }
    // A reflection becomes a negative scale along the first axis.
    if (Dot(RowOf(rotation, 0), Cross(RowOf(rotation, 1), RowOf(rotation, 2))) < 0.0)
        for (size_t i = 0; i < 3; ++i)
            rotation[i] = -rotation[i];
    // Repeatedly averaging a matrix with its inverse transpose converges to the nearest rotation.
    for (int step = 0; step < 32; ++step) {
        Matrix inverse;
        if (!Invert(rotation, &inverse)) {
            rotation = identityMatrix;
            break;
        }
        const Matrix before = rotation;
        for (size_t row = 0; row < 3; ++row)
            for (size_t i = 0; i < 3; ++i)
                rotation[row * 4 + i] = (before[row * 4 + i] + inverse[i * 4 + row]) / 2;
        if (Furthest(before, rotation) < 1e-15)
            break;
    }
    for (size_t row = 0; row < 3; ++row)
        axes[row] = RowOf(rotation, row);
}

static void ToQuaternion(const Vector r[3], float quaternion[4])
{
    double q[4];
    const double trace = r[0][0] + r[1][1] + r[2][2];
    if (trace > 0.0) {
        const double s = 2.0 * std::sqrt(trace + 1.0);
        q[0] = (r[1][2] - r[2][1]) / s, q[1] = (r[2][0] - r[0][2]) / s, q[2] = (r[0][1] - r[1][0]) / s;
        q[3] = s / 4;
    } else {
        const size_t a = r[0][0] >= r[1][1] && r[0][0] >= r[2][2] ? 0 : r[1][1] >= r[2][2] ? 1 : 2;
        const size_t b = (a + 1) % 3, c = (a + 2) % 3;
        const double s = 2.0 * std::sqrt(std::max(0.0, 1.0 + r[a][a] - r[b][b] - r[c][c]));
        q[a] = s / 4, q[b] = (r[a][b] + r[b][a]) / s, q[c] = (r[a][c] + r[c][a]) / s;
        q[3] = (r[b][c] - r[c][b]) / s;
    }
    const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    for (int i = 0; i < 4; ++i)
        quaternion[i] = static_cast<float>(q[i] / length);
}

static Trs NearestTrs(const Matrix &m)
{
    Trs trs;
    Vector axes[3];
    FindRotation(m, axes);
    ToQuaternion(axes, trs.rotation);
    for (size_t i = 0; i < 3; ++i) {
        trs.translation[i] = static_cast<float>(m[12 + i]);
        trs.scale[i] = static_cast<float>(Dot(RowOf(m, i), axes[i]));
    }
    return trs;
}

// The matrix that a viewer computes from these rounded values.
static Matrix MatrixOf(const Trs &trs)
{
    double q[4], length = 0.0;
    for (const float part : trs.rotation)
        length += static_cast<double>(part) * part;
    for (int i = 0; i < 4; ++i)
        q[i] = trs.rotation[i] / std::sqrt(length);
    const double x = q[0], y = q[1], z = q[2], w = q[3];
    const double rows[3][3] = {{1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)},
                               {2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)},
                               {2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)}};
    Matrix m = identityMatrix;
    for (size_t row = 0; row < 3; ++row)
        for (size_t i = 0; i < 3; ++i) {
            m[row * 4 + i] = rows[row][i] * trs.scale[row];
            m[12 + i] = trs.translation[i];
        }
    return m;
}

// The placement of a node relative to its parent's used placement.
static Matrix LocalOf(const Matrix &world, const Matrix *parentUsed)
{
    Matrix inverse = identityMatrix;
    if (parentUsed)
        Invert(*parentUsed, &inverse);
    return Multiply(world, inverse);
}

// The absolute placement of each node in a frame.
static std::vector<Matrix> WorldsIn(const Mc3dsFile *scene, const Mc3dsOptions &asked, int64_t frame,
                                    Reporter *reporter)
{
    std::vector<Matrix> worlds;
    const Model model = BuildModel(scene, asked, frame, reporter, 0, 0);
    VisitMeshes(model.get(), [&worlds](const PlacedMesh &mesh) { worlds.push_back(mesh.world); });
    return worlds;
}

// Whether all objects stand as in the frame before. Long animations mostly repeat a frame.
static bool RepeatsFrame(const Mc3dsFile *scene, uint32_t frame)
{
    for (uint32_t i = 0; frame != 0 && i < scene->objectCount; ++i)
        if (const Mc3dsTransform *at = scene->objects[i].frames;
            at && std::memcmp(&at[frame], &at[frame - 1], sizeof *at) != 0)
            return false;
    return frame != 0;
}

static const Matrix *ParentOf(const GlbNode &node, const std::vector<Matrix> &worlds)
{
    return node.parent < 0 ? nullptr : &worlds[static_cast<size_t>(node.parent)];
}

static bool HasMotion(const Mc3dsFile *scene, const Mc3dsOptions &asked)
{
    return scene->hasAnimation && scene->frameCount != 0 && !(asked.flags & MC3DS_MERGED);
}

static void FindMoving(Glb *glb, const Mc3dsFile *scene, const Mc3dsOptions &asked, Reporter *reporter)
{
    std::vector<Matrix> rest;
    for (const GlbNode &node : glb->nodes)
        rest.push_back(node.world);
    for (uint32_t frame = 0; frame < scene->frameCount; ++frame) {
        if (RepeatsFrame(scene, frame))
            continue;
        const std::vector<Matrix> worlds = WorldsIn(scene, asked, frame, reporter);
        for (size_t i = 0; i < glb->nodes.size() && worlds.size() == rest.size(); ++i) {
            GlbNode &node = glb->nodes[i];
            const Matrix before = LocalOf(rest[i], ParentOf(node, rest));
            const Matrix now = LocalOf(worlds[i], ParentOf(node, worlds));
            node.moves = node.moves || !(Furthest(before, now) <= 1e-9 * (1.0 + Furthest(before, Matrix{})));
        }
    }
}

static void StoreTrs(const Trs &trs, Json *json)
{
    (*json)["translation"] = trs.translation;
    (*json)["rotation"] = trs.rotation;
    (*json)["scale"] = trs.scale;
}

void PlaceGlbNodes(Glb *glb, const Mc3dsFile *scene, const Mc3dsOptions &asked, Reporter *reporter)
{
    if (HasMotion(scene, asked))
        FindMoving(glb, scene, asked, reporter);
    for (GlbNode &node : glb->nodes) {
        const Matrix *above = node.parent < 0 ? nullptr : &glb->nodes[static_cast<size_t>(node.parent)].used;
        Matrix local = LocalOf(node.world, above);
        if (node.moves && FitsFloats(local)) {
            const Trs trs = NearestTrs(local);
            StoreTrs(trs, &node.json);
            local = MatrixOf(trs);
        } else if (!IsTrs(local)) {
            local = identityMatrix;
        } else if (local != identityMatrix) {
            node.json["matrix"] = local;
        }
        node.used = above ? Multiply(local, *above) : local;
        Matrix inverse;
        Invert(node.used, &inverse);
        node.residual = Multiply(node.world, inverse);
        node.isResidual = !(Furthest(node.residual, identityMatrix) <= 1e-12);
        if (!node.isResidual)
            node.residual = identityMatrix;
    }
}

// The largest distance of a corner of the bounds from its correct position.
static double ErrorOf(const Bounds &bounds, const Matrix &wanted, const Matrix &used)
{
    double most = 0.0;
    for (unsigned corner = 0; corner < 8 && bounds.least[0] <= bounds.most[0]; ++corner) {
        Vector place;
        for (unsigned axis = 0; axis < 3; ++axis)
            place[axis] = corner >> axis & 1 ? bounds.most[axis] : bounds.least[axis];
        const Vector off = Minus(Place(place, wanted), Place(place, used));
        most = std::max(most, std::sqrt(Dot(off, off)));
    }
    return most;
}

// Samples one frame and updates worstError. A residual placement is in the mesh's vertices already.
static void SampleFrame(Glb *glb, const std::vector<Matrix> &worlds, std::vector<std::vector<Trs>> *samples)
{
    std::vector<Matrix> used;
    for (size_t i = 0; i < glb->nodes.size(); ++i) {
        const GlbNode &node = glb->nodes[i];
        const Matrix *above = ParentOf(node, used), *restAbove = nullptr;
        Matrix wanted = worlds[i], inverse;
        if (node.isResidual && Invert(node.residual, &inverse))
            wanted = Multiply(inverse, worlds[i]);
        Matrix local;
        if (node.moves) {
            const Matrix exact = LocalOf(wanted, above);
            std::vector<Trs> &all = (*samples)[i];
            // A frame without finite numbers repeats the one before it.
            Trs trs = FitsFloats(exact) || all.empty()
                          ? NearestTrs(FitsFloats(exact) ? exact : identityMatrix)
                          : all.back();
            float turn = 0.0f; // below 0: -q, the same rotation, is nearer to the last sample
            for (int part = 0; part < 4 && !all.empty(); ++part)
                turn += trs.rotation[part] * all.back().rotation[part];
            for (float &part : trs.rotation)
                part = turn < 0.0f ? -part : part;
            all.push_back(trs);
            local = MatrixOf(trs);
        } else {
            restAbove = node.parent < 0 ? nullptr : &glb->nodes[static_cast<size_t>(node.parent)].used;
            local = LocalOf(node.used, restAbove);
        }
        used.push_back(above ? Multiply(local, *above) : local);
        const double error = ErrorOf(glb->meshes[node.mesh].bounds, wanted, used.back());
        glb->worstError = std::max(glb->worstError, std::isfinite(error) ? error : 0.0);
    }
}

static size_t AddFloats(Glb *glb, const std::vector<float> &values, size_t count, const char *type)
{
    const size_t view = AddGlbView(glb, values.data(), values.size() * 4, 0, 0);
    return AddGlbAccessor(glb, view, 0, glbFloat, count, type);
}

static void AddChannel(Glb *glb, Json *animation, size_t node, size_t times, const std::vector<Trs> &samples,
                       const char *path, size_t offset, size_t parts)
{
    std::vector<float> values;
    for (const Trs &trs : samples) {
        const float *from = reinterpret_cast<const float *>(&trs) + offset;
        values.insert(values.end(), from, from + parts);
    }
    const size_t output = AddFloats(glb, values, samples.size(), parts == 4 ? "VEC4" : "VEC3");
    (*animation)["samplers"].push_back({{"input", times}, {"output", output}});
    (*animation)["channels"].push_back(
        {{"sampler", (*animation)["samplers"].size() - 1}, {"target", {{"node", node}, {"path", path}}}});
}

void AddGlbAnimation(Glb *glb, const Mc3dsFile *scene, const Mc3dsOptions &asked, Reporter *reporter)
{
    if (std::none_of(glb->nodes.begin(), glb->nodes.end(), [](const GlbNode &node) { return node.moves; }))
        return;
    std::vector<std::vector<Trs>> samples(glb->nodes.size());
    std::vector<float> times;
    std::vector<Matrix> worlds;
    for (uint32_t frame = 0; frame < scene->frameCount; ++frame) {
        const bool repeats = RepeatsFrame(scene, frame);
        // In a very long animation only the ends of a standstill are sampled.
        const bool isInside = repeats && frame + 1 < scene->frameCount && RepeatsFrame(scene, frame + 1);
        if (isInside && scene->frameCount > allFramesMost)
            continue;
        if (!repeats)
            worlds = WorldsIn(scene, asked, frame, reporter);
        if (worlds.size() != glb->nodes.size())
            return; // out of memory, which WriteGlb reports
        SampleFrame(glb, worlds, &samples);
        times.push_back(static_cast<float>(frame / framesPerSecond));
    }
    const size_t input = AddFloats(glb, times, times.size(), "SCALAR");
    glb->accessors[input]["min"] = {times.front()};
    glb->accessors[input]["max"] = {times.back()};
    Json animation = {{"name", "vue"}, {"samplers", Json::array()}, {"channels", Json::array()}};
    for (size_t i = 0; i < glb->nodes.size(); ++i) {
        if (!glb->nodes[i].moves)
            continue;
        AddChannel(glb, &animation, i, input, samples[i], "translation", 0, 3);
        AddChannel(glb, &animation, i, input, samples[i], "rotation", 3, 4);
        AddChannel(glb, &animation, i, input, samples[i], "scale", 7, 3);
    }
    glb->animations.push_back(animation);
}
