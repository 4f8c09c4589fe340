#include <cstdlib>
#include <cstring>

#include "output.h"

static float Reduce(const Mc3dsOptions *options, const float colour[3])
{
    const double red = options->redWeight, green = options->greenWeight, blue = options->blueWeight;
    return static_cast<float>((colour[0] * red + colour[1] * green) + colour[2] * blue);
}

static void EmitCoefficients(Mc3dsWriter *writer, const Mc3dsMaterial *material)
{
    constexpr float ambientFloor = 0.1f; // shadows are never quite black; the other two have no minimum
    float ambient = Reduce(writer->options, material->ambient);
    if (ambient < ambientFloor)
        ambient = ambientFloor;
    Mc3dsEmitSurfaceCoefficients(writer, ambient, Reduce(writer->options, material->diffuse),
                                 Reduce(writer->options, material->specular));
}

static float Opacity(const Mc3dsOptions *options, const Mc3dsMaterial *material)
{
    if ((options->flags & MC3DS_OPACITY) && material->transparency > 0.0f)
        return options->opacity;
    return static_cast<float>(1.0 - static_cast<double>(material->transparency));
}

// These are DOS names: only a backslash separates path components. The extension is measured here because a
// callback may have changed the options since the last surface.
char *Mc3dsMakeMapName(const Mc3dsOptions *options, const char field[16])
{
    const bool replaces = (options->surfaceFlags & MC3DS_TEXTURE_EXTENSION) != 0;
    const char *extension = replaces ? Mc3dsOptionText(options->textureExtension) : "";
    auto *name =
        static_cast<char *>(std::malloc(sizeof Mc3dsMaterial::textureMap + 1 + std::strlen(extension)));
    if (!name) {
        Mc3dsError(0, Mc3dsReportKind::OutOfMemory,
                   "Out of memory for the name of texture <%s>, which is left out", field);
        return nullptr;
    }
    std::strcpy(name, field);
    for (size_t i = replaces ? std::strlen(name) : 0; i > 0 && name[i - 1] != '\\'; --i)
        if (name[i - 1] == '.') {
            name[i - 1] = '\0';
            break;
        }
    if (extension[0] != '\0') {
        std::strcat(name, ".");
        std::strcat(name, extension);
    }
    return name;
}

static void EmitNamedTexture(Mc3dsWriter *writer, const char *name, const char *mask)
{
    const bool keep = (writer->options->surfaceFlags & MC3DS_TEXTURES) != 0;
    Mc3dsEmitTextureModes(writer);
    if (mask)
        keep ? Mc3dsEmitTextureExt(writer, name, mask) : Mc3dsEmitTextureNullMasked(writer, name, mask);
    else
        keep ? Mc3dsEmitTexture(writer, name) : Mc3dsEmitTextureNullNamed(writer, name);
}

// A reflection map replaces a missing texture map. Only a texture map can have a mask.
static void EmitTextures(Mc3dsWriter *writer, const Mc3dsMaterial *material)
{
    const bool textured = material->textureMap[0] != '\0';
    if (!textured && material->reflectionMap[0] == '\0') {
        Mc3dsEmitTextureNull(writer);
        return;
    }
    const bool masked = textured && material->opacityMap[0] != '\0';
    const char *map = textured ? material->textureMap : material->reflectionMap;
    char *name = Mc3dsMakeMapName(writer->options, map);
    char *mask = name && masked ? Mc3dsMakeMapName(writer->options, material->opacityMap) : nullptr;
    if (name && (mask || !masked))
        EmitNamedTexture(writer, name, mask);
    else
        Mc3dsEmitTextureNull(writer);
    std::free(name);
    std::free(mask);
}

void Mc3dsEmitSurface(Mc3dsWriter *writer, const Mc3dsMaterial *material)
{
    Mc3dsEmitSeparator(writer);
    EmitCoefficients(writer, material);
    Mc3dsEmitColor(writer, material->diffuse);
    Mc3dsEmitOpacity(writer, Opacity(writer->options, material));
    Mc3dsEmitGeometrySampling(writer, material->shading == 1);
    Mc3dsEmitLightSampling(writer, material->shading <= 2);
    EmitTextures(writer, material);
}
