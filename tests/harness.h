// What the tests share: a scratch folder, scenes from bytes, the reports that came, outputs as text, golden
// files.
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

// The base of every test that loads or writes. During a test the current folder is an empty scratch folder,
// so that bare names do and no banner shows a path; it is removed at the end. Both report channels are
// captured.
struct SceneTest : testing::Test {
    void SetUp() override;
    void TearDown() override;
};

// A scene that is unloaded with its last owner.
using LoadedScene = std::shared_ptr<Mc3dsFile>;

// Writes bytes to scene.3ds, and vue to scene.vue unless it is empty, and loads them. Null when the load
// fails. After every load CheckScene has to find the scene in order.
LoadedScene LoadBytes(const std::string &bytes, const std::string &vue = "");
LoadedScene Load(const std::string &path);

// Copies a scene of the samples folder, "orrery.3DS", and the .vue file beside it to the scratch folder, and
// loads it from there by its bare name.
LoadedScene LoadSample(const std::string &name);

// What was captured since the test began or since the last TakeReports, which empties the list.
std::vector<Report> TakeReports();

// TakeReports as text, a line for each report, such as "E1 Invalid Material Name". The channels pick 'E', 'M'
// or both; reports of a level above maxLevel are left out.
std::string TakeReportLines(const std::string &channels = "EM", int32_t maxLevel = 2);

// The same without the report that a load begins with, "Reading File" of scene.3ds.
std::string TakeLoadReports(const std::string &channels = "EM", int32_t maxLevel = 2);

// Compares line by line. An expected line that ends in '*' stands for every line that begins like it: reports
// of damage have their channel and level pinned, not their words.
testing::AssertionResult LinesMatch(const std::string &lines, const std::string &expected);

// The flags given, scale 1, the weights of television's luma, textures kept; files out.mcx (out.c for C
// source), out.h and out.anm; clump name Scene.
Mc3dsOptions DefaultOptions(uint32_t flags = 0);

// Writes the scene in a fresh folder and returns all files that came of it: the bare text when it is one
// file, else the files in the order of their names, a line "==> name" ahead of each. Empty when nothing was
// written.
std::string Output(const LoadedScene &scene, Mc3dsOptions &options);

std::string ReadFile(const std::filesystem::path &path);
// The same with line feeds alone for line ends.
std::string ReadText(const std::filesystem::path &path);
void WriteFile(const std::filesystem::path &path, const std::string &bytes);

// A file of the samples folder, as an absolute path.
std::string SamplePath(const std::string &name);

// Compares with tests/golden/name and tells the first line that differs. With MC3DS_UPDATE_GOLDEN=1 in the
// environment it writes that file instead.
testing::AssertionResult MatchesGolden(const std::string &text, const std::string &name);

#endif
