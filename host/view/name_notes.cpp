// Names that do well in a 3D Studio file and badly in an output.
#include <cstring>
#include <map>

#include "view.h"

// What is wrong with some names: how many there are, and the first.
struct Fault {
    size_t count;
    std::string first;
};

static void Add(Fault *fault, bool isBad, const char *name)
{
    if (isBad && fault->count++ == 0)
        fault->first = name;
}

static void Report(const Fault &fault, const char *what)
{
    if (fault.count != 0)
        ReportWarning(what + (": " + std::to_string(fault.count)) + "; the first: " + InQuotes(fault.first));
}

static bool HasAny(std::string_view name, std::string_view bytes)
{
    for (const char c : name)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F || bytes.find(c) != std::string_view::npos)
            return true;
    return false;
}

// Where a name stands in the output decides what breaks it.
static bool BreaksComment(std::string_view name, bool source)
{
    return name.find_first_of("\r\n") != std::string_view::npos || (source && name.ends_with('\\'));
}

static bool BreaksStatement(std::string_view name, bool source)
{
    return source ? HasAny(name, "\"\\") : name.empty() || HasAny(name, " #");
}

static bool IsIdentifierEnd(std::string_view name)
{
    for (const char c : name)
        if (!(c >= '0' && c <= '9') && !(c >= 'A' && c <= 'Z') && !(c >= 'a' && c <= 'z') && c != '_')
            return false;
    return !name.empty();
}

static void CheckObjects(const Mc3dsOptions &options, const Mc3dsFile *scene, Fault *broken)
{
    const bool source = options.flags & MC3DS_SOURCE, protos = options.flags & MC3DS_PROTOS;
    std::map<std::string, size_t> owners;
    Fault shared = {}, sharedTags = {}, noTags = {};
    ++owners["ROOT"]; // the header file has that tag anyway
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const char *name = scene->objects[i].safeName;
        Add(broken, BreaksComment(name, source) || (protos && BreaksStatement(name, source)), name);
        const size_t before = owners[name]++;
        Add(&shared, before > (std::strcmp(name, "ROOT") == 0 ? 1u : 0u), name);
        Add(&sharedTags, before > 0, name);
        Add(&noTags, !IsIdentifierEnd(name), name);
    }
    if (protos)
        Report(shared, "objects with the name of another one, which a prototype can't share");
    if (options.flags & MC3DS_HEADER) {
        Report(sharedTags, "TAG_ lines of the header file that define a name again");
        Report(noTags, "TAG_ lines of the header file whose names are none in C");
    }
}

// The names of the maps that a surface is written with: a reflection map stands in for a texture map.
static void CheckMaterials(const Mc3dsOptions &options, const Mc3dsFile *scene, Fault *broken)
{
    const bool source = options.flags & MC3DS_SOURCE, used = options.surfaceFlags & MC3DS_TEXTURES;
    std::vector<bool> worn(static_cast<size_t>(scene->materialCount), false);
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        for (int32_t face = 0; face < scene->objects[i].faceCount; ++face)
            worn[static_cast<size_t>(scene->objects[i].faces[face].material)] = true;
    for (size_t i = 0; i < worn.size(); ++i) {
        const Mc3dsMaterial &material = scene->materials[i];
        const bool textured = material.textureMap[0] != '\0';
        for (const char *name :
             {textured ? material.textureMap : material.reflectionMap, textured ? material.opacityMap : ""})
            Add(broken,
                worn[i] && *name != '\0' &&
                    (used ? BreaksStatement(name, source) : BreaksComment(name, source)),
                name);
    }
}

void ReportNames(const Mc3dsOptions &options, const Mc3dsFile *scene)
{
    Fault broken = {};
    CheckObjects(options, scene, &broken);
    CheckMaterials(options, scene, &broken);
    if (!(options.flags & MC3DS_DIRECT))
        Report(broken, options.flags & MC3DS_SOURCE ? "names that break the C source"
                                                    : "names that break the script");
}
