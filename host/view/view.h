// What people, and programs in their place, read about scenes and what was done with them.
#ifndef MC3DS_HOST_VIEW_H
#define MC3DS_HOST_VIEW_H

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "../base/base.h"
#include "frame/frame.h"

// ---- what became of a scene

// How much a warning is about, the most first: parts of the scene are left out, the file is damaged, a result
// may differ from what was meant.
enum class Weight { Loss, Damage, Doubt };

// Warnings that say the same of different things.
struct WarningKind {
    std::string kind;  // the text with '*' for names and numbers
    std::string first; // the first of them in full
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
    uint64_t bytes = 0;         // in the scene's file
    GeometryCounts read, model; // model: what was written or built
    double seconds = 0.0;
    std::vector<WrittenFile> written;
    std::vector<std::string> kept;            // files that were there already and left alone
    std::vector<WarningKind> warnings;        // the weightiest first
    std::vector<std::string> notes;           // what is no fault of anybody
    std::vector<std::string> missingTextures; // found for --report alone
    std::string picture;                      // a PNG file's bytes; empty without --report
    std::string said;                         // lines for stderr that were kept
};

// ---- report.cpp: all that goes to stderr. Verbosity: -1 errors alone, 0 each kind of warning once, 1 files,
// objects and all warnings, 2 everything.

// Takes over the library's two channels. With oneLineEach no results are shown (files that were written or
// left alone), and of a scene's warnings the weightiest alone, unless verbosity asks for more.
void StartReports(int verbosity, bool oneLineEach);
// What reports are about from here on, and where they are counted; null: the run itself. What is still to be
// said about the subject before is said.
void SetReportSubject(SceneResult *subject);
// Whether lines are added to the subject's said from here on instead of being shown.
void KeepReports(bool keep);
// Shows lines that were kept.
void ShowLines(const std::string &lines);
// Shows those kinds of the subject's warnings that were not shown yet, or takes them as shown elsewhere.
void ShowWarnings();
void MarkWarningsShown();
// From here on reports of the library only tell that memory ran out: what it does was done before.
void MuteLibrary(bool mute);
void ReportError(const std::string &text);
void ReportWarning(const std::string &text, Weight weight = Weight::Doubt);
// Says what is no fault and counts as no warning.
void ReportNote(const std::string &text);
// As ShowWarnings words it.
std::string WarningText(const WarningKind &warning);
// Files of which each has its number have one line, unless verbosity asks for more.
void ReportWritten(const std::vector<WrittenFile> &files);
void ReportKept(const std::vector<std::string> &names);
// That a file can't be had, and why.
void ReportUnwritten(const std::string &name, const std::string &why);
// Since the subject was set: memory ran out while the library worked.
bool MemoryRanOut();
// What the library said last at its levels 0 and 1, which counts as a warning no longer: it becomes an error.
std::string TakeLibraryError();
// A line that stays at the bottom of the terminal until it's replaced; empty: none. It needs a terminal.
void SetStatusLine(const std::string &line);
// Is told every text of the library's message channel.
void WatchMessages(void (*watcher)(const char *text));

// ---- summary.cpp

size_t WarningCount(const SceneResult &result);
// Some lines of what was done, of at most 80 columns each. hasSummary: there is one to look into.
std::string TotalsText(const std::vector<SceneResult> &results, double seconds, bool hasSummary);
// The same of each scene and of all, as JSON. interrupted: not all scenes of the run are among them.
std::string SummaryText(const std::vector<SceneResult> &results, double seconds, bool interrupted);

// ---- report_page.cpp

// What was done as an HTML page without scripts that loads nothing: a row for each scene, failed ones first,
// then those with warnings. Links to files lead there from the page's folder.
std::string ReportPage(const std::vector<SceneResult> &results, double seconds,
                       const std::filesystem::path &folder);

// ---- losses.cpp

// Why the file can't be whole; empty when it can.
std::string CutFileText(const Mc3dsFile *scene);
// What an output with those bits of Mc3dsOptions.flags lacks of the scene, the weightiest first.
std::vector<std::string> FindLosses(const Mc3dsFile *scene, uint32_t flags);
// That objects share names; empty when none do.
std::string SharedNamesText(const Mc3dsFile *scene);
// That objects have keys to move by and no .vue file; empty when that isn't so.
std::string LostKeysText(const Mc3dsFile *scene);
// What an output with those flags has, and what the scene has.
GeometryCounts CountModel(const Mc3dsFile *scene, uint32_t flags);
GeometryCounts CountScene(const Mc3dsFile *scene);

// ---- scene_notes.cpp, name_notes.cpp: what the library passes over in silence

// False, with its reports, when a name breaks out of the text that is to be written and isn't forced to be.
bool ReportSceneNotes(const Mc3dsOptions &options, const Mc3dsFile *scene, const std::string &scenePath,
                      bool forceNames);
bool ReportNames(const Mc3dsOptions &options, const Mc3dsFile *scene, bool forceNames);

// ---- load_notes.cpp

// What the library said while it loaded a scene about things that the scene records don't keep.
struct SceneNotes {
    std::vector<std::string> lights, cameras, hidden; // names, in the order of the file
    std::map<std::string, size_t> chunks;             // unknown tags in hexadecimal, and how often they came
    std::map<std::string, size_t> unsupported;        // other things without a place in a model, likewise
    std::map<std::string, size_t> reports;            // the texts of the error channel, likewise
    std::string newestObject;                         // of use to the collecting only
};

// From here to StopNotes all that the library says goes into notes too, besides where it went before. notes
// has to live that long, and nobody else may set a callback meanwhile.
void StartNotes(SceneNotes *notes);
void StopNotes();

// ---- info_text.cpp, info_json.cpp

// The scene for people, on stdout: with colours and box-drawing characters where stdout is a terminal that
// has them.
void PrintInfo(const Mc3dsFile *scene, const std::string &scenePath, const SceneNotes &notes);
// The same for programs: one line of JSON in UTF-8 and ASCII, on stdout, also for a scene without objects.
// Null stands for a scene that could not be loaded: "loaded" is false then.
void PrintJson(const Mc3dsFile *scene, const std::string &scenePath, const SceneNotes &notes);

// ---- preview.cpp: where the Meshcaster library shows its models, and there is libpng

// Pixels along one side of a picture of one frame.
constexpr int previewSideLeast = 16, previewSideMost = 4096;

// A picture that is drawn for the report alone.
constexpr int reportPictureWidth = 320, reportPictureHeight = 240;

// What to draw. The values here are the defaults.
struct PreviewOptions {
    int width = 0, height = 0; // pixels of one frame; 0: 800 x 600, in a strip 320 x 240
    int64_t frame = -1;        // of the animation, from 0; -1: objects stand as asked.flags says
    bool strip = false; // several frames side by side, spread over the whole animation; goes before frame
};

// Draws the model that asked leads to (its form and sizes count, its file names don't; it stays as it is).
// Returns the bytes of a PNG file; empty, with its report, when there is no picture. A scene without
// animation gets one picture in place of a strip, with a warning.
std::string DrawPreview(const Mc3dsFile *scene, const Mc3dsOptions &asked, const PreviewOptions &preview);

// ---- glb.cpp: where the Meshcaster library shows its models

// Writes the model that asked leads to (its form and sizes count) to the file as binary glTF 2.0, and another
// file beside it for a while. Pictures of textures are looked for beside the scene. isSaid: what the library
// has to say about the scene's geometry was said. Returns why it failed; empty when it didn't.
std::string WriteGlb(const Mc3dsFile *scene, const Mc3dsOptions &asked, const std::string &scenePath,
                     const std::filesystem::path &file, bool isSaid);

#endif
