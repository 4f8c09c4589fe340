#include "model.h"

void McTransformBegin(void)
{
    const McmScope *scope = McmCurrentScope("McTransformBegin");
    if (scope && !McmAppend(&McmCurrentModel("McTransformBegin")->saved, scope->placement))
        McmNoMemory("McTransformBegin");
}

void McTransformCTM(McMatrix4d *matrix)
{
    McmScope *scope = McmCurrentScope("McTransformCTM");
    if (!scope)
        return;
    if (!matrix)
        return McmError("McTransformCTM", "matrix is null");
    scope->placement = matrix->placement;
}

void McTransformEnd(void)
{
    McmScope *scope = McmCurrentScope("McTransformEnd");
    if (!scope)
        return;
    McmArray<McmPlacement> *saved = &McmCurrentModel("McTransformEnd")->saved; // unnoticed
    if (saved->count == scope->savedBase)
        return McmError("McTransformEnd", "no placement of this scope is saved");
    scope->placement = saved->items[--saved->count];
}
