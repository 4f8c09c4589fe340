#include <algorithm>
#include <cstdio>
#include <string_view>
#include <unordered_map>

#include "json.h"
#include "view.h"

static Json ToJson(const SceneResult &result)
{
    Json files = Json::array(), warnings = Json::array();
    for (const WrittenFile &file : result.written)
        files.push_back({{"file", file.name}, {"bytes", file.size}});
    for (const WarningKind &warning : result.warnings)
        if (warning.count != 0)
            warnings.push_back({{"kind", warning.kind}, {"count", warning.count}, {"first", warning.first}});
    return {{"scene", result.scene},
            {"done", result.done},
            {"error", result.error},
            {"bytes", result.bytes},
            {"objects", result.model.objects},
            {"vertices", result.model.vertices},
            {"triangles", result.model.triangles},
            {"sceneObjects", result.read.objects},
            {"sceneVertices", result.read.vertices},
            {"sceneTriangles", result.read.triangles},
            {"seconds", result.seconds},
            {"written", files},
            {"kept", result.kept},
            {"warnings", warnings},
            {"notes", result.notes}};
}

size_t WarningCount(const SceneResult &result)
{
    size_t count = 0;
    for (const WarningKind &warning : result.warnings)
        count += warning.count;
    return count;
}

// A kind of warning in a run, with the scenes that have it.
struct RunKind {
    std::string kind, first, firstScene;
    size_t scenes, count;
};

struct RunTotals {
    size_t failed = 0, warned = 0, kept = 0; // warned: of those that didn't fail
    uint64_t bytes = 0;
    GeometryCounts read, model;
    std::vector<RunKind> kinds; // the one of most scenes first
};

static void AddTo(GeometryCounts *sum, const GeometryCounts &counts)
{
    sum->objects += counts.objects;
    sum->vertices += counts.vertices;
    sum->triangles += counts.triangles;
}

static RunTotals AddUp(const std::vector<SceneResult> &results)
{
    RunTotals totals;
    std::unordered_map<std::string_view, size_t> indices;
    for (const SceneResult &result : results) {
        totals.failed += result.done ? 0 : 1;
        totals.warned += result.done && WarningCount(result) != 0 ? 1 : 0;
        totals.kept += result.kept.size();
        totals.bytes += result.bytes;
        AddTo(&totals.read, result.read);
        AddTo(&totals.model, result.model);
        for (const WarningKind &warning : result.warnings) {
            if (warning.count == 0)
                continue;
            const auto [known, isNew] = indices.try_emplace(warning.kind, totals.kinds.size());
            if (isNew)
                totals.kinds.push_back({warning.kind, warning.first, result.scene, 0, 0});
            ++totals.kinds[known->second].scenes;
            totals.kinds[known->second].count += warning.count;
        }
    }
    std::stable_sort(totals.kinds.begin(), totals.kinds.end(),
                     [](const RunKind &a, const RunKind &b) { return a.scenes > b.scenes; });
    return totals;
}

static double MegabytesPerSecond(uint64_t bytes, double seconds)
{
    return seconds > 0.0 ? static_cast<double>(bytes) / 1e6 / seconds : 0.0;
}

constexpr size_t columnsMost = 80, kindsMost = 10;

// As in "121,635 triangles".
static std::string Grouped(uint64_t count, const char *what)
{
    std::string text = Counted(count, what);
    for (size_t at = text.find(' '); at > 3; at -= 3)
        text.insert(at - 3, ",");
    return text;
}

// The end of a text, with at most that many bytes; "..." replaces the rest.
static std::string Tail(const std::string &text, size_t most)
{
    if (text.size() <= most)
        return text;
    size_t cut = text.size() - (most < 3 ? 0 : most - 3);
    while (cut < text.size() && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        ++cut; // not inside a UTF-8 character
    return "..." + text.substr(cut);
}

// The subject of a kind of warning, without counts and details.
static std::string ShortKind(const RunKind &kind)
{
    std::string text = kind.kind;
    for (const std::string_view counts : {"* of * ", "* "})
        if (text.starts_with(counts))
            text.erase(0, counts.size());
    text.erase(std::min(text.find_first_of(",:;"), text.size()));
    text.erase(std::min(text.find(". "), text.size()));
    return text;
}

static std::string KindLine(const RunKind &kind, size_t width)
{
    std::string scenes = std::to_string(kind.scenes);
    scenes.insert(0, width - scenes.size(), ' ');
    std::string line = "  " + scenes + (kind.scenes == 1 ? " scene   " : " scenes  ");
    std::string what = Visible(ShortKind(kind));
    constexpr size_t most = 44;
    if (what.size() > most)
        what = what.substr(0, what.find_last_of(' ', most)) + " ...";
    line += what + " (first: ";
    const std::string scene = PathOf(kind.firstScene).filename().string();
    return line + Tail(Visible(scene), columnsMost - 1 - line.size()) + ")\n";
}

std::string TotalsText(const std::vector<SceneResult> &results, double seconds, bool hasSummary)
{
    const RunTotals totals = AddUp(results);
    const size_t converted = results.size() - totals.failed;
    std::string line = Counted(results.size(), "scene") + ": " + std::to_string(converted) + " converted";
    if (totals.warned != 0)
        line += " (" + std::to_string(totals.warned) + " with losses)";
    if (totals.failed != 0)
        line += ", " + std::to_string(totals.failed) + " failed";
    if (totals.kept != 0)
        line += ", " + Counted(totals.kept, "file") + " left alone";
    char time[64];
    // The program never sets a locale, so the decimal separator is a point.
    std::snprintf(time, sizeof time, "%.1f s", seconds);
    const std::string sizes = Grouped(totals.model.objects, "object") + ", " +
                              Grouped(totals.model.triangles, "triangle") + ", " + time;
    const bool fits = line.size() + 2 + sizes.size() <= columnsMost;
    std::string text = line + (fits ? "; " : ";\n  ") + sizes + '\n';
    const size_t shown = std::min(totals.kinds.size(), kindsMost);
    const size_t width = shown == 0 ? 0 : std::to_string(totals.kinds.front().scenes).size();
    for (size_t i = 0; i < shown; ++i)
        text += KindLine(totals.kinds[i], width);
    if (shown < totals.kinds.size())
        text += "  and " + Counted(totals.kinds.size() - shown, "more kind") + '\n';
    if (!hasSummary && (totals.failed != 0 || !totals.kinds.empty()))
        text += "  --summary FILE lists them all\n";
    return text;
}

std::string SummaryText(const std::vector<SceneResult> &results, double seconds, bool interrupted)
{
    const RunTotals totals = AddUp(results);
    Json scenes = Json::array(), kinds = Json::array();
    for (const SceneResult &result : results)
        scenes.push_back(ToJson(result));
    for (const RunKind &kind : totals.kinds)
        kinds.push_back(
            {{"kind", kind.kind}, {"scenes", kind.scenes}, {"count", kind.count}, {"first", kind.first}});
    Json total = {{"scenes", results.size()},
                  {"failed", totals.failed},
                  {"warned", totals.warned},
                  {"bytes", totals.bytes},
                  {"objects", totals.model.objects},
                  {"vertices", totals.model.vertices},
                  {"triangles", totals.model.triangles},
                  {"sceneObjects", totals.read.objects},
                  {"sceneVertices", totals.read.vertices},
                  {"sceneTriangles", totals.read.triangles},
                  {"seconds", seconds},
                  {"megabytesPerSecond", MegabytesPerSecond(totals.bytes, seconds)},
                  {"warnings", kinds}};
    if (interrupted)
        total["interrupted"] = true;
    return JsonText(
        {{"program", std::string("3ds2mcx ") + Mc3dsGetVersion()}, {"total", total}, {"scenes", scenes}}, 2);
}
