// --info for people.
#include <cstdio>
#include <cstdlib>

#include "words.h"

// Deeper objects aren't indented further, but show their depth: a scene can have 32,769 levels.
constexpr uint32_t indentMost = 12;
constexpr size_t listedMost = 4; // materials shown with an object

enum class Colours { None, Table, All };

// What the terminal supports.
struct Look {
    bool boxes;
    Colours colours;
};

static std::string_view Environment(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

static bool Contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

static Look FindLook()
{
    Look look = {false, Colours::None};
    if (!IsTerminal(stdout))
        return look;
    std::string_view locale;
    for (const char *name : {"LC_ALL", "LC_CTYPE", "LANG"})
        locale = locale.empty() ? Environment(name) : locale;
    for (const char *name : {"UTF-8", "utf-8", "UTF8", "utf8"})
        look.boxes = look.boxes || Contains(locale, name);
    const std::string_view colour = Environment("COLORTERM"), terminal = Environment("TERM");
    if (!Environment("NO_COLOR").empty() || terminal == "dumb")
        return look;
    if (colour == "truecolor" || colour == "24bit" || Contains(terminal, "direct"))
        look.colours = Colours::All;
    else if (Contains(terminal, "256color"))
        look.colours = Colours::Table;
    return look;
}

static std::string Colour(const Look &look, const float colour[3])
{
    int levels[3];
    for (int i = 0; i < 3; ++i)
        levels[i] =
            colour[i] > 0.0f ? static_cast<int>((colour[i] < 1.0f ? colour[i] : 1.0f) * 255.0f + 0.5f) : 0;
    std::string code = "#";
    for (const int level : levels)
        code += {"0123456789abcdef"[level >> 4], "0123456789abcdef"[level & 15]};
    if (look.colours == Colours::None)
        return code;
    std::string swatch = "\x1b[48;";
    if (look.colours == Colours::All) {
        swatch += '2';
        for (const int level : levels)
            swatch += ';' + std::to_string(level);
    } else {
        // Entries 16 to 231 of the table are a cube of 6 levels each: 0, 95, 135, 175, 215, 255.
        int index = 0;
        for (const int level : levels)
            index = index * 6 + (level < 48 ? 0 : level < 115 ? 1 : (level - 35) / 40);
        swatch += "5;" + std::to_string(16 + index);
    }
    return swatch + "m    \x1b[0m " + code;
}

static std::string ObjectText(const Mc3dsFile *scene, const SceneFacts &facts, uint32_t index)
{
    const Mc3dsObject &object = scene->objects[index];
    std::string text = Visible(object.name) + "  ";
    if (IsDummy(scene, &object))
        text += "dummy";
    else
        text += Counted(static_cast<uint64_t>(object.vertexCount), "vertex", "vertices") + ", " +
                Counted(static_cast<uint64_t>(object.faceCount), "face");
    const std::vector<int32_t> &materials = facts.materialsOf[index];
    for (size_t i = 0; i < materials.size() && i < listedMost; ++i)
        text += (i == 0 ? "; " : ", ") + Visible(scene->materials[materials[i]].name);
    if (materials.size() > listedMost)
        text += " and " + std::to_string(materials.size() - listedMost) + " more";
    if (object.pivot[0] != 0.0f || object.pivot[1] != 0.0f || object.pivot[2] != 0.0f)
        text += "; pivot " + NumbersText(object.pivot);
    if (object.instanceName[0] != '\0')
        text += "; called " + Visible(object.instanceName);
    if (scene->hasAnimation && object.hasFrames)
        text += "; animated";
    return text + '\n';
}

static void AddTree(const Look &look, const Mc3dsFile *scene, const SceneFacts &facts, std::string *text)
{
    const char *const through = look.boxes ? "│  " : "|  ", *const fork = look.boxes ? "├─ " : "|- ",
                      *const corner = look.boxes ? "└─ " : "`- ";
    bool ended[indentMost + 1] = {}; // by depth: whether the last child was shown
    *text += "\nObjects\n";
    for (const TreeRow &row : facts.tree) {
        *text += "  ";
        for (uint32_t depth = 1; depth < row.depth && depth < indentMost; ++depth)
            *text += ended[depth] ? "   " : through;
        if (row.depth <= indentMost)
            ended[row.depth] = row.isLast;
        if (row.depth > 0)
            *text += row.isLast ? corner : fork;
        if (row.depth > indentMost)
            *text += "depth " + std::to_string(row.depth) + ": ";
        *text += ObjectText(scene, facts, row.object);
    }
    if (!facts.unreached.empty())
        *text += "\nWithout a parent in the scene: only --flat writes them\n";
    for (const uint32_t index : facts.unreached)
        *text += "  " + ObjectText(scene, facts, index);
}

static void AddHead(const Look &look, const Mc3dsFile *scene, const SceneFacts &facts, std::string *text)
{
    *text += "  " + Counted(scene->objectCount, "object") + " (" +
             Counted(scene->dummyCount, "dummy", "dummies") + "), " +
             Counted(facts.counts.vertices, "vertex", "vertices") + ", " +
             Counted(facts.counts.triangles, "face") + '\n';
    if (facts.hasBounds) {
        float size[3];
        for (int axis = 0; axis < 3; ++axis)
            size[axis] = facts.most[axis] - facts.least[axis];
        *text += "  size " + NumbersText(size, " x ") + ", from " + NumbersText(facts.least) + " to " +
                 NumbersText(facts.most) + " (z taken as up)\n";
    }
    std::vector<Finding> keys;
    FindUnplayedKeys(scene, &keys);
    *text += "  " + (scene->frameCount == 0 ? "no frames" : Counted(scene->frameCount, "frame"));
    if (scene->hasAnimation)
        *text += ", animation of " + Counted(facts.movingCount, "object");
    else if (!keys.empty())
        *text += "; " + SentenceOf(keys.front());
    else
        *text += ", no animation";
    *text += "\n  ambient light " + Colour(look, scene->ambient) + '\n';
}

static void AddMaterials(const Look &look, const Mc3dsFile *scene, const SceneFacts &facts, std::string *text)
{
    *text += "\nMaterials\n";
    for (int32_t i = 0; i < scene->materialCount; ++i) {
        const Mc3dsMaterial &material = scene->materials[i];
        const uint64_t faces = facts.facesOf[static_cast<size_t>(i)];
        if (i == 0 && faces == 0)
            continue; // the library's default material
        *text += "  " + Colour(look, material.diffuse) + ' ' + Visible(material.name) + "  " +
                 ShadingName(material.shading) + ", " + Counted(faces, "face");
        if (material.shininess != 0.0f)
            *text += ", shininess " + NumberText(material.shininess);
        if (material.transparency != 0.0f)
            *text += ", transparency " + NumberText(material.transparency);
        for (const auto &[what, map] :
             {std::pair<const char *, const char *>{"texture ", material.textureMap},
              {"opacity ", material.opacityMap},
              {"reflection ", material.reflectionMap}})
            if (*map != '\0')
                *text += std::string(", ") + what + Visible(map);
        *text += '\n';
    }
    if (!facts.textures.empty())
        *text += "\nTextures\n";
    for (const TextureFile &file : facts.textures) {
        *text += "  " + Visible(file.name);
        if (file.found.empty())
            *text += "  is not beside the scene\n";
        else if (file.found == file.name)
            *text += "  lies beside the scene\n";
        else
            *text +=
                "  is beside the scene as " + Visible(file.found) + ": only the case of letters differs\n";
    }
}

static void AddList(const char *what, const std::vector<std::string> &names, std::string *text)
{
    for (size_t i = 0; i < names.size(); ++i)
        *text += (i == 0 ? "  " + std::string(what) + ' ' : ", ") + Visible(names[i]);
    *text += names.empty() ? "" : "\n";
}

static void AddCounts(const char *what, const std::map<std::string, size_t> &counts, std::string *text)
{
    for (const auto &[name, count] : counts)
        *text += "  " + std::string(what) + Visible(name) +
                 (count == 1 ? "" : ", " + std::to_string(count) + " times") + '\n';
}

// The keys that no .vue file plays are shown at the top, and not again here.
static std::string LeftText(const Mc3dsFile *scene, const SceneResult &result)
{
    const LeftBehind left = FindLeftBehind(scene, result.isRestored);
    std::string text;
    AddList("lights", left.lights, &text);
    AddList("cameras", left.cameras, &text);
    AddList("hidden meshes", left.hidden, &text);
    AddCounts("", left.unsupported, &text);
    AddCounts("unknown chunk ", left.chunks, &text);
    for (const Finding &loss : left.losses)
        if (loss.kind != FindingKind::UnplayedKeys)
            text += "  " + Visible(SentenceOf(loss)) + '\n';
    for (const Finding &note : result.notes)
        if (note.kind == FindingKind::StandElsewhere)
            text += "  " + Visible(SentenceOf(note)) + '\n';
    return text;
}

static std::string RestoredList(const std::vector<Finding> &restored)
{
    constexpr size_t most = 20;
    std::string text;
    for (const Finding &finding : restored) {
        text += "  " + SentenceOf(finding);
        for (size_t i = 0; i < finding.names.size() && i < most; ++i)
            text += (i == 0 ? ": " : ", ") + Visible(finding.names[i].name);
        if (finding.count > most)
            text += " and " + std::to_string(finding.count - most) + " more";
        text += '\n';
    }
    return text;
}

void PrintInfo(const Mc3dsFile *scene, const SceneResult &result,
               const std::map<std::string, size_t> &reports)
{
    const Look look = FindLook();
    const SceneFacts facts = FindFacts(scene, result.scene);
    std::string text = Visible(result.scene) + '\n';
    AddHead(look, scene, facts, &text);
    AddTree(look, scene, facts, &text);
    AddMaterials(look, scene, facts, &text);
    if (const std::string restored = RestoredList(result.restored); !restored.empty())
        text += "\nRestored\n" + restored;
    if (const std::string left = LeftText(scene, result); !left.empty())
        text += "\nLeft behind\n" + left;
    if (!reports.empty())
        text += "\nReported while it was read\n";
    AddCounts("", reports, &text);
    std::fwrite(text.data(), 1, text.size(), stdout);
}
