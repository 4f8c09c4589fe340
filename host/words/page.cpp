// The results of a run as an HTML page.
#include <algorithm>
#include <cmath>
#include <system_error>

#include "words.h"

namespace fs = std::filesystem;

static const char pageStart[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src data:; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width">
<title>3ds2mcx report</title>
<style>
body { font: 15px/1.45 sans-serif; color: #1d2329; background: #fff; margin: 1.5em; }
table { border-collapse: collapse; width: 100%; }
th, td { text-align: left; vertical-align: top; padding: .6em .8em; border-bottom: 1px solid #d5dae0; }
th { color: #56616d; font-weight: normal; }
td { overflow-wrap: anywhere; }
img { width: 240px; max-height: 180px; object-fit: contain; display: block; }
.scene { font-weight: bold; }
.failed { color: #b3121d; }
.warned { color: #8a5200; }
.done { color: #1b6e34; }
p, ul { margin: 0 0 .4em; }
ul { padding-left: 1.2em; }
</style>
</head>
<body>
<h1>3ds2mcx report</h1>
)";

// In bdi, so that a right-to-left name doesn't reorder the text around it.
static std::string Escaped(const std::string &text)
{
    std::string html;
    for (const char c : Visible(text))
        switch (c) {
        case '&': html += "&amp;"; break;
        case '<': html += "&lt;"; break;
        case '>': html += "&gt;"; break;
        case '"': html += "&quot;"; break;
        default: html += c;
        }
    return "<bdi>" + html + "</bdi>";
}

static std::string InBase64(const std::string &bytes)
{
    constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t group = 0;
        for (size_t at = i; at < i + 3; ++at)
            group = group << 8 | (at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0u);
        for (size_t at = 0; at < 4; ++at)
            text += i + at > bytes.size() ? '=' : digits[group >> (18 - 6 * at) & 63];
    }
    return text;
}

// Escapes every byte that isn't plain in a URL.
static std::string UrlOf(const fs::path &path)
{
    constexpr char digits[] = "0123456789ABCDEF";
    const std::u8string name = path.generic_u8string();
    std::string url;
    for (const char8_t c : name) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain =
            (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
            (byte != 0 && std::string("-._~/").find(static_cast<char>(byte)) != std::string::npos);
        if (plain)
            url += static_cast<char>(byte);
        else
            url += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    return url;
}

// A pipe or the standard output gets no link.
static std::string FileLine(const std::string &name, const std::string &note, const fs::path &folder)
{
    std::error_code failure;
    const fs::path file = fs::absolute(PathOf(name), failure).lexically_normal();
    const fs::path way = file.lexically_relative(fs::absolute(folder, failure).lexically_normal());
    std::string shown = Escaped(name);
    if (fs::is_regular_file(file, failure) && !way.empty())
        shown = "<a href=\"./" + UrlOf(way) + "\">" + shown + "</a>";
    return "<li>" + shown + ", " + note + "</li>\n";
}

static std::string ListItems(const std::vector<Finding> &findings)
{
    std::string html;
    for (const Finding &finding : findings)
        html += "<li>" + Escaped(WarningText(finding)) + "</li>\n";
    return html;
}

// How well a scene was converted, the worst first.
enum class State { Failed, Lossy, Warned, Bare, Done };

static State StateOf(const SceneResult &result)
{
    return !result.done                      ? State::Failed
           : HasLosses(result)               ? State::Lossy
           : !result.warnings.empty()        ? State::Warned
           : !result.missingTextures.empty() ? State::Bare
                                             : State::Done;
}

static std::string StateLine(const SceneResult &result)
{
    switch (StateOf(result)) {
    case State::Failed: return "<p class=\"failed\">failed: " + Escaped(result.error) + "</p>\n";
    case State::Lossy: return "<p class=\"warned\">with losses</p>\n";
    case State::Warned: return "<p class=\"warned\">with warnings</p>\n";
    case State::Bare: return "<p class=\"done\">no losses, but textures are missing</p>\n";
    case State::Done: break;
    }
    return "<p class=\"done\">no losses</p>\n";
}

static std::string Losses(const SceneResult &result)
{
    std::string html = StateLine(result) + "<ul>\n" + ListItems(result.warnings) + ListItems(result.notes);
    for (const std::string &texture : result.missingTextures)
        html += "<li>missing texture " + Escaped(texture) + "</li>\n";
    return html + "</ul>\n";
}

// If the model's count differs from the scene's, shows both.
static std::string CountsOf(const SceneResult &result)
{
    const struct {
        uint64_t model, scene;
        const char *what, *plural;
    } rows[] = {{result.model.objects, result.read.objects, "object", "objects"},
                {result.model.vertices, result.read.vertices, "vertex", "vertices"},
                {result.model.triangles, result.read.triangles, "triangle", "triangles"}};
    std::string html;
    for (const auto &row : rows)
        html += (html.empty() ? "" : "<br>") + Counted(row.model, row.what, row.plural) +
                (row.model == row.scene ? "" : " of " + std::to_string(row.scene));
    return html;
}

static std::string RestoredCell(const std::vector<Finding> &restored)
{
    constexpr size_t most = 20;
    std::string html;
    for (const Finding &finding : restored) {
        std::string names;
        for (size_t i = 0; i < finding.names.size() && i < most; ++i)
            names += (i == 0 ? ": " : ", ") + Escaped(finding.names[i].name);
        html +=
            "<li>" + Escaped(SentenceOf(finding)) + names + (finding.count > most ? " ..." : "") + "</li>\n";
    }
    return html.empty() ? "" : "<ul>\n" + html + "</ul>";
}

static std::string Row(const SceneResult &result, const fs::path &folder)
{
    std::string html = "<tr><td>";
    html += result.picture.empty()
                ? "no picture"
                : "<img alt=\"the model\" src=\"data:image/png;base64," + InBase64(result.picture) + "\">";
    html += "</td>\n<td><p class=\"scene\">" + Escaped(result.scene) + "</p>\n" + CountsOf(result) +
            "</td>\n<td>" + RestoredCell(result.restored) + "</td>\n<td>" + Losses(result) +
            "</td>\n<td><ul>\n";
    for (const WrittenFile &file : result.written)
        html += FileLine(file.name, Counted(file.size, "byte"), folder);
    for (const std::string &file : result.kept)
        html += FileLine(file, "left alone", folder);
    return html + "</ul></td></tr>\n";
}

static std::string Head(const RunTotals &totals, double seconds)
{
    return "<p>" + Counted(totals.scenes, "scene") + ": " + std::to_string(totals.scenes - totals.failed) +
           " done (" + std::to_string(totals.withLosses) + " with losses), " + std::to_string(totals.failed) +
           " failed; " + Counted(totals.model.objects, "object") + ", " +
           Counted(totals.model.vertices, "vertex", "vertices") + ", " +
           Counted(totals.model.triangles, "triangle") + ", " + NumberText(std::round(seconds * 100) / 100) +
           " s</p>\n";
}

std::string PageText(const std::vector<SceneResult> &results, double seconds, const fs::path &folder)
{
    std::vector<const SceneResult *> rows;
    for (const SceneResult &result : results)
        rows.push_back(&result);
    std::stable_sort(rows.begin(), rows.end(),
                     [](const SceneResult *a, const SceneResult *b) { return StateOf(*a) < StateOf(*b); });
    std::string page =
        pageStart + Head(AddUp(results), seconds) +
        "<table>\n<tr><th>Picture</th><th>Scene</th><th>Restored</th><th>Losses</th><th>Files</th></tr>\n";
    for (const SceneResult *result : rows)
        page += Row(*result, folder.empty() ? fs::path(".") : folder);
    return page + "</table>\n</body>\n</html>\n";
}
