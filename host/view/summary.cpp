#include <cstdio>

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
    return {{"scene", result.scene},         {"done", result.done},       {"error", result.error},
            {"bytes", result.bytes},         {"objects", result.objects}, {"vertices", result.vertices},
            {"triangles", result.triangles}, {"seconds", result.seconds}, {"written", files},
            {"kept", result.kept},           {"warnings", warnings}};
}

// A binary form takes text as it is, where JSON asks for UTF-8.
std::string PackResult(const SceneResult &result)
{
    Json json = ToJson(result);
    json["said"] = result.said;
    json["picture"] = result.picture;
    json["missingTextures"] = result.missingTextures;
    std::string bytes;
    Json::to_msgpack(json, bytes);
    return bytes;
}

bool UnpackResult(const std::string &bytes, SceneResult *result)
try {
    const Json json = Json::from_msgpack(bytes);
    json.at("scene").get_to(result->scene);
    json.at("done").get_to(result->done);
    json.at("error").get_to(result->error);
    json.at("bytes").get_to(result->bytes);
    json.at("objects").get_to(result->objects);
    json.at("vertices").get_to(result->vertices);
    json.at("triangles").get_to(result->triangles);
    json.at("seconds").get_to(result->seconds);
    json.at("kept").get_to(result->kept);
    json.at("said").get_to(result->said);
    json.at("picture").get_to(result->picture);
    json.at("missingTextures").get_to(result->missingTextures);
    for (const Json &file : json.at("written"))
        result->written.push_back({file.at("file"), file.at("bytes")});
    for (const Json &warning : json.at("warnings"))
        result->warnings.push_back({warning.at("kind"), warning.at("first"), warning.at("count")});
    return true;
} catch (const Json::exception &) {
    return false;
}

size_t WarningCount(const SceneResult &result)
{
    size_t count = 0;
    for (const WarningKind &warning : result.warnings)
        count += warning.count;
    return count;
}

// What all scenes come to: a result whose warnings are those of all, and how many scenes failed.
static SceneResult AddUp(const std::vector<SceneResult> &results, size_t *failed)
{
    SceneResult sum;
    *failed = 0;
    for (const SceneResult &result : results) {
        *failed += result.done ? 0 : 1;
        sum.bytes += result.bytes;
        sum.objects += result.objects;
        sum.vertices += result.vertices;
        sum.triangles += result.triangles;
        sum.kept.insert(sum.kept.end(), result.kept.begin(), result.kept.end());
        sum.written.insert(sum.written.end(), result.written.begin(), result.written.end());
        for (const WarningKind &warning : result.warnings) {
            auto known = sum.warnings.begin();
            while (known != sum.warnings.end() && known->kind != warning.kind)
                ++known;
            if (known == sum.warnings.end() && warning.count != 0)
                sum.warnings.push_back(warning);
            else if (known != sum.warnings.end())
                known->count += warning.count;
        }
    }
    return sum;
}

static double MegabytesPerSecond(uint64_t bytes, double seconds)
{
    return seconds > 0.0 ? static_cast<double>(bytes) / 1e6 / seconds : 0.0;
}

std::string TotalsLine(const std::vector<SceneResult> &results, double seconds)
{
    size_t failed = 0;
    const SceneResult sum = AddUp(results, &failed);
    std::string line = "3ds2mcx: " + Counted(results.size(), "scene");
    if (failed != 0)
        line += " (" + std::to_string(failed) + " failed)";
    line += ", " + Counted(sum.objects, "object") + ", " + Counted(sum.vertices, "vertex", "vertices") +
            ", " + Counted(sum.triangles, "triangle") + ", ";
    if (!sum.kept.empty())
        line += Counted(sum.kept.size(), "file") + " left alone, ";
    const size_t warnings = WarningCount(sum);
    line += warnings == 0 ? "no warnings" : Counted(warnings, "warning");
    for (size_t i = 0; i < sum.warnings.size(); ++i)
        line += (i == 0 ? " (" : "; ") + std::to_string(sum.warnings[i].count) + "x " +
                Visible(sum.warnings[i].kind) + (i + 1 == sum.warnings.size() ? ")" : "");
    char end[64];
    // The program never takes on the locale of its user, so that points are points.
    std::snprintf(end, sizeof end, ", %.2f s, %.1f MB/s\n", seconds, MegabytesPerSecond(sum.bytes, seconds));
    return line + end;
}

std::string SummaryText(const std::vector<SceneResult> &results, double seconds, bool interrupted)
{
    size_t failed = 0;
    Json scenes = Json::array();
    for (const SceneResult &result : results)
        scenes.push_back(ToJson(result));
    Json total = ToJson(AddUp(results, &failed));
    for (const char *key : {"scene", "done", "error", "written", "kept"})
        total.erase(key);
    total["seconds"] = seconds;
    total["megabytesPerSecond"] = MegabytesPerSecond(total["bytes"], seconds);
    total["scenes"] = results.size();
    total["failed"] = failed;
    if (interrupted)
        total["interrupted"] = true;
    return JsonText(
        {{"program", std::string("3ds2mcx ") + Mc3dsGetVersion()}, {"total", total}, {"scenes", scenes}}, 2);
}
