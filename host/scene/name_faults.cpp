// Finds names that are valid in a 3D Studio file but cause faults in an output.
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <unordered_set>

#include "output/output.h"
#include "scene.h"

// A name of the scene and where outputs use it.
struct PlacedName {
    const char *what, *name; // as in the scene
    std::string_view text;   // as in outputs
    bool inComment, inStatement, inTag;
};

static void Count(Finding *fault, bool isBad, const char *name)
{
    if (isBad && fault->count++ == 0)
        fault->names = {{name}};
}

static Finding Fault(FindingKind kind)
{
    return {.kind = kind};
}

static bool HasAny(std::string_view name, std::string_view bytes)
{
    for (const char c : name)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F || bytes.find(c) != std::string_view::npos)
            return true;
    return false;
}

// A name that breaks out can insert code of its author into the output. Compilers join lines also if blanks
// follow the backslash, and treat ??/ as a backslash.
static bool BreaksOut(const PlacedName &name, bool source)
{
    const std::string_view text = name.text;
    const auto has = [&text](std::string_view part) { return text.find(part) != std::string_view::npos; };
    if (has("\r") || has("\n"))
        return true;
    if (name.inTag && (has("/*") || has("("))) // hides other lines, calls a function
        return true;
    if (source && name.inStatement && (has("\"") || has("\\") || has("?\?/")))
        return true;
    const std::string_view line = text.substr(0, text.find_last_not_of(" \t\v\f") + 1);
    return source && name.inComment && (line.ends_with('\\') || line.ends_with("?\?/"));
}

static bool BreaksStatement(const PlacedName &name, bool source)
{
    if (source)
        return HasAny(name.text, "\"\\");
    return name.text.empty() || HasAny(name.text, " #");
}

// Visits the map names that are written for a surface. A reflection map replaces a missing texture map.
template <class Visit>
static void VisitMapNames(const Mc3dsOptions &options, const Mc3dsMaterial &material, const Visit &visit)
{
    const bool textured = material.textureMap[0] != '\0', used = options.surfaceFlags & MC3DS_TEXTURES;
    for (const char *name :
         {textured ? material.textureMap : material.reflectionMap, textured ? material.opacityMap : ""}) {
        if (*name == '\0')
            continue;
        const std::unique_ptr<char, void (*)(void *)> text(Mc3dsMakeMapName(&options, name), std::free);
        if (!text)
            throw std::bad_alloc();
        visit(PlacedName{"map", name, text.get(), !used, used, false});
    }
}

// Visits all names of the scene that outputs contain. The C function's name is always made valid, and files
// with a line break in their names are refused, so neither needs a check.
template <class Visit>
static void VisitNames(const Mc3dsOptions &options, const Mc3dsFile *scene, const Visit &visit)
{
    const bool protos = options.flags & MC3DS_PROTOS, header = options.flags & MC3DS_HEADER;
    std::vector<bool> worn(static_cast<size_t>(scene->materialCount), false);
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        visit(PlacedName{"object", object.safeName, object.safeName, true, protos, header});
        for (uint32_t group = 0; group < object.groupCount; ++group)
            worn[static_cast<size_t>(object.groups[group].material)] = true;
    }
    for (size_t i = 0; i < worn.size(); ++i)
        if (worn[i])
            VisitMapNames(options, scene->materials[i], visit);
}

// Faults of the names in the header file, which always defines ROOT.
static void FindTagFaults(const Mc3dsFile *scene, Finding *shared, Finding *invalid)
{
    std::unordered_set<std::string_view> names = {"ROOT"};
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const char *name = scene->objects[i].safeName;
        Count(shared, !names.insert(name).second, name);
        Count(invalid, !IsIdentifierPart(name), name);
    }
}

void FindNameFaults(const Mc3dsOptions &options, const Mc3dsFile *scene, bool forceNames,
                    std::vector<Finding> *findings, std::vector<std::string> *refused)
{
    const bool source = options.flags & MC3DS_SOURCE;
    Finding sharedTags = Fault(FindingKind::SharedTags), invalidTags = Fault(FindingKind::InvalidTags),
            broken = Fault(source ? FindingKind::SourceBreaks : FindingKind::ScriptBreaks);
    if (options.flags & MC3DS_PROTOS)
        FindSharedNames(scene, findings);
    if (options.flags & MC3DS_HEADER)
        FindTagFaults(scene, &sharedTags, &invalidTags);
    VisitNames(options, scene, [&](const PlacedName &name) {
        const bool breaksOut = BreaksOut(name, source);
        if (breaksOut && !forceNames)
            refused->push_back(std::string(name.what) + ' ' + InQuotes(name.name));
        else
            Count(&broken, breaksOut || (name.inStatement && BreaksStatement(name, source)), name.name);
    });
    for (const Finding &fault : {sharedTags, invalidTags, broken})
        if (fault.count != 0)
            findings->push_back(fault);
}
