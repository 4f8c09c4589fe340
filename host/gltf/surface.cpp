// Converts the surfaces of a model to materials, with the pictures that they name.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
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

// The type of a picture in a supported format, from its first bytes; null for others.
static const char *PictureType(const std::string &bytes)
{
    if (bytes.starts_with(std::string_view("\x89PNG\r\n\x1a\n", 8)) && bytes.size() > 32)
        return "image/png";
    if (bytes.starts_with("\xff\xd8\xff") && bytes.size() > 32)
        return "image/jpeg";
    return nullptr;
}

// The bytes of a picture beside the scene; empty if it isn't one. Links aren't followed: in a folder from
// someone else they may point to other folders.
static std::string ReadPicture(const fs::path &path)
{
    constexpr uintmax_t most = 256u << 20;
    std::error_code failure;
    if (!fs::is_regular_file(fs::symlink_status(path, failure)) || fs::file_size(path, failure) > most)
        return "";
    std::ifstream stream(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    return PictureType(bytes) ? bytes : "";
}

// Finds a picture by the texture's name, or by that name with the extension of a picture.
static std::string FindPicture(const std::string &scenePath, const std::string &texture)
{
    const std::string stem = PathOf(texture).stem().string();
    const std::vector<std::string> names = {texture, stem + ".png", stem + ".jpg", stem + ".jpeg"};
    const fs::path scene = PathOf(scenePath);
    const std::map<std::string, std::string> found = FindBeside(scene, {names.begin(), names.end()});
    for (const std::string &name : names)
        if (const auto file = found.find(name); file != found.end())
            if (std::string bytes = ReadPicture(scene.parent_path() / PathOf(file->second)); !bytes.empty())
                return bytes;
    return "";
}

// The index of the texture; -1 if its picture isn't available.
static int AddTexture(Glb *glb, const std::string &name)
{
    const auto [known, isNew] = glb->textureIndices.try_emplace(name, -1);
    if (!isNew)
        return known->second;
    const std::string bytes = FindPicture(glb->scenePath, name);
    if (bytes.empty())
        return -1;
    const size_t view = AddGlbView(glb, bytes.data(), bytes.size(), 0, 0);
    glb->images.push_back({{"name", name}, {"mimeType", PictureType(bytes)}, {"bufferView", view}});
    glb->textures.push_back({{"source", glb->images.size() - 1}});
    return known->second = static_cast<int>(glb->textures.size() - 1);
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
