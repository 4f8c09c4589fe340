#include "model.h"

#include <new>

static const McSurface initialSurface = {0.0f, 1.0f,    0.0f,   {1.0f, 1.0f, 1.0f}, 1.0f, mcSOLID, mcVERTEX,
                                         0,    nullptr, nullptr};

McmModel *McmNewModel()
{
    try {
        McmModel *model = new McmModel{};
        model->surface = initialSurface;
        model->surfaceIndex = -1;
        if (McmAppend(&model->scopes, {nullptr, nullptr, McmIdentity, 0}))
            return model;
        delete model;
    } catch (const std::bad_alloc &) {
    }
    return nullptr;
}

static void McmReleaseMesh(McmMesh *mesh)
{
    McmRelease(&mesh->points);
    McmRelease(&mesh->uvs);
    McmRelease(&mesh->hasUV);
    McmRelease(&mesh->faces);
}

void McmTrimMesh(McmMesh *mesh)
{
    McmTrim(&mesh->points);
    McmTrim(&mesh->uvs);
    McmTrim(&mesh->hasUV);
    McmTrim(&mesh->faces);
}

void McmDeleteModel(McmModel *model)
{
    for (size_t i = 0; i < model->clumps.count; ++i) {
        McmReleaseMesh(&model->clumps.items[i]->mesh);
        McmRelease(&model->clumps.items[i]->instances);
        delete model->clumps.items[i];
    }
    for (size_t i = 0; i < model->prototypes.count; ++i) {
        McmReleaseMesh(&model->prototypes.items[i]->mesh);
        delete model->prototypes.items[i];
    }
    McmRelease(&model->clumps);
    McmRelease(&model->prototypes);
    McmRelease(&model->scopes);
    McmRelease(&model->saved);
    McmRelease(&model->surfaces);
    delete model;
}

McmName *McmIntern(McmModel *model, const char *text)
{
    try {
        return &*model->names.try_emplace(text, -1).first;
    } catch (const std::exception &) {
        return nullptr;
    }
}
