#include <algorithm>
#include <cstdio>

#include "restored_json.h"

static Json ToJson(const Finding &finding)
{
    Json names = Json::array();
    for (const NamedPart &part : finding.names)
        names.push_back(part.name);
    return {{"kind", IdOf(finding)},   {"loss", finding.weight == Weight::Loss},
            {"count", finding.times},  {"first", SentenceOf(finding)},
            {"amount", finding.count}, {"names", names}};
}

static Json ToJson(const SceneResult &result)
{
    Json files = Json::array(), warnings = Json::array(), notes = Json::array();
    for (const WrittenFile &file : result.written)
        files.push_back({{"file", file.name}, {"bytes", file.size}});
    for (const Finding &warning : result.warnings)
        warnings.push_back(ToJson(warning));
    for (const Finding &note : result.notes)
        notes.push_back(SentenceOf(note));
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
            {"notes", notes},
            {"restored", RestoredJson(result.restored)}};
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

static std::string KindLine(const RunKind &kind, size_t width)
{
    std::string scenes = std::to_string(kind.scenes);
    scenes.insert(0, width - scenes.size(), ' ');
    std::string line = "  " + scenes + (kind.scenes == 1 ? " scene   " : " scenes  ");
    std::string what = Visible(PhraseOf(kind.first));
    constexpr size_t most = 44;
    if (what.size() > most)
        what = what.substr(0, what.find_last_of(' ', most)) + " ...";
    line += what + " (first: ";
    const std::string scene = PathOf(kind.firstScene).filename().string();
    return line + Tail(Visible(scene), columnsMost - 1 - line.size()) + ")\n";
}

std::string TotalsText(const RunTotals &totals, double seconds, bool hasSummary)
{
    const size_t converted = totals.scenes - totals.failed;
    std::string line = Counted(totals.scenes, "scene") + ": " + std::to_string(converted) + " converted";
    if (totals.withLosses != 0)
        line += " (" + std::to_string(totals.withLosses) + " with losses)";
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
        kinds.push_back({{"kind", IdOf(kind.first)},
                         {"loss", kind.first.weight == Weight::Loss},
                         {"scenes", kind.scenes},
                         {"count", kind.times},
                         {"first", SentenceOf(kind.first)},
                         {"firstScene", kind.firstScene}});
    Json total = {{"scenes", results.size()},
                  {"failed", totals.failed},
                  {"warned", totals.warned},
                  {"withLosses", totals.withLosses},
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
