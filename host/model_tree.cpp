#include <charconv>
#include <cstdio>
#include <limits>

#include "host.h"
#include "mclmodel.h"

// Deeper clumps are indented no further, and say how deep they are: a chain of clumps can be 32,769 deep.
static const int indentMost = 12;

struct Bounds {
    double least[3], most[3];
};

static std::string Indent(int depth)
{
    return std::string(static_cast<size_t>(depth < indentMost ? depth : indentMost) * 2, ' ');
}

static void AddNumber(std::string *line, double value)
{
    char digits[40];
    // The sum makes 0 of -0.
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value + 0.0, std::chars_format::general, 6).ptr;
    line->append(digits, end);
}

static void AddNumbers(std::string *line, const double *values)
{
    for (int i = 0; i < 3; ++i) {
        if (i > 0)
            *line += ' ';
        AddNumber(line, values[i]);
    }
}

static void AddPlacement(std::string *line, const double *m)
{
    *line += "placement (";
    AddNumbers(line, m);
    *line += ") (";
    AddNumbers(line, m + 4);
    *line += ") (";
    AddNumbers(line, m + 8);
    *line += ") at ";
    AddNumbers(line, m + 12);
    *line += '\n';
}

static void AddCount(std::string *line, size_t count, const char *one, const char *many)
{
    *line += std::to_string(count) + ' ' + (count == 1 ? one : many);
}

static void AddGeometry(std::string *line, const McGeometryView *geometry)
{
    AddCount(line, geometry->vertexCount, "vertex", "vertices");
    *line += ", ";
    AddCount(line, geometry->faceCount, "triangle", "triangles");
}

static void Multiply(const double *a, const double *b, double *out)
{
    for (int row = 0; row < 16; row += 4)
        for (int column = 0; column < 4; ++column)
            out[row + column] = a[row] * b[column] + a[row + 1] * b[4 + column] + a[row + 2] * b[8 + column] +
                                a[row + 3] * b[12 + column];
}

static void Grow(Bounds *bounds, const McGeometryView *geometry, const double *m)
{
    for (size_t i = 0; i < geometry->vertexCount; ++i) {
        const McPoint *p = &geometry->points[i];
        for (int axis = 0; axis < 3; ++axis) {
            const double value = p->x * m[axis] + p->y * m[4 + axis] + p->z * m[8 + axis] + m[12 + axis];
            // Neither holds for a value that is no number.
            if (value < bounds->least[axis])
                bounds->least[axis] = value;
            if (value > bounds->most[axis])
                bounds->most[axis] = value;
        }
    }
}

// The bounds in the model of a clump's own geometry and of its instances, with a line for each of these.
static Bounds AddInstances(std::string *lines, const McClump *clump, const McClumpView *view,
                           const std::string &indent)
{
    constexpr double none = std::numeric_limits<double>::infinity();
    Bounds bounds = {{none, none, none}, {-none, -none, -none}};
    Grow(&bounds, &view->geometry, view->world);
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
            Grow(&bounds, &prototype.geometry, world);
        }
        AddPlacement(lines, instance.placement);
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
    AddGeometry(&lines, &view->geometry);
    lines += '\n';
    const std::string indent = Indent(depth) + "  . ";
    lines += indent;
    AddPlacement(&lines, view->placement);
    const Bounds bounds = AddInstances(&lines, clump, view, indent);
    if (bounds.least[0] <= bounds.most[0] && bounds.least[1] <= bounds.most[1] &&
        bounds.least[2] <= bounds.most[2]) {
        lines += indent + "bounds ";
        AddNumbers(&lines, bounds.least);
        lines += " to ";
        AddNumbers(&lines, bounds.most);
        lines += '\n';
    }
    std::fwrite(lines.data(), 1, lines.size(), stdout);
}

static void PrintHead(const McClump *clump, const McModelView *model)
{
    std::string lines = "model: ";
    AddCount(&lines, model->clumpCount, "clump, ", "clumps, ");
    AddCount(&lines, model->prototypeCount, "prototype, ", "prototypes, ");
    AddCount(&lines, model->surfaceCount, "surface\n", "surfaces\n");
    for (size_t i = 0; i < model->prototypeCount; ++i) {
        McPrototypeView prototype = {};
        McGetPrototype(clump, i, &prototype);
        lines += "prototype " + Visible(prototype.name) + ": ";
        AddGeometry(&lines, &prototype.geometry);
        lines += '\n';
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
    int depth = 0;
    for (const McClump *at = model.firstClump; at;) {
        McClumpView view = {};
        McGetClump(at, &view);
        PrintClump(scene, at, &view, depth);
        at = view.firstChild;
        if (at)
            ++depth;
        while (!at && depth >= 0) {
            at = view.nextSibling;
            if (!at) {
                McGetClump(view.parent, &view);
                --depth;
            }
        }
    }
}
