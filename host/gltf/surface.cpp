// Converts the surfaces of a model to materials, with the pictures that they name.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>

#include "gltf.h"

namespace fs = std::filesystem;

// Surfaces don't have these values, which give the look of matt paint.
constexpr double metallic = 0.0, roughness = 0.8;

// Colours of a scene are sRGB, those of the format are linear.
static double Linear(float level)
{
    const double value = std::clamp(static_cast<double>(level), 0.0, 1.0);
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

static uint32_t NumberAt(const std::string &bytes, size_t at, size_t size)
{
    uint32_t number = 0;
    for (size_t i = 0; i < size; ++i)
        number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
    return number;
}

// Whether the chunks of a PNG file reach its end mark, with data among them.
static bool IsWholePng(const std::string &bytes)
{
    bool hasData = false;
    for (size_t at = 8; bytes.size() - at >= 12;) {
        const size_t length = NumberAt(bytes, at, 4);
        const std::string_view type(bytes.data() + at + 4, 4);
        if (length > bytes.size() - at - 12 || (at == 8 && type != "IHDR"))
            return false;
        hasData = hasData || type == "IDAT";
        if (type == "IEND")
            return hasData;
        at += 12 + length;
    }
    return false;
}

// Whether the segments of a JPEG file reach a scan, with a frame before it and an end mark after it.
static bool IsWholeJpeg(const std::string &bytes)
{
    bool hasFrame = false;
    for (size_t at = 2; bytes.size() - at >= 4;) {
        const uint32_t marker = NumberAt(bytes, at, 2), length = NumberAt(bytes, at + 2, 2);
        if (marker == 0xFFFF) { // a filling byte
            ++at;
            continue;
        }
        if (marker < 0xFFC0 || length < 2 || length > bytes.size() - at - 2)
            return false;
        if (marker == 0xFFDA)
            return hasFrame && bytes.find("\xff\xd9", at + 2 + length) != std::string::npos;
        // Frames are C0 to CF without the tables C4, C8 and CC.
        hasFrame = hasFrame || (marker <= 0xFFCF && marker != 0xFFC4 && marker != 0xFFC8 && marker != 0xFFCC);
        at += 2 + length;
    }
    return false;
}

// The type of a picture in a supported format, from its first bytes; null for others.
static const char *PictureType(const std::string &bytes)
{
    if (bytes.starts_with(std::string_view("\x89PNG\r\n\x1a\n", 8)))
        return "image/png";
    return bytes.starts_with("\xff\xd8\xff") ? "image/jpeg" : nullptr;
}

// Reads a picture beside the scene. Returns why it can't be embedded; empty if it can. Links aren't followed:
// in a folder from someone else they may point to other folders.
static std::string ReadPicture(const fs::path &path, std::string *bytes)
{
    constexpr uintmax_t most = 256u << 20;
    std::error_code failure;
    const fs::file_status status = fs::symlink_status(path, failure);
    if (fs::is_symlink(status))
        return "it is a link";
    if (!fs::is_regular_file(status))
        return failure ? failure.message() : "it is no regular file";
    const uintmax_t size = fs::file_size(path, failure);
    if (failure || size > most)
        return failure ? failure.message() : "it is larger than 256 MiB";
    errno = 0;
    const std::unique_ptr<FILE, int (*)(FILE *)> stream(std::fopen(path.string().c_str(), "rb"), std::fclose);
    if (!stream)
        return std::strerror(errno);
    bytes->resize(static_cast<size_t>(size));
    bytes->resize(std::fread(bytes->data(), 1, bytes->size(), stream.get()));
    if (std::ferror(stream.get()))
        return std::strerror(errno);
    if (!PictureType(*bytes))
        return "it is neither a PNG nor a JPEG file";
    return IsWholePng(*bytes) || IsWholeJpeg(*bytes) ? "" : "it is damaged or cut short";
}

static void NotePicture(const Glb *glb, const std::string &file, const std::string &why)
{
    ReportFinding(
        glb->reporter,
        {.kind = FindingKind::GlbPicture, .weight = Weight::Note, .names = {{file}}, .detail = why});
}

// Embeds a picture once, whatever number of textures it serves. Returns the index of its texture; -1, with a
// note, if it can't be embedded.
static int AddPicture(Glb *glb, const std::string &name, const std::string &file)
{
    const auto [known, isNew] = glb->pictureIndices.try_emplace(file, -1);
    if (!isNew)
        return known->second;
    std::string bytes;
    const std::string why = ReadPicture(PathOf(glb->scenePath).parent_path() / PathOf(file), &bytes);
    if (!why.empty()) {
        NotePicture(glb, file, why);
        return -1;
    }
    const size_t view = AddGlbView(glb, bytes.data(), bytes.size(), 0, 0);
    glb->images.push_back({{"name", name}, {"mimeType", PictureType(bytes)}, {"bufferView", view}});
    glb->textures.push_back({{"source", glb->images.size() - 1}});
    return known->second = static_cast<int>(glb->textures.size() - 1);
}

// The index of the texture; -1 if its picture isn't available. The picture has the texture's name, or that
// name with the extension of a picture.
static int AddTexture(Glb *glb, const std::string &name)
{
    const auto [known, isNew] = glb->textureIndices.try_emplace(name, -1);
    if (!isNew)
        return known->second;
    const std::string stem = PathOf(name).stem().string();
    const std::vector<std::string> names = {name, stem + ".png", stem + ".jpg", stem + ".jpeg"};
    const std::map<std::string, std::string> found =
        FindBeside(PathOf(glb->scenePath), {names.begin(), names.end()});
    for (size_t i = 0; i < names.size() && known->second < 0; ++i)
        if (const auto file = found.find(names[i]); file != found.end())
            known->second = AddPicture(glb, name, file->second);
    return known->second;
}

static Json ExtrasOf(const McSurface &surface)
{
    Json modes = Json::array();
    for (const auto &[bit, name] :
         {std::pair(mcLIT, "Lit"), {mcFORESHORTEN, "Foreshorten"}, {mcFILTER, "Filter"}})
        if (surface.textureModes & bit)
            modes.push_back(name);
    Json extras = {{"color", surface.color},
                   {"ambient", surface.ambient},
                   {"diffuse", surface.diffuse},
                   {"specular", surface.specular},
                   {"geometrySampling", surface.geometrySampling == mcWIREFRAME ? "WIREFRAME" : "SOLID"},
                   {"lightSampling", surface.lightSampling == mcFACET ? "FACET" : "VERTEX"},
                   {"textureModes", modes}};
    if (surface.texture)
        extras["texture"] = surface.texture;
    if (surface.mask)
        extras["mask"] = surface.mask;
    return extras;
}

int AddGlbSurface(Glb *glb, const McSurface &surface)
{
    const Json extras = ExtrasOf(surface);
    const auto [known, isNew] = glb->materialIndices.try_emplace(JsonText({extras, surface.opacity}, 0),
                                                                 static_cast<int>(glb->materials.size()));
    if (!isNew)
        return known->second;
    const int texture = surface.texture ? AddTexture(glb, surface.texture) : -1;
    const double opacity = std::clamp(static_cast<double>(surface.opacity), 0.0, 1.0);
    // A picture replaces the colour, so the colour is white: the format multiplies them.
    Json colour = {1.0, 1.0, 1.0, opacity};
    for (size_t i = 0; i < 3 && texture < 0; ++i)
        colour[i] = Linear(surface.color[i]);
    Json shine = {{"baseColorFactor", colour}, {"metallicFactor", metallic}, {"roughnessFactor", roughness}};
    if (texture >= 0)
        shine["baseColorTexture"] = {{"index", texture}};
    Json material = {{"pbrMetallicRoughness", shine}, {"doubleSided", true}, {"extras", extras}};
    if (opacity < 1.0)
        material["alphaMode"] = "BLEND";
    if (surface.mask)
        glb->textureIndices.try_emplace(surface.mask, -1);
    glb->materials.push_back(material);
    return known->second;
}

void ReportMissingTextures(const Glb &glb, Reporter *reporter)
{
    Finding missing = {.kind = FindingKind::GlbTextures, .weight = Weight::Note};
    for (const auto &[name, index] : glb.textureIndices)
        if (index < 0 && missing.count++ == 0)
            missing.names = {{name}};
    if (missing.count != 0)
        ReportFinding(reporter, missing);
}
