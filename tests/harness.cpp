#include "harness.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "check_reports.h"
#include "check_scene.h"

namespace fs = std::filesystem;

// Made absolute before a test changes the folder: on Windows a path without a drive depends on it.
static const fs::path homeFolder = fs::current_path();
static const fs::path goldenFolder = fs::absolute(MC3DS_GOLDEN_DIR);
static const fs::path samplesFolder = fs::absolute(MC3DS_SAMPLES_DIR);

static fs::path scratchFolder;
static std::vector<Report> reports;

static void CaptureError(int32_t level, const char *text)
{
    EXPECT_EQ(NoteReport('E', level, text), "");
    reports.push_back({'E', level, text});
}

static void CaptureMessage(int32_t level, const char *text)
{
    EXPECT_EQ(NoteReport('M', level, text), "");
    reports.push_back({'M', level, text});
}

void SceneTest::SetUp()
{
    std::random_device random;
    do
        scratchFolder = fs::temp_directory_path() / ("mcl3ds20-" + std::to_string(random()));
    while (!fs::create_directory(scratchFolder));
    fs::current_path(scratchFolder);
    reports.clear();
    Mc3dsSetErrorCallback(CaptureError);
    Mc3dsSetMessageCallback(CaptureMessage);
}

void SceneTest::TearDown()
{
    Mc3dsSetErrorCallback(nullptr);
    Mc3dsSetMessageCallback(nullptr);
    fs::current_path(homeFolder);
    std::error_code ignored;
    fs::remove_all(scratchFolder, ignored);
}

std::string ReadFile(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const fs::path &path, const std::string &bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    file.close();
    if (!file)
        throw std::runtime_error("can't write " + path.string());
}

LoadedScene Load(const std::string &path)
{
    ForgetReports();
    const LoadedScene scene(Mc3dsLoadFile(path.c_str()), Mc3dsUnloadFile);
    EXPECT_EQ(CheckLoad(scene.get()), "");
    EXPECT_EQ(CheckScene(scene.get()), "");
    return scene;
}

LoadedScene LoadBytes(const std::string &bytes, const std::string &vue)
{
    WriteFile("scene.3ds", bytes);
    fs::remove("scene.vue");
    if (!vue.empty())
        WriteFile("scene.vue", vue);
    return Load("scene.3ds");
}

std::vector<Report> TakeReports()
{
    return std::exchange(reports, {});
}

std::string TakeReportLines(const std::string &channels, int32_t maxLevel)
{
    std::string lines;
    for (const Report &report : TakeReports())
        if (channels.find(report.channel) != std::string::npos && report.level <= maxLevel)
            lines += report.channel + std::to_string(report.level) + ' ' + report.text + '\n';
    return lines;
}

std::string TakeLoadReports(const std::string &channels, int32_t maxLevel)
{
    const std::string start = "M0 \nReading File <scene.3ds>\n";
    const std::string lines = TakeReportLines(channels, maxLevel);
    return lines.starts_with(start) ? lines.substr(start.size()) : lines;
}

// The first line that differs; empty if none does. With open ends an expected '*' at the end of a line
// matches the rest of it.
static std::string FirstDifference(const std::string &text, const std::string &expected, bool openEnds)
{
    std::istringstream lines(text), expectedLines(expected);
    for (int number = 1;; ++number) {
        std::string line, wanted;
        const bool more = !!std::getline(lines, line), moreWanted = !!std::getline(expectedLines, wanted);
        if (!more && !moreWanted)
            return "";
        const bool open = openEnds && wanted.ends_with('*');
        if (more != moreWanted || !line.starts_with(wanted.substr(0, wanted.size() - (open ? 1 : 0))) ||
            (!open && line != wanted))
            return "line " + std::to_string(number) + "\n  expected: " + (moreWanted ? wanted : "(end)") +
                   "\n  got:      " + (more ? line : "(end)");
    }
}

testing::AssertionResult LinesMatch(const std::string &lines, const std::string &expected)
{
    const std::string difference = FirstDifference(lines, expected, true);
    return testing::AssertionResult(difference.empty()) << difference << "\nof:\n" << lines;
}

// EXPECT_FALSE shows the words of a success.
static testing::AssertionResult Searched(bool found, const std::string &text, const std::string &what)
{
    return testing::AssertionResult(found)
           << "  wanted: " << what << (found ? "\n  found in: " : "\n  not found in: ") << text;
}

testing::AssertionResult Has(const std::string &text, const std::string &part)
{
    return Searched(text.find(part) != std::string::npos, text, part);
}

testing::AssertionResult Says(const std::string &text, const std::string &expression)
{
    return Searched(std::regex_search(text, std::regex(expression)), text, expression);
}

size_t CountOf(const std::string &text, const std::string &part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

Mc3dsOptions DefaultOptions(uint32_t flags)
{
    Mc3dsOptions options = {};
    options.flags = flags;
    options.surfaceFlags = MC3DS_TEXTURES;
    options.clumpName = "Scene";
    options.outputFile = (flags & MC3DS_SOURCE) != 0 ? "out.c" : "out.mcx";
    options.headerFile = "out.h";
    options.animationFile = "out.anm";
    options.textureExtension = "";
    options.scale = 1.0f;
    options.redWeight = 0.299f;
    options.greenWeight = 0.587f;
    options.blueWeight = 0.114f;
    return options;
}

// The C library's text streams write CR LF on Windows. On other systems a CR is a fault and must be seen.
static std::string UnifyLineEnds(std::string text)
{
#if defined(_WIN32)
    size_t at = 0;
    while ((at = text.find("\r\n", at)) != std::string::npos)
        text.erase(at, 1);
#endif
    return text;
}

std::string ReadText(const fs::path &path)
{
    return UnifyLineEnds(ReadFile(path));
}

std::string Output(const LoadedScene &scene, Mc3dsOptions &options)
{
    const fs::path before = fs::current_path();
    fs::remove_all("output");
    fs::create_directory("output");
    fs::current_path("output");
    Mc3dsOutput(scene.get(), &options, nullptr);
    std::map<std::string, std::string> files;
    for (const fs::directory_entry &entry : fs::directory_iterator("."))
        files[entry.path().filename().string()] = ReadText(entry.path());
    fs::current_path(before);
    if (files.size() == 1)
        return files.begin()->second;
    std::string all;
    for (const auto &[name, text] : files)
        all += "==> " + name + "\n" + text;
    return all;
}

std::string SamplePath(const std::string &name)
{
    return (samplesFolder / name).string();
}

testing::AssertionResult MatchesGolden(const std::string &text, const std::string &name)
{
    const fs::path path = goldenFolder / name;
    const char *update = std::getenv("MC3DS_UPDATE_GOLDEN");
    if (update != nullptr && std::string(update) == "1") {
        fs::create_directories(goldenFolder);
        WriteFile(path, text);
        return testing::AssertionSuccess();
    }
    if (!fs::exists(path))
        return testing::AssertionFailure() << name << " is missing; MC3DS_UPDATE_GOLDEN=1 writes it";
    const std::string golden = ReadText(path);
    return testing::AssertionResult(golden == text) << name << ", " << FirstDifference(text, golden, false);
}
