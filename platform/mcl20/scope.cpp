#include "model.h"

#include <climits>
#include <new>

static McmModel *openModel;

McmModel *McmCurrentModel(const char *call)
{
    if (!openModel)
        McmError(call, "no model is open");
    return openModel;
}

McmScope *McmCurrentScope(const char *call)
{
    const McmModel *model = McmCurrentModel(call);
    return model ? &model->scopes.items[model->scopes.count - 1] : nullptr;
}

McmScope *McmCurrentClump(const char *call)
{
    McmScope *scope = McmCurrentScope(call);
    if (scope && !scope->clump) {
        McmError(call, scope->prototype ? "a prototype is open" : "no clump is open");
        return nullptr;
    }
    return scope;
}

void McmForgetOpenModel(const McmModel *model)
{
    if (model == openModel)
        openModel = nullptr;
}

void McModelBegin(void)
{
    if (openModel)
        return McmError("McModelBegin", "a model is open already");
    openModel = McmNewModel();
    if (!openModel)
        McmNoMemory("McModelBegin");
}

// Ends the innermost scope. Saved placements left in it are an error and are discarded.
static void CloseScope(McmModel *model, const char *call)
{
    const McmScope *scope = &model->scopes.items[model->scopes.count - 1];
    if (model->saved.count > scope->savedBase) {
        McmError(call, "a saved placement wasn't brought back");
        model->saved.count = scope->savedBase;
    }
    if (scope->clump) {
        McmTrimMesh(&scope->clump->mesh);
        McmTrim(&scope->clump->instances);
    } else if (scope->prototype)
        McmTrimMesh(&scope->prototype->mesh);
    --model->scopes.count;
}

void McModelEnd(void)
{
    McmModel *model = McmCurrentModel("McModelEnd");
    if (!model)
        return;
    if (model->scopes.count > 1)
        McmError("McModelEnd", "a clump or a prototype is still open");
    while (model->scopes.count > 0)
        CloseScope(model, "McModelEnd");
    openModel = nullptr;
    if (!model->clumpGiven)
        return McmDeleteModel(model);
    McmRelease(&model->scopes);
    McmRelease(&model->saved);
    McmTrim(&model->clumps);
    McmTrim(&model->prototypes);
    McmTrim(&model->surfaces);
    model->surfaceTable.clear();
}

static void LinkClump(McmModel *model, McClump *clump)
{
    McClump *parent = clump->parent;
    McClump **first = parent ? &parent->firstChild : &model->firstClump;
    McClump **last = parent ? &parent->lastChild : &model->lastClump;
    (*last ? (*last)->nextSibling : *first) = clump;
    *last = clump;
}

void McClumpBegin(void)
{
    const McmScope *scope = McmCurrentScope("McClumpBegin");
    if (!scope)
        return;
    if (scope->prototype)
        return McmError("McClumpBegin", "a prototype is open");

    McmModel *model = openModel;
    McClump *clump = new (std::nothrow) McClump{};
    if (!clump || !McmReserveOne(&model->clumps) ||
        !McmAppend(&model->scopes, {clump, nullptr, McmIdentity, model->saved.count})) {
        delete clump;
        return McmNoMemory("McClumpBegin");
    }
    const McmScope *outer = &model->scopes.items[model->scopes.count - 2]; // scope may have moved
    clump->model = model;
    clump->parent = outer->clump;
    clump->placement = outer->placement;
    clump->world = outer->placement;
    if (clump->parent)
        McmMultiply(&clump->placement, &clump->parent->world, &clump->world);
    McmAppend(&model->clumps, clump);
    LinkClump(model, clump);
}

void McClumpEnd(McClump **clump)
{
    const McmScope *scope = McmCurrentClump("McClumpEnd");
    if (!scope)
        return;
    if (clump) {
        *clump = scope->clump;
        openModel->clumpGiven = true;
    } else
        McmError("McClumpEnd", "clump is null");
    CloseScope(openModel, "McClumpEnd");
}

void McSetTag(int tag)
{
    if (const McmScope *scope = McmCurrentClump("McSetTag"))
        scope->clump->tag = tag;
}

void McSetHints(int hints)
{
    const McmScope *scope = McmCurrentClump("McSetHints");
    if (!scope)
        return;
    if (hints & ~(mcHS | mcEDITABLE))
        return McmError("McSetHints", "unknown hint");
    scope->clump->hints = hints;
}

void McProtoBegin(const char *name)
{
    const McmScope *scope = McmCurrentScope("McProtoBegin");
    if (!scope)
        return;
    if (scope->clump || scope->prototype)
        return McmError("McProtoBegin", "a clump or a prototype is open");
    if (!name)
        return McmError("McProtoBegin", "name is null");

    McmModel *model = openModel;
    if (model->prototypes.count == INT_MAX)
        return McmError("McProtoBegin", "too many prototypes");
    McmName *entry = McmIntern(model, name);
    McmPrototype *prototype = new (std::nothrow) McmPrototype{};
    if (!entry || !prototype || !McmReserveOne(&model->prototypes) ||
        !McmAppend(&model->scopes, {nullptr, prototype, McmIdentity, model->saved.count})) {
        delete prototype;
        return McmNoMemory("McProtoBegin");
    }
    if (entry->second >= 0)
        McmError("McProtoBegin", "the model has a prototype of this name already");
    prototype->name = entry;
    entry->second = static_cast<int>(model->prototypes.count);
    McmAppend(&model->prototypes, prototype);
}

void McProtoEnd(void)
{
    const McmScope *scope = McmCurrentScope("McProtoEnd");
    if (!scope)
        return;
    if (!scope->prototype)
        return McmError("McProtoEnd", scope->clump ? "a clump is open" : "no prototype is open");
    CloseScope(openModel, "McProtoEnd");
}
