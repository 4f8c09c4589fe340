#include "model.h"

#include <algorithm>
#include <climits>

// The mesh of the innermost scope; null, with an error, outside clumps and prototypes.
static McmMesh *CurrentMesh(const McmScope *scope, const char *call)
{
    if (!scope)
        return nullptr;
    if (scope->clump)
        return &scope->clump->mesh;
    if (scope->prototype)
        return &scope->prototype->mesh;
    McmError(call, "no clump or prototype is open");
    return nullptr;
}

static McPoint PlacePoint(const McmPlacement *placement, float fx, float fy, float fz)
{
    const double *m = placement->m;
    const double x = fx, y = fy, z = fz;
    return {x * m[0] + y * m[4] + z * m[8] + m[12], x * m[1] + y * m[5] + z * m[9] + m[13],
            x * m[2] + y * m[6] + z * m[10] + m[14]};
}

// Before the first texture co-ordinates are added, fills uvs and hasUV for the earlier points. All or
// nothing: the arrays are as long as points, or empty.
static bool PadUVs(McmMesh *mesh)
{
    const size_t count = mesh->points.count;
    if (mesh->uvs.count == count)
        return true;
    if (!McmResizeStorage(&mesh->uvs, count) || !McmResizeStorage(&mesh->hasUV, count))
        return false;
    std::fill_n(mesh->uvs.items, count, McUV{0.0f, 0.0f});
    std::fill_n(mesh->hasUV.items, count, static_cast<unsigned char>(0));
    mesh->uvs.count = mesh->hasUV.count = count;
    return true;
}

static bool AddUV(McmMesh *mesh, const McUV *uv)
{
    if (!PadUVs(mesh) || !McmReserveOne(&mesh->uvs) || !McmAppend<unsigned char>(&mesh->hasUV, uv != nullptr))
        return false;
    return McmAppend(&mesh->uvs, uv ? *uv : McUV{0.0f, 0.0f});
}

static void AddVertex(const char *call, float x, float y, float z, const McUV *uv)
{
    const McmScope *scope = McmCurrentScope(call);
    McmMesh *mesh = CurrentMesh(scope, call);
    if (!mesh)
        return;
    if (mesh->points.count == INT_MAX)
        return McmError(call, "too many vertices");
    const bool textured = uv || mesh->uvs.count > 0;
    if (!McmReserveOne(&mesh->points) || (textured && !AddUV(mesh, uv)))
        return McmNoMemory(call);
    McmAppend(&mesh->points, PlacePoint(&scope->placement, x, y, z));
}

void McVertex(float x, float y, float z)
{
    AddVertex("McVertex", x, y, z, nullptr);
}

void McVertexExt(float x, float y, float z, McUV *uv, void *)
{
    if (!uv)
        McmError("McVertexExt", "uv is null");
    AddVertex("McVertexExt", x, y, z, uv);
}

void McTriangle(int a, int b, int c)
{
    McmMesh *mesh = CurrentMesh(McmCurrentScope("McTriangle"), "McTriangle");
    if (!mesh)
        return;
    const int count = static_cast<int>(mesh->points.count);
    if (a < 1 || a > count || b < 1 || b > count || c < 1 || c > count)
        return McmError("McTriangle", "no vertex has this number");
    const int surface = McmUseSurface(McmCurrentModel("McTriangle"));
    if (surface < 0 || !McmAppend(&mesh->faces, {{a, b, c}, surface}))
        McmNoMemory("McTriangle");
}

void McProtoInstance(const char *name)
{
    const McmScope *scope = McmCurrentClump("McProtoInstance");
    if (!scope)
        return;
    if (!name)
        return McmError("McProtoInstance", "name is null");
    const McmName *entry = McmIntern(scope->clump->model, name);
    if (!entry || !McmAppend(&scope->clump->instances, {entry, scope->placement}))
        McmNoMemory("McProtoInstance");
}
