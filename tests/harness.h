// Shared by the tests: a scratch folder, scenes from bytes, captured reports, outputs as text, golden files.
#ifndef MC3DS_TESTS_HARNESS_H
#define MC3DS_TESTS_HARNESS_H

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chunks.h"
#include "frame/frame.h"

struct Report {
    char channel; // 'E' errors, 'M' messages
    int32_t level;
    std::string text;
};

// The base of every test that loads or writes. The current folder is an empty scratch folder, removed after
// the test, so that tests use bare names and no banner contains a path. Both report channels are captured.
struct SceneTest : testing::Test {
    void SetUp() override;
    void TearDown() override;
};

// A scene that is unloaded with its last owner.
using LoadedScene = std::shared_ptr<Mc3dsFile>;

// Writes bytes to scene.3ds, and vue to scene.vue unless it is empty, and loads them. Null when the load
// fails. Both functions expect the scene to pass CheckScene.
LoadedScene LoadBytes(const std::string &bytes, const std::string &vue = "");
LoadedScene Load(const std::string &path);

// Returns and clears the captured reports.
std::vector<Report> TakeReports();

// TakeReports as text, one line per report, such as "E1 Invalid Material Name". channels selects 'E', 'M' or
// both; reports of a level above maxLevel are left out.
std::string TakeReportLines(const std::string &channels = "EM", int32_t maxLevel = 2);

// The same without the first report of a load, "Reading File" of scene.3ds.
std::string TakeLoadReports(const std::string &channels = "EM", int32_t maxLevel = 2);

// Compares line by line. An expected line that ends in '*' matches every line that begins like it: for
// damaged files, tests fix the channel and level of a report and not its wording.
testing::AssertionResult LinesMatch(const std::string &lines, const std::string &expected);

// Whether part, or a match of the expression, is anywhere in text. A failed check shows both.
testing::AssertionResult Has(const std::string &text, const std::string &part);
testing::AssertionResult Says(const std::string &text, const std::string &expression);

// How often part is in text.
size_t CountOf(const std::string &text, const std::string &part);

// The given flags, scale 1, the luma weights of television, textures on; files out.mcx (out.c for C source),
// out.h and out.anm; clump name Scene.
Mc3dsOptions DefaultOptions(uint32_t flags = 0);

// Writes the scene to an empty folder and returns the text of the files: the text alone for one file; for
// several, in order of their names, each text after a line "==> name". Empty when nothing was written.
std::string Output(const LoadedScene &scene, Mc3dsOptions &options);

std::string ReadFile(const std::filesystem::path &path);
// The same, with CR LF as LF on Windows.
std::string ReadText(const std::filesystem::path &path);
void WriteFile(const std::filesystem::path &path, const std::string &bytes);

// A file of the samples folder, as an absolute path.
std::string SamplePath(const std::string &name);

// Compares with tests/golden/name and reports the first line that differs. With MC3DS_UPDATE_GOLDEN=1 in the
// environment it writes that file instead.
testing::AssertionResult MatchesGolden(const std::string &text, const std::string &name);

#endif
