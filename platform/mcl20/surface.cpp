#include "model.h"

#include <climits>
#include <cstring>
#include <exception>

// Surfaces are compared as bytes, so that a NaN equals itself; texts are interned and compare by address.
static_assert(sizeof(McSurface) == 7 * sizeof(float) + 3 * sizeof(int) + 2 * sizeof(const char *));

size_t McmSurfaceHash::operator()(const McSurface &surface) const
{
    char bytes[sizeof surface];
    std::memcpy(bytes, &surface, sizeof bytes);
    return std::hash<std::string_view>()({bytes, sizeof bytes});
}

bool McmSurfaceEqual::operator()(const McSurface &a, const McSurface &b) const
{
    return std::memcmp(static_cast<const void *>(&a), &b, sizeof a) == 0;
}

int McmUseSurface(McmModel *model)
{
    if (model->surfaceIndex >= 0)
        return model->surfaceIndex;
    const size_t count = model->surfaces.count;
    if (count == INT_MAX || !McmReserveOne(&model->surfaces))
        return -1;
    try {
        const auto [entry, isNew] = model->surfaceTable.try_emplace(model->surface, static_cast<int>(count));
        if (isNew)
            McmAppend(&model->surfaces, model->surface);
        model->surfaceIndex = entry->second;
    } catch (const std::exception &) {
    }
    return model->surfaceIndex;
}

// The current surface, for a change. Null if no model is open.
static McSurface *ChangeSurface(const char *call)
{
    McmModel *model = McmCurrentModel(call);
    if (!model)
        return nullptr;
    model->surfaceIndex = -1;
    return &model->surface;
}

void McSetSurface(float ambient, float diffuse, float specular)
{
    if (McSurface *surface = ChangeSurface("McSetSurface")) {
        surface->ambient = ambient;
        surface->diffuse = diffuse;
        surface->specular = specular;
    }
}

void McSetSurfaceColor(float red, float green, float blue)
{
    if (McSurface *surface = ChangeSurface("McSetSurfaceColor")) {
        surface->color[0] = red;
        surface->color[1] = green;
        surface->color[2] = blue;
    }
}

void McSetSurfaceOpacity(float opacity)
{
    if (McSurface *surface = ChangeSurface("McSetSurfaceOpacity"))
        surface->opacity = opacity;
}

void McSetSurfaceGeometrySampling(int sampling)
{
    McSurface *surface = ChangeSurface("McSetSurfaceGeometrySampling");
    if (!surface)
        return;
    if (sampling != mcWIREFRAME && sampling != mcSOLID)
        return McmError("McSetSurfaceGeometrySampling", "unknown sampling");
    surface->geometrySampling = sampling;
}

void McSetSurfaceLightSampling(int sampling)
{
    McSurface *surface = ChangeSurface("McSetSurfaceLightSampling");
    if (!surface)
        return;
    if (sampling != mcFACET && sampling != mcVERTEX)
        return McmError("McSetSurfaceLightSampling", "unknown sampling");
    surface->lightSampling = sampling;
}

void McSetSurfaceTextureModes(int modes)
{
    McSurface *surface = ChangeSurface("McSetSurfaceTextureModes");
    if (!surface)
        return;
    if (modes & ~(mcLIT | mcFORESHORTEN | mcFILTER))
        return McmError("McSetSurfaceTextureModes", "unknown texture mode");
    surface->textureModes = modes;
}

// Keeps a text in the open model. Null, with an error, if out of memory.
static const char *KeepText(const char *text, const char *call)
{
    const McmName *entry = McmIntern(McmCurrentModel(call), text);
    if (!entry)
        McmNoMemory(call);
    return entry ? entry->first.c_str() : nullptr;
}

void McSetSurfaceTextureExt(const char *name, const char *mask)
{
    const char *const call = "McSetSurfaceTextureExt";
    McSurface *surface = ChangeSurface(call);
    if (!surface)
        return;
    if (!name || !mask)
        return McmError(call, "name or mask is null");
    const char *keptName = KeepText(name, call);
    const char *keptMask = keptName ? KeepText(mask, call) : nullptr;
    if (!keptMask)
        return;
    surface->texture = keptName;
    surface->mask = keptMask;
}

void McSetSurfaceTexture(const char *name)
{
    McSurface *surface = ChangeSurface("McSetSurfaceTexture");
    if (!surface)
        return;
    const char *kept = name ? KeepText(name, "McSetSurfaceTexture") : nullptr;
    if (name && !kept)
        return;
    surface->texture = kept;
    surface->mask = nullptr;
}
