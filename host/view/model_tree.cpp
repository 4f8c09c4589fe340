#include <cstdio>

#include "model.h"
#include "view.h"

// Deeper clumps are indented no further, and say how deep they are: a chain of clumps can be 32,769 deep.
static const int indentMost = 12;

static std::string Indent(int depth)
{
    return std::string(static_cast<size_t>(depth < indentMost ? depth : indentMost) * 2, ' ');
}

static std::string PlacementLine(const double *m)
{
    return "placement (" + NumbersText(m) + ") (" + NumbersText(m + 4) + ") (" + NumbersText(m + 8) +
           ") at " + NumbersText(m + 12) + '\n';
}

static std::string GeometryText(const McGeometryView &geometry)
{
    return Counted(geometry.vertexCount, "vertex", "vertices") + ", " +
           Counted(geometry.faceCount, "triangle");
}

static void GrowByAll(Bounds *bounds, const McGeometryView &geometry, const double *placement)
{
    for (size_t i = 0; i < geometry.vertexCount; ++i)
        Grow(bounds, Place(geometry.points[i], placement));
}

// The bounds in the model of a clump's own geometry and of its instances, with a line for each of these.
static Bounds AddInstances(std::string *lines, const McClump *clump, const McClumpView *view,
                           const std::string &indent)
{
    Bounds bounds = NoBounds();
    GrowByAll(&bounds, view->geometry, view->world);
    for (size_t i = 0; i < view->instanceCount; ++i) {
        McInstanceView instance = {};
        McPrototypeView prototype = {};
        McGetInstance(clump, i, &instance);
        *lines += indent + "instance of " + Visible(instance.name) + ", ";
        if (instance.prototype < 0)
            *lines += "which is no prototype, ";
        else if (McGetPrototype(clump, static_cast<size_t>(instance.prototype), &prototype)) {
            double world[16];
            Multiply(instance.placement, view->world, world);
            GrowByAll(&bounds, prototype.geometry, world);
        }
        *lines += PlacementLine(instance.placement);
    }
    return bounds;
}

static void PrintClump(const Mc3dsFile *scene, const McClump *clump, const McClumpView *view, int depth)
{
    std::string lines = Indent(depth);
    if (depth >= indentMost)
        lines += "depth " + std::to_string(depth) + ": ";
    lines += "clump " + std::to_string(view->tag);
    // Tag 1 is the clump around the scene; an object has its index + 2.
    if (view->tag >= 2 && static_cast<uint32_t>(view->tag) - 2 < scene->objectCount)
        lines += ' ' + Visible(scene->objects[view->tag - 2].safeName);
    lines += ": ";
    const std::string indent = Indent(depth) + "  . ";
    lines += GeometryText(view->geometry) + '\n' + indent + PlacementLine(view->placement);
    const Bounds bounds = AddInstances(&lines, clump, view, indent);
    if (bounds.least[0] <= bounds.most[0] && bounds.least[1] <= bounds.most[1] &&
        bounds.least[2] <= bounds.most[2])
        lines += indent + "bounds " + NumbersText(bounds.least) + " to " + NumbersText(bounds.most) + '\n';
    std::fwrite(lines.data(), 1, lines.size(), stdout);
}

static void PrintHead(const McClump *clump, const McModelView *model)
{
    std::string lines = "model: " + Counted(model->clumpCount, "clump") + ", " +
                        Counted(model->prototypeCount, "prototype") + ", " +
                        Counted(model->surfaceCount, "surface") + '\n';
    for (size_t i = 0; i < model->prototypeCount; ++i) {
        McPrototypeView prototype = {};
        McGetPrototype(clump, i, &prototype);
        lines += "prototype " + Visible(prototype.name) + ": " + GeometryText(prototype.geometry) + '\n';
    }
    std::fwrite(lines.data(), 1, lines.size(), stdout);
}

void PrintModel(const Mc3dsFile *scene, const McClump *clump)
{
    McModelView model = {};
    if (!McGetModel(clump, &model)) {
        ReportWarning("the model has no clump: no object of the scene is at the top of its hierarchy");
        return;
    }
    PrintHead(clump, &model);
    VisitClumps(model, [scene](const McClump *at, const McClumpView &view, int depth) {
        PrintClump(scene, at, &view, depth);
    });
}

void ReportModelErrors()
{
    if (const size_t errors = McErrorCount(); errors != 0)
        ReportWarning("the Meshcaster library counted " + Counted(errors, "error") +
                      (errors == 1 ? ": " : ", the first: ") + McFirstError());
    McClearErrors();
}
