#include "check_scene.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "mclib.h"
#if defined(MC3DS_HAVE_MCLMODEL)
#include "mclmodel.h"
#endif

#if defined(_WIN32)
constexpr char nowhere[] = "NUL";
#else
constexpr char nowhere[] = "/dev/null";
#endif

#define REQUIRE(condition)                                                                                   \
    if (!(condition))                                                                                        \
    return "violated: " #condition

template <size_t size>
static bool Ends(const char (&field)[size])
{
    return std::memchr(field, '\0', size) != nullptr;
}

// Reads the first and the last byte, so that the sanitizers report an array that is too short.
template <class Entry>
static bool Reaches(const Entry *entries, uint64_t count)
{
    if (entries && count != 0) {
        (void)*reinterpret_cast<const volatile unsigned char *>(entries);
        (void)*(reinterpret_cast<const volatile unsigned char *>(entries + count) - 1);
    }
    return entries || count == 0;
}

static bool IsFraction(float value)
{
    return value >= 0.0f && value <= 1.0f;
}

static std::string CheckMaterial(const Mc3dsMaterial &material)
{
    REQUIRE(Ends(material.name) && material.name[0] != '\0');
    REQUIRE(Ends(material.textureMap) && Ends(material.opacityMap) && Ends(material.reflectionMap));
    for (const float *colour : {material.ambient, material.diffuse, material.specular})
        REQUIRE(std::all_of(colour, colour + 3, IsFraction));
    REQUIRE(IsFraction(material.shininess) && IsFraction(material.transparency));
    REQUIRE(material.shading >= 1 && material.shading <= 5);
    return "";
}

static std::string CheckMesh(const Mc3dsFile &file, const Mc3dsObject &object)
{
    const auto vertexCount = static_cast<uint32_t>(object.vertexCount);
    const auto faceCount = static_cast<uint32_t>(object.faceCount);
    const auto materialCount = static_cast<uint32_t>(file.materialCount);
    REQUIRE(vertexCount <= 0xFFFF && Reaches(object.vertices, vertexCount));
    REQUIRE(faceCount <= 0xFFFF && Reaches(object.faces, faceCount));
    REQUIRE(object.hasTexture == 0 || (object.hasTexture == 1 && vertexCount != 0));
    for (uint32_t i = 0; i < faceCount; ++i) {
        const Mc3dsFace &face = object.faces[i];
        REQUIRE(static_cast<uint32_t>(face.material) < materialCount && (face.a | face.b | face.c) <= 0xFFFF);
    }
    REQUIRE(Reaches(object.groups, object.groupCount));
    for (uint32_t i = 0; i < object.groupCount; ++i) {
        const Mc3dsMaterialGroup &group = object.groups[i];
        REQUIRE(static_cast<uint32_t>(group.material) < materialCount);
        REQUIRE(group.count != 0 && Reaches(group.faces, group.count));
        REQUIRE(*std::max_element(group.faces, group.faces + group.count) < faceCount);
    }
    for (int i = 0; i < 5; ++i) {
        const float low = object.boundsMin[i], high = object.boundsMax[i];
        const bool nothingSeen = low == Mc3dsLargest && high == -Mc3dsLargest;
        REQUIRE(low <= high || nothingSeen);
        // NaN co-ordinates don't change the bounds and stay NaN in object space.
        REQUIRE(!nothingSeen || i >= 3 || vertexCount == 0 || std::isnan(object.vertices[0].x));
    }
    return "";
}

static std::string CheckObject(const Mc3dsFile &file, const Mc3dsObject &object)
{
    REQUIRE(Ends(object.name) && Ends(object.safeName) && Ends(object.instanceName));
    REQUIRE(std::strlen(object.name) <= 11 && std::strlen(object.safeName) == std::strlen(object.name));
    REQUIRE(std::none_of(object.safeName, object.safeName + 11, Mc3dsIsSpace));
    REQUIRE(Reaches(object.positionKeys, object.positionKeyCount));
    REQUIRE(Reaches(object.rotationKeys, object.rotationKeyCount));
    REQUIRE(Reaches(object.scaleKeys, object.scaleKeyCount));
    REQUIRE(object.nodeId < static_cast<int64_t>(file.nodeCounter));
    REQUIRE(object.nodeId >= 0 || (object.nodeId == -1 && object.parentNode == 0xFFFF));
    REQUIRE((object.frames != nullptr) == (file.hasAnimation != 0));
    REQUIRE(!object.frames || Reaches(object.frames, uint64_t{file.frameCount} + 1));
    REQUIRE(object.hasFrames == 0 || (object.hasFrames == 1 && object.frames));
    return CheckMesh(file, object);
}

std::string CheckScene(const Mc3dsFile *file)
{
    if (!file)
        return "";
    REQUIRE(file->stream == nullptr && file->load == nullptr && Ends(file->fileName));
    REQUIRE(file->materialCount >= 1 && Reaches(file->materials, static_cast<uint64_t>(file->materialCount)));
    REQUIRE(std::strcmp(file->materials[0].name, "default") == 0 && file->materials[0].shading == 2);
    for (int32_t i = 0; i < file->materialCount; ++i)
        if (const std::string fault = CheckMaterial(file->materials[i]); !fault.empty())
            return fault + ", material " + std::to_string(i);
    REQUIRE(Reaches(file->objects, file->objectCount) && (file->objectCount != 0 || !file->objects));
    REQUIRE(file->hasAnimation == 0 || (file->hasAnimation == 1 && file->frameCount != 0));
    REQUIRE(Reaches(file->skipped, file->skippedCount) && (file->skippedCount != 0 || !file->skipped));
    for (uint32_t i = 0; i < file->skippedCount; ++i)
        REQUIRE(Ends(file->skipped[i].name) && file->skipped[i].kind <= Mc3dsSkippedKind::HiddenMesh);
    const uint32_t *ignored = file->unknownChunks;
    REQUIRE(!ignored ||
            std::any_of(ignored, ignored + Mc3dsTagCount, [](uint32_t count) { return count != 0; }));
    std::set<int32_t> nodes;
    uint32_t roots = 0;
    for (uint32_t i = 0; i < file->objectCount; ++i) {
        const Mc3dsObject &object = file->objects[i];
        if (const std::string fault = CheckObject(*file, object); !fault.empty())
            return fault + ", object " + std::to_string(i);
        roots += object.parentNode == 0xFFFF;
        // Node numbers are unique, so an object has at most one parent. A file may contain a cycle of parent
        // links, but no root reaches it.
        REQUIRE(object.nodeId == -1 || nodes.insert(object.nodeId).second);
    }
    REQUIRE(file->rootCount == roots && file->dummyCount <= file->objectCount);
    return "";
}

std::string CheckOutput(const Mc3dsFile *file, uint32_t flags)
{
    const bool direct = (flags & MC3DS_DIRECT) != 0;
#if !defined(MC3DS_HAVE_MCLMODEL)
    if (direct) // the model can't be freed
        return "";
#endif
    const uint32_t surfaceFlags = (flags & MC3DS_FLAT) != 0 ? 0x1F : MC3DS_TEXTURES;
    const char *outputFile = (flags & MC3DS_PER_OBJECT) != 0 ? "out.mcx" : nowhere;
    Mc3dsOptions options = {flags, surfaceFlags, 0,    "Scene", outputFile, nowhere, nowhere,
                            "tif", 1.0f,         1.0f, 0.3f,    0.6f,       0.1f,    0.5f};
    McClump *clump = nullptr;
    Mc3dsOutput(file, &options, &clump);
    REQUIRE(direct || clump == nullptr);
#if defined(MC3DS_HAVE_MCLMODEL)
    McFreeModel(clump);
    // Objects with the same name give prototypes with the same name: an error for the stand-in.
    const std::string error = (flags & MC3DS_PROTOS) != 0 ? "" : McFirstError();
    McClearErrors();
    if (!error.empty())
        return error;
#endif
    return CheckScene(file);
}
