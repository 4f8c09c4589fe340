#include "chunks.h"
#include "reader.h"

// Static because a map chunk without a MAT_MAPNAME takes the last name read, even from another file.
static char mapName[128];

static const char *const shadingLines[] = {"\tShading\t\tWireframe", "\tShading\t\tFlat",
                                           "\tShading\t\tGouraud", "\tShading\t\tPhong",
                                           "\tShading\t\tMetal"};
constexpr int shadingCount = 5;

// Invalid values, so that FindFault notices missing chunks.
static void Mc3dsMaterialInit(Mc3dsMaterial *material)
{
    *material = {};
    for (int i = 0; i < 3; ++i)
        material->ambient[i] = material->diffuse[i] = material->specular[i] = 2.0f;
    material->shininess = material->transparency = 2.0f;
}

// Colours, percentages and maps read their first sub-chunk without a check against the parent's end. An empty
// parent reads the chunk after it; the surrounding walk then corrects the position.

void Mc3dsReadColour(Mc3dsFile *file, float colour[3])
{
    constexpr float byteToFloat = 0.003921569f; // dividing by 255 gives other bits for some bytes
    Mc3dsChunk chunk;
    Mc3dsReadChunkHeader(file, &chunk);
    switch (chunk.tag) {
    case COLOR_F: Mc3dsReadFloats(file, colour, 3); break;
    case COLOR_24:
        for (int i = 0; i < 3; ++i)
            colour[i] = static_cast<float>(Mc3dsReadByte(file) * static_cast<double>(byteToFloat));
        break;
    default: Mc3dsError(0, Mc3dsReportKind::BadColour, "Error parsing colour");
    }
    Mc3dsSeek(file, chunk.end); // unnoticed
}

static float ReadPercentage(Mc3dsFile *file)
{
    float value = 0.0f;
    Mc3dsChunk chunk;
    Mc3dsReadChunkHeader(file, &chunk);
    switch (chunk.tag) {
    case INT_PERCENTAGE: value = static_cast<float>(Mc3dsReadU16(file) * static_cast<double>(0.01f)); break;
    case FLOAT_PERCENTAGE: value = Mc3dsReadFloat(file); break;
    default: Mc3dsError(2, Mc3dsReportKind::BadPercentage, "Error parsing percentage");
    }
    Mc3dsSeek(file, chunk.end);
    return value;
}

static const char *Mc3dsReadMapName(Mc3dsFile *file, const Mc3dsChunk *chunk)
{
    for (Mc3dsChunk child = {}; Mc3dsNextChunk(file, chunk, &child);)
        if (child.tag == MAT_MAPNAME)
            Mc3dsCopyText(mapName, sizeof mapName, Mc3dsReadString(file), "Map name");
    return mapName;
}

// The first map of a kind is kept.
static void ReadMap(Mc3dsFile *file, const Mc3dsChunk *chunk, char field[16], const char *alreadyDefined)
{
    if (field[0] != '\0') {
        Mc3dsError(2, Mc3dsReportKind::MapTwice, "%s", alreadyDefined);
        return;
    }
    ReadPercentage(file); // the strength of the map, which surfaces don't have
    Mc3dsCopyText(field, 16, Mc3dsReadMapName(file, chunk), "Map name");
}

static int32_t ReadShading(Mc3dsFile *file)
{
    const uint16_t code = Mc3dsReadU16(file);
    return code < shadingCount ? code + 1 : 0;
}

static bool IsFraction(float value)
{
    return value >= 0.0f && value <= 1.0f;
}

static bool IsColour(const float colour[3])
{
    return IsFraction(colour[0]) && IsFraction(colour[1]) && IsFraction(colour[2]);
}

static const char *FindFault(const Mc3dsMaterial *material)
{
    if (material->name[0] == '\0')
        return "Invalid Material Name";
    if (!IsColour(material->ambient))
        return "Invalid Material Ambient";
    if (!IsColour(material->diffuse))
        return "Invalid Material Diffuse";
    if (!IsColour(material->specular))
        return "Invalid Material Specular";
    if (!IsFraction(material->shininess))
        return "Invalid Material Shininess";
    if (!IsFraction(material->transparency))
        return "Invalid Material Transparency";
    if (material->shading < 1 || material->shading > shadingCount)
        return "Invalid Material Shading";
    return nullptr;
}

static void DumpColour(const char *title, const float colour[3])
{
    Mc3dsMessage(2, "\t%s(%f, %f, %f)", title, static_cast<double>(colour[0]), static_cast<double>(colour[1]),
                 static_cast<double>(colour[2]));
}

static void DumpMaterial(const Mc3dsMaterial *material)
{
    Mc3dsMessage(1, "Material <%s>", material->name);
    DumpColour("Ambient\t\t", material->ambient);
    DumpColour("Diffuse\t\t", material->diffuse);
    DumpColour("Specular\t", material->specular);
    Mc3dsMessage(2, "%s", shadingLines[material->shading - 1]);
    Mc3dsMessage(2, "\tShininess\t%f", static_cast<double>(material->shininess));
    Mc3dsMessage(2, "\tTransparency\t%f", static_cast<double>(material->transparency));
    if (material->textureMap[0] != '\0')
        Mc3dsMessage(2, "\tTexture\t\t<%s>", material->textureMap);
    if (material->reflectionMap[0] != '\0')
        Mc3dsMessage(2, "\tEnvironment\t<%s>", material->reflectionMap);
    Mc3dsMessage(2, "%s", "");
}

static void Mc3dsAddMaterial(Mc3dsFile *file, const Mc3dsMaterial *material)
{
    if (const char *fault = FindFault(material)) {
        Mc3dsLoseMaterial(file, material->name, fault);
        Mc3dsError(1, Mc3dsReportKind::InvalidMaterial, "%s", fault);
        return;
    }
    const auto count = static_cast<uint64_t>(file->materialCount);
    void *materials = Mc3dsResize(file->materials, count + 1, sizeof *material);
    if (!materials) {
        Mc3dsError(0, Mc3dsReportKind::OutOfMemory, "malloc failed allocating global material");
        return;
    }
    file->materials = static_cast<Mc3dsMaterial *>(materials);
    file->materials[file->materialCount++] = *material;
    DumpMaterial(material);
}

static void ReadUnsupported(Mc3dsFile *file, uint16_t tag)
{
    switch (tag) {
    case MAT_XPFALL:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::TransparencyFalloff, 2,
                             "MAT_XPFALL - Transparency falloff not currently supported by Meshcaster");
        break;
    case MAT_REFBLUR:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::ReflectionBlur, 2,
                             "MAT_REFBLUR - Reflection blurring not currently supported by Meshcaster");
        break;
    case MAT_TWO_SIDE:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::TwoSided, 2,
                             "MAT_TWO_SIDE - Two sided materials not currently supported by Meshcaster");
        break;
    case MAT_DECAL:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::Decal, 2,
                             "MAT_DECAL - Material Decal not currently supported by Meshcaster");
        break;
    case MAT_BUMPMAP:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::BumpMap, 2,
                             "MAT_BUMPMAP - Bump Maps not currently supported by Meshcaster");
        break;
    case MAT_ACUBIC: // hosts expect the neighbour's name in this text
        Mc3dsSkipUnsupported(
            file, Mc3dsUnsupported::AutomaticReflection, 2,
            "MAT_REFBLUR - Automatic Environment Maps not currently supported by Meshcaster");
        break;
    case MAT_ADDITIVE:
    case MAT_USE_XPFALL:
    case MAT_USE_REFBLUR:
    case MAT_SXP_TEXT_DATA:
    case MAT_SXP_OPAC_DATA:
    case MAT_SXP_UNNAMED_DATA: break;
    default: Mc3dsIgnoreChunk(file, tag);
    }
}

void Mc3dsReadMaterial(Mc3dsFile *file, const Mc3dsChunk *chunk)
{
    Mc3dsMaterial material;
    Mc3dsMaterialInit(&material);
    for (Mc3dsChunk child = {}; Mc3dsNextChunk(file, chunk, &child);) {
        switch (child.tag) {
        case MAT_NAME:
            Mc3dsCopyText(material.name, sizeof material.name, Mc3dsReadString(file), "Material name");
            break;
        case MAT_AMBIENT: Mc3dsReadColour(file, material.ambient); break;
        case MAT_DIFFUSE: Mc3dsReadColour(file, material.diffuse); break;
        case MAT_SPECULAR: Mc3dsReadColour(file, material.specular); break;
        case MAT_SHININESS: material.shininess = ReadPercentage(file); break;
        case MAT_TRANSPARENCY: material.transparency = ReadPercentage(file); break;
        case MAT_SHADING: material.shading = ReadShading(file); break;
        case MAT_TEXMAP: ReadMap(file, &child, material.textureMap, "Texture Map already defined"); break;
        case MAT_OPACMAP: ReadMap(file, &child, material.opacityMap, "Opacity Map already defined"); break;
        case MAT_REFLMAP:
            ReadMap(file, &child, material.reflectionMap, "Environment Map already defined");
            break;
        default: ReadUnsupported(file, child.tag);
        }
    }
    Mc3dsAddMaterial(file, &material);
}
