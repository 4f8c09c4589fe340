// Draws a picture of the model of a direct build.
#include <algorithm>
#include <png.h>

#include "../model/model.h"
#include "picture.h"
#include "raster.h"

constexpr uint32_t stripFrames = 5;
constexpr int stripGap = 4;         // pixels between two frames
constexpr double samplesMost = 4e7; // for a picture; some tenths of a second, 20 times an ordinary scene's
constexpr uint8_t gapLevel = 255;
// Contrasts with thin dark parts and with white ones.
constexpr uint8_t background[3] = {160, 170, 182};

// Drawing uses eye space: x right, y up, z towards the viewer, who is far above the model's right front
// corner. upwards (the model's up) and toLamp are unit vectors in eye space.
static const Matrix modelToEye = {0.8192,  -0.2424, 0.5198, 0, 0, 0.9063, 0.4226, 0,
                                  -0.5736, -0.3462, 0.7424, 0, 0, 0,      0,      1};
constexpr float fullLight = 0.97f; // below 1, so that white parts show shading
constexpr Vector upwards = {0.0, 0.9063, 0.4226}, toLamp = {-0.4851, 0.7276, 0.4851};

// A mesh placed in eye space.
struct SeenMesh {
    McGeometryView geometry;
    Matrix placement;
};

// Transparent faces are drawn last, from back to front.
struct WaitingFace {
    RasterCorner corners[3];
    int surface;
};

struct Canvas {
    Raster raster;
    Bounds bounds;
    double zoom; // samples per unit of the model
    const McSurface *surfaces;
    std::vector<WaitingFace> waiting;
};

static std::vector<SeenMesh> FindMeshes(const McClump *clump)
{
    std::vector<SeenMesh> meshes;
    VisitMeshes(clump, [&meshes](const PlacedMesh &mesh) {
        meshes.push_back({mesh.geometry, Multiply(mesh.world, modelToEye)});
    });
    return meshes;
}

static void GrowByFaces(Bounds *bounds, const SeenMesh &mesh)
{
    for (size_t i = 0; i < mesh.geometry.faceCount; ++i)
        for (const int vertex : mesh.geometry.faces[i].vertices)
            if (const Vector place = Place(mesh.geometry.points[vertex - 1], mesh.placement);
                std::isfinite(Dot(place, place)))
                Grow(bounds, place);
}

static RasterCorner Project(const Canvas &canvas, const Vector &place)
{
    const Vector &least = canvas.bounds.least, &most = canvas.bounds.most;
    const double x = place[0] - (least[0] + most[0]) / 2, y = place[1] - (least[1] + most[1]) / 2;
    const double deep = most[2] > least[2] ? (place[2] - least[2]) / (most[2] - least[2]) : 0.0; // unnoticed
    return {static_cast<float>(canvas.raster.width * 0.5 + x * canvas.zoom),
            static_cast<float>(canvas.raster.height * 0.5 - y * canvas.zoom), static_cast<float>(1.0 + deep),
            fullLight};
}

// At most fullLight. Ignores the surface's coefficients: they come from its colour and would darken it again.
static float Light(Vector normal, bool turned)
{
    const double length = std::sqrt(Dot(normal, normal)) * (turned ? -1.0 : 1.0);
    if (length == 0.0 || !std::isfinite(length))
        return fullLight;
    for (double &part : normal)
        part /= length;
    return static_cast<float>(0.38 + 0.11 * Dot(normal, upwards) + 0.13 * std::max(0.0, normal[2]) +
                              0.41 * std::max(0.0, Dot(normal, toLamp)));
}

// Faces whose weighted normals cancel out leave a rest, as their angles are approximate. It is no direction.
static Vector WithoutRest(const Vector &smooth)
{
    return Dot(smooth, smooth) < 1e-6 ? Vector{} : smooth;
}

static void DrawFace(Canvas *canvas, const RasterCorner corners[3], const McSurface &surface)
{
    constexpr float least = 0.08f; // so that black parts show shading
    RasterColour colour = {{}, surface.opacity};
    for (int i = 0; i < 3; ++i)
        colour.rgb[i] = least + surface.color[i] * (1.0f - least);
    if (surface.geometrySampling != mcWIREFRAME)
        DrawTriangle(&canvas->raster, corners, colour);
    else
        for (int i = 0; i < 3; ++i)
            DrawLine(&canvas->raster, corners[i], corners[(i + 1) % 3], colour);
}

static void DrawMesh(Canvas *canvas, const SeenMesh &mesh)
{
    const McGeometryView &geometry = mesh.geometry;
    std::vector<Vector> places(geometry.vertexCount), smooth;
    for (size_t i = 0; i < geometry.vertexCount; ++i)
        places[i] = Place(geometry.points[i], mesh.placement);
    const auto place = [&](const McFace &face, int at) -> const Vector & {
        return places[static_cast<size_t>(face.vertices[at] - 1)];
    };
    for (size_t i = 0; i < geometry.faceCount; ++i) {
        const McFace &face = geometry.faces[i];
        const McSurface &surface = canvas->surfaces[face.surface];
        const bool isWire = surface.geometrySampling == mcWIREFRAME;
        const bool isFlat = surface.lightSampling == mcFACET;
        if (!isWire && !isFlat && smooth.empty())
            smooth = SmoothNormals(geometry, places);
        const Vector normal = FaceNormal(place(face, 0), place(face, 1), place(face, 2));
        WaitingFace drawn = {{}, face.surface};
        for (int at = 0; at < 3; ++at) {
            drawn.corners[at] = Project(*canvas, place(face, at));
            // Both sides of a face are lit, whatever the order of its corners.
            if (!isWire)
                drawn.corners[at].light =
                    Light(isFlat ? normal : WithoutRest(smooth[static_cast<size_t>(face.vertices[at] - 1)]),
                          normal[2] < 0.0);
        }
        if (!(surface.opacity < 1.0f))
            DrawFace(canvas, drawn.corners, surface);
        else if (surface.opacity > 0.0f)
            canvas->waiting.push_back(drawn);
    }
}

static void DrawModel(Canvas *canvas, const McClump *clump)
{
    McModelView model = {};
    McGetModel(clump, &model);
    canvas->surfaces = model.surfaces;
    for (const SeenMesh &mesh : FindMeshes(clump))
        DrawMesh(canvas, mesh);
    const auto depth = [](const WaitingFace &face) {
        const float sum = face.corners[0].depth + face.corners[1].depth + face.corners[2].depth;
        return std::isfinite(sum) ? sum : 0.0f; // such a face isn't drawn, but NaN would break the sort
    };
    std::stable_sort(canvas->waiting.begin(), canvas->waiting.end(),
                     [&](const WaitingFace &a, const WaitingFace &b) { return depth(a) < depth(b); });
    for (const WaitingFace &face : canvas->waiting)
        DrawFace(canvas, face.corners, canvas->surfaces[face.surface]);
}

// Empty after a report if the animation lacks the requested frame: an error, or of many scenes a warning.
static std::vector<int64_t> PickFrames(const Mc3dsFile *scene, const PreviewOptions &preview,
                                       Reporter *reporter)
{
    if (preview.strip && scene->hasAnimation) {
        std::vector<int64_t> frames;
        const uint32_t count = std::min(scene->frameCount, stripFrames);
        for (uint32_t i = 0; i < count; ++i)
            frames.push_back(count == 1 ? 0 : int64_t{scene->frameCount - 1} * i / (count - 1));
        return frames;
    }
    if (preview.strip)
        ReportFinding(reporter, {.kind = FindingKind::NoStrip});
    if (preview.strip || preview.frame < 0)
        return {-1};
    if (scene->hasAnimation && preview.frame < scene->frameCount)
        return {preview.frame};
    const std::string why =
        "the scene has no frame " + std::to_string(preview.frame) +
        (scene->hasAnimation ? ": the last one is " + std::to_string(scene->frameCount - 1)
                             : ": it has no animation");
    if (reporter->oneLineEach) // one of many scenes keeps its other files
        ReportFinding(reporter, {.kind = FindingKind::NoPicture, .detail = why});
    else
        ReportError(reporter, why);
    return {};
}

struct Picture {
    int width, height;        // pixels
    std::vector<uint8_t> rgb; // three bytes for each pixel, row by row
};

// A picture for that many frames, filled with the gap's colour.
static Picture MakePicture(const PreviewOptions &preview, int frames)
{
    const int width = preview.width ? preview.width : frames > 1 ? 320 : 800;
    const int height = preview.height ? preview.height : frames > 1 ? 240 : 600;
    Picture picture = {width * frames + stripGap * (frames - 1), height, {}};
    picture.rgb.resize(static_cast<size_t>(picture.width) * static_cast<size_t>(height) * 3, gapLevel);
    return picture;
}

// The bytes of a PNG file; empty after a report if memory runs out.
static std::string PngBytes(const Picture &picture, Reporter *reporter)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string bytes(size, '\0');
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.rgb.data(), 0, nullptr) == 0) {
        ReportError(reporter, std::string("no picture: ") + image.message);
        size = 0;
    }
    bytes.resize(size);
    return bytes;
}

// The bounds of the model over all frames. Leaves the last frame's model in model.
static Bounds FindBounds(const Mc3dsFile *scene, const Mc3dsOptions &asked,
                         const std::vector<int64_t> &frames, Model *model, Reporter *reporter)
{
    Bounds bounds = NoBounds();
    for (const int64_t frame : frames) {
        model->reset();
        *model = BuildModel(scene, asked, frame, reporter);
        for (const SeenMesh &mesh : FindMeshes(model->get()))
            GrowByFaces(&bounds, mesh);
    }
    ReportModelErrors(reporter);
    return bounds;
}

// Why a model without faces can't be drawn.
static std::string WhyNoFaces(const Mc3dsFile *scene, const Mc3dsOptions &asked)
{
    const uint64_t inScene = CountScene(scene).triangles;
    if (inScene == 0)
        return "the model has no faces";
    return "the model has no faces, the scene has " + std::to_string(inScene) +
           (asked.flags & MC3DS_FLAT ? "" : "; they hang from no object: --flat draws them");
}

// Why hardly anything of a model with faces is visible.
static std::string WhyEmpty(const McClump *clump)
{
    McModelView model = {};
    McGetModel(clump, &model);
    bool isClear = true, isThin = true;
    for (const SeenMesh &mesh : FindMeshes(clump))
        for (size_t i = 0; i < mesh.geometry.faceCount; ++i) {
            const McFace &face = mesh.geometry.faces[i];
            const auto at = [&](int corner) {
                return Place(mesh.geometry.points[face.vertices[corner] - 1], mesh.placement);
            };
            const Vector normal = FaceNormal(at(0), at(1), at(2));
            isClear = isClear && !(model.surfaces[face.surface].opacity > 0.0f);
            isThin = isThin && !(Dot(normal, normal) > 0.0);
        }
    if (isClear)
        return "all faces are fully transparent";
    if (isThin)
        return "all faces are points or lines";
    return "its faces are too small or thin for the size of the whole, as with one part far away";
}

// Estimates how many samples the faces of a mesh take at the canvas's full resolution.
static double EstimateSamples(const Canvas &canvas, const SeenMesh &mesh)
{
    const double width = canvas.raster.width, height = canvas.raster.height;
    double samples = 0.0;
    for (size_t i = 0; i < mesh.geometry.faceCount; ++i) {
        RasterCorner corners[3];
        for (int at = 0; at < 3; ++at)
            corners[at] = Project(
                canvas, Place(mesh.geometry.points[mesh.geometry.faces[i].vertices[at] - 1], mesh.placement));
        const auto [a, b, c] = corners;
        const double left = std::max(0.0f, std::min({a.x, b.x, c.x}));
        const double right = std::min(width, double{std::max({a.x, b.x, c.x})});
        const double top = std::max(0.0f, std::min({a.y, b.y, c.y}));
        const double bottom = std::min(height, double{std::max({a.y, b.y, c.y})});
        const double area = std::abs((b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y)) / 2;
        if (!(left < right) || !(top < bottom) || !std::isfinite(area))
            continue;
        samples += std::min(area, (right - left) * (bottom - top)) + (bottom - top); // unnoticed
    }
    return samples;
}

// A canvas of that many pixels, or of fewer if overlapping faces would take too long.
static Canvas MakeCanvas(int width, int height, const Bounds &bounds, const McClump *clump, double most)
{
    const auto make = [&bounds](int across, int down) {
        Canvas canvas = {MakeRaster(across, down, background), bounds, 1.0, nullptr, {}};
        const double size = std::max((bounds.most[0] - bounds.least[0]) / canvas.raster.width,
                                     (bounds.most[1] - bounds.least[1]) / canvas.raster.height);
        canvas.zoom = size > 0.0 ? 0.92 / size : 1.0; // the rest is margin
        return canvas;
    };
    Canvas canvas = make(width, height);
    double samples = 0.0;
    for (const SeenMesh &mesh : FindMeshes(clump))
        samples += EstimateSamples(canvas, mesh);
    if (samples <= most)
        return canvas;
    const double shrink = std::sqrt(most / samples);
    return make(std::max(1, static_cast<int>(width * shrink)),
                std::max(1, static_cast<int>(height * shrink)));
}

// Draws the frames from left to right. Returns the number of painted samples. Leaves the last frame's model
// in model.
static uint64_t DrawFrames(const Mc3dsFile *scene, const Mc3dsOptions &asked,
                           const std::vector<int64_t> &frames, const Bounds &bounds, Model *model,
                           Picture *picture, Reporter *reporter)
{
    const auto count = static_cast<int>(frames.size());
    const int width = (picture->width - stripGap * (count - 1)) / count, height = picture->height;
    const size_t stride = static_cast<size_t>(picture->width) * 3;
    uint64_t painted = 0;
    bool isCoarse = false;
    for (size_t i = 0; i < frames.size(); ++i) {
        if (frames.size() > 1) {
            model->reset();
            *model = BuildModel(scene, asked, frames[i], reporter);
        }
        Canvas canvas = MakeCanvas(width, height, bounds, model->get(), samplesMost / count);
        DrawModel(&canvas, model->get());
        ReduceRaster(&canvas.raster, &picture->rgb[static_cast<size_t>(width + stripGap) * 3 * i], width,
                     height, stride);
        painted += canvas.raster.painted;
        isCoarse = isCoarse || canvas.raster.width < 2 * width;
    }
    if (isCoarse)
        ReportFinding(reporter, {.kind = FindingKind::CoarsePicture, .weight = Weight::Note});
    return painted;
}

bool DrawPreview(const Mc3dsFile *scene, const Mc3dsOptions &asked, const PreviewOptions &preview,
                 Reporter *reporter, std::string *png)
{
    constexpr uint64_t leastPainted = 16; // samples; four pixels are hard to see
    const std::vector<int64_t> frames = PickFrames(scene, preview, reporter);
    if (frames.empty())
        return reporter->oneLineEach;
    Model model(nullptr, McFreeModel);
    const Bounds bounds = FindBounds(scene, asked, frames, &model, reporter);
    const std::vector<SeenMesh> meshes = FindMeshes(model.get());
    const bool hasFaces = std::any_of(meshes.begin(), meshes.end(),
                                      [](const SeenMesh &mesh) { return mesh.geometry.faceCount != 0; });
    Picture picture = MakePicture(preview, static_cast<int>(frames.size()));
    const uint64_t painted =
        hasFaces ? DrawFrames(scene, asked, frames, bounds, &model, &picture, reporter) : 0;
    if (reporter->memoryRanOut) {
        ReportError(reporter, "out of memory while building the model");
        return false;
    }
    if (!hasFaces) {
        ReportFinding(reporter, {.kind = FindingKind::NoPicture, .detail = WhyNoFaces(scene, asked)});
        return true;
    }
    if (painted < leastPainted)
        ReportFinding(reporter, {.kind = FindingKind::EmptyPicture, .detail = WhyEmpty(model.get())});
    *png = PngBytes(picture, reporter);
    return !png->empty();
}
