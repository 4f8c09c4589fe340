#include "model.h"

static McGeometryView ViewMesh(const McmMesh *mesh)
{
    return {mesh->points.count, mesh->points.items, mesh->uvs.count > 0 ? mesh->uvs.items : nullptr,
            mesh->hasUV.items,  mesh->faces.count,  mesh->faces.items};
}

int McGetClump(const McClump *clump, McClumpView *view)
{
    if (!clump || !view)
        return 0;
    *view = {clump->tag,         clump->hints,           clump->placement.m,
             clump->world.m,     clump->parent,          clump->firstChild,
             clump->nextSibling, ViewMesh(&clump->mesh), clump->instances.count};
    return 1;
}

int McGetModel(const McClump *clump, McModelView *view)
{
    if (!clump || !view)
        return 0;
    const McmModel *model = clump->model;
    *view = {model->firstClump, model->clumps.count, model->prototypes.count, model->surfaces.count,
             model->surfaces.items};
    return 1;
}

int McGetInstance(const McClump *clump, size_t index, McInstanceView *view)
{
    if (!clump || !view || index >= clump->instances.count)
        return 0;
    const McmInstance *instance = &clump->instances.items[index];
    *view = {instance->name->first.c_str(), instance->placement.m, instance->name->second};
    return 1;
}

int McGetPrototype(const McClump *clump, size_t index, McPrototypeView *view)
{
    if (!clump || !view || index >= clump->model->prototypes.count)
        return 0;
    const McmPrototype *prototype = clump->model->prototypes.items[index];
    *view = {prototype->name->first.c_str(), ViewMesh(&prototype->mesh)};
    return 1;
}

void McFreeModel(McClump *clump)
{
    if (!clump)
        return;
    McmForgetOpenModel(clump->model);
    McmDeleteModel(clump->model);
}
