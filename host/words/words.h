// What users and programs get to see of scenes and results.
#ifndef MC3DS_HOST_VIEW_H
#define MC3DS_HOST_VIEW_H

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "../base/base.h"
#include "frame/frame.h"

// ---- the result of a scene

// The importance of a warning, highest first: parts of the scene are left out, the file is damaged, the
// result may differ from what was intended.
enum class Weight { Loss, Damage, Doubt };

// Warnings that only differ in names and numbers.
struct WarningKind {
    std::string kind;  // the text with '*' for names and numbers
    std::string first; // full text of the first one
    size_t count;
    Weight weight = Weight::Doubt;
};

struct GeometryCounts {
    uint64_t objects = 0, vertices = 0, triangles = 0;
};

struct WrittenFile {
    std::string name;
    uintmax_t size; // bytes
};

struct SceneResult {
    std::string scene; // its path, as the user would type it
    bool done = false;
    std::string error;          // the first one
    uint64_t bytes = 0;         // size of the scene's file
    GeometryCounts read, model; // model: what was written or built
    double seconds = 0.0;
    std::vector<WrittenFile> written;
    std::vector<std::string> kept;            // existing files that were not replaced
    std::vector<WarningKind> warnings;        // the most important first
    std::vector<std::string> notes;           // remarks that don't count as warnings
    std::vector<std::string> missingTextures; // only filled for --report
    std::string picture;                      // a PNG file's bytes; empty without --report
    std::string said;                         // lines for stderr, kept by KeepReports
};

// ---- report.cpp: all output on stderr. Verbosity: -1 errors only, 0 each kind of warning once, 1 files,
// objects and all warnings, 2 everything.

// Sets the library's error and message callbacks. oneLineEach: unless verbosity is above 0, hides results
// (files that were written or kept) and shows only the most important warning of each scene.
void StartReports(int verbosity, bool oneLineEach);
// Reports after this call are about subject and counted in it; null: the run. First shows the pending reports
// of the previous subject.
void SetReportSubject(SceneResult *subject);
// true: lines are added to the subject's said from now on, instead of being shown.
void KeepReports(bool keep);
// Shows complete lines, such as kept ones.
void ShowLines(const std::string &lines);
// Shows the kinds of the subject's warnings that weren't shown yet, or only marks them as shown.
void ShowWarnings();
void MarkWarningsShown();
// true: from now on ignores reports of the library, except that memory ran out. For a build that repeats an
// earlier one.
void MuteLibrary(bool mute);
void ReportError(const std::string &text);
void ReportWarning(const std::string &text, Weight weight = Weight::Doubt);
// Shows a remark that doesn't count as a warning.
void ReportNote(const std::string &text);
// The text that ShowWarnings shows.
std::string WarningText(const WarningKind &warning);
// Several files are numbered ones and get one line, unless verbosity is above 0.
void ReportWritten(const std::vector<WrittenFile> &files);
void ReportKept(const std::vector<std::string> &names);
// Reports that a file can't be written, and why.
void ReportUnwritten(const std::string &name, const std::string &why);
// Whether the library ran out of memory since the subject was set.
bool MemoryRanOut();
// The library's last report of level 0 or 1. It no longer counts as a warning, as the caller makes it an
// error.
std::string TakeLibraryError();
// Shows a line at the bottom of the terminal until it is replaced; empty: removes it. stderr must be a
// terminal.
void SetStatusLine(const std::string &line);
// watcher gets every text of the library's message callback; null: none.
void WatchMessages(void (*watcher)(const char *text));

// ---- summary.cpp

size_t WarningCount(const SceneResult &result);
// The totals of a run, in lines of at most 80 columns. hasSummary: a summary file is written too.
std::string TotalsText(const std::vector<SceneResult> &results, double seconds, bool hasSummary);
// The results of each scene and the totals as JSON. interrupted: results lacks some scenes of the run.
std::string SummaryText(const std::vector<SceneResult> &results, double seconds, bool interrupted);

// ---- report_page.cpp

// The results as an HTML page without scripts that loads nothing: a row for each scene, failed ones first,
// then those with warnings. Links to files are relative to folder, that of the page.
std::string ReportPage(const std::vector<SceneResult> &results, double seconds,
                       const std::filesystem::path &folder);

// ---- losses.cpp

// The report that the file is truncated; empty if it isn't.
std::string CutFileText(const Mc3dsFile *scene);
// Reports on what an output with these Mc3dsOptions.flags lacks, the most important first.
std::vector<std::string> FindLosses(const Mc3dsFile *scene, uint32_t flags);
// The report that objects share names; empty if none do.
std::string SharedNamesText(const Mc3dsFile *scene);
// The report that objects have animation keys but the scene has no .vue file; empty if that isn't so.
std::string LostKeysText(const Mc3dsFile *scene);
// The counts of an output with these flags, and of the scene.
GeometryCounts CountModel(const Mc3dsFile *scene, uint32_t flags);
GeometryCounts CountScene(const Mc3dsFile *scene);

// ---- scene_notes.cpp, name_notes.cpp: faults that the library doesn't report

// Both return false after reports if a name would break out of the output's text and forceNames is false.
bool ReportSceneNotes(const Mc3dsOptions &options, const Mc3dsFile *scene, const std::string &scenePath,
                      bool forceNames);
bool ReportNames(const Mc3dsOptions &options, const Mc3dsFile *scene, bool forceNames);

// ---- load_notes.cpp

// What the library reported while it loaded a scene, about things that aren't in the scene records.
struct SceneNotes {
    std::vector<std::string> lights, cameras, hidden; // names, in the order of the file
    std::map<std::string, size_t> chunks;             // unknown tags in hexadecimal, with counts
    std::map<std::string, size_t> unsupported;        // other things that aren't supported, with counts
    std::map<std::string, size_t> reports;            // texts of the error callback, with counts
    std::string newestObject;                         // only used while collecting
};

// Until StopNotes, all reports of the library are also collected in notes. notes must live that long, and
// nobody else may set a callback meanwhile.
void StartNotes(SceneNotes *notes);
void StopNotes();

// ---- info_text.cpp, info_json.cpp

// Prints the scene as text on stdout, with colours and box-drawing characters if stdout is a terminal that
// supports them.
void PrintInfo(const Mc3dsFile *scene, const std::string &scenePath, const SceneNotes &notes);
// Prints the scene as one line of JSON in UTF-8 on stdout, even a scene without objects. scene is null if it
// could not be loaded; "loaded" is false then.
void PrintJson(const Mc3dsFile *scene, const std::string &scenePath, const SceneNotes &notes);

// ---- preview.cpp: only if the Meshcaster library has mclmodel.h and there is libpng

// Limits of the width and height of a frame, in pixels.
constexpr int previewSideLeast = 16, previewSideMost = 4096;

// The size of a picture that is only drawn for the report.
constexpr int reportPictureWidth = 320, reportPictureHeight = 240;

// What to draw. The values here are the defaults.
struct PreviewOptions {
    int width = 0, height = 0; // pixels of one frame; 0: 800 x 600, in a strip 320 x 240
    int64_t frame = -1;        // of the animation, from 0; -1: objects are placed as in the output
    bool strip = false;        // several frames side by side, from the whole animation; overrides frame
};

// Draws the model for the form and size options in asked, which stays unchanged. Returns the bytes of a PNG
// file; empty after a report on failure. Without animation a strip is one picture, with a warning.
std::string DrawPreview(const Mc3dsFile *scene, const Mc3dsOptions &asked, const PreviewOptions &preview);

// ---- glb.cpp: only if the Meshcaster library has mclmodel.h

// Writes the model for the form and size options in asked to file as binary glTF 2.0, with a temporary file
// beside it. Looks for pictures of textures beside the scene. isSaid: the library's reports on the geometry
// were shown already. Returns why it failed; empty on success.
std::string WriteGlb(const Mc3dsFile *scene, const Mc3dsOptions &asked, const std::string &scenePath,
                     const std::filesystem::path &file, bool isSaid);

#endif
