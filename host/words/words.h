// What people read: sentences, lines on stderr, information, summary and page.
#ifndef MC3DS_HOST_WORDS_H
#define MC3DS_HOST_WORDS_H

#include <functional>

#include "../run/result.h"

// ---- sentences.cpp: all texts of findings

std::string SentenceOf(const Finding &finding);
// What --restore did with a scene, in one line without names.
std::string RestoredText(const std::vector<Finding> &restored);
// The same with how often it was met.
std::string WarningText(const Finding &finding);
// A few words for the kind, as in the last lines of a run.
std::string PhraseOf(const Finding &finding);
// A name for the kind that programs can compare. It doesn't change with the words.
const char *IdOf(const Finding &finding);

// ---- reporter.cpp: lines on stderr

// How a run speaks, and the scene that it speaks of. Lines about a scene also go into its result.
struct Reporter {
    int verbosity =
        0; // -1 errors only, 0 each kind of warning once, 1 files, objects and all warnings, 2 all
    bool oneLineEach = false; // below verbosity 1: no results, and only the worst warning of each scene
    bool keepsLines = false;  // lines about a scene are added to its said instead of being shown
    std::function<void(const Mc3dsReport &)> onMessage = {}; // gets every message of the library

    SceneResult *scene = nullptr; // null: the run
    // Of the scene; begun anew by BeginScene.
    bool memoryRanOut = false;  // while the model was built
    bool modelIsHeard = false;  // the library has reported on the model once; see BuildModel
    std::string notAScene = {}; // the library's reason when the file is no scene
    std::map<std::string, size_t> *reports = nullptr; // if set, gets texts of the error channel with counts
    size_t kindsShown = 0;                            // how many of the scene's warnings are shown
    std::string heldErrors = {};                      // shown after the scene's warnings
    std::string lastReport = {};                      // text of the newest warning of the library,
    size_t lastKind = 0;                              // and the index of its kind
    bool linesAreLeftOut = false;
    std::string standIn = {}; // start of the path that the library reads in place of the scene's; empty: none

    std::string statusLine = {}; // at the bottom of the terminal
    size_t statusWidth = 0;
};

// The library's reports go to reporter until another one listens; null: nowhere. Call it again after a change
// of verbosity or onMessage.
void ListenToLibrary(Reporter *reporter);
// Reports between the two are about the scene and counted in it. EndScene shows what is pending.
void BeginScene(Reporter *reporter, SceneResult *scene);
void EndScene(Reporter *reporter);

void ReportError(Reporter *reporter, const std::string &text);
// Reports that a file can't be written, and why.
void ReportUnwritten(Reporter *reporter, const std::string &name, const std::string &why);
// A warning, or a note if that is the finding's weight.
void ReportFinding(Reporter *reporter, const Finding &finding);
// Several files are numbered ones and get one line, unless verbosity is above 0.
void ReportWritten(Reporter *reporter, const std::vector<WrittenFile> &files);
// One line for what --restore did; notes for what had to stay as it was.
void ReportRestored(Reporter *reporter, const std::vector<Mc3dsRestoreRecord> &records);
void ReportKept(Reporter *reporter, const std::vector<std::string> &names);
// Shows the kinds of the scene's warnings that weren't shown yet, or only marks them as shown.
void ShowWarnings(Reporter *reporter);
void MarkWarningsShown(Reporter *reporter);
// Shows complete lines, such as kept ones.
void ShowLines(Reporter *reporter, const std::string &lines);
// Shows a line at the bottom of the terminal until it is replaced; empty: removes it. stderr must be a
// terminal.
void SetStatusLine(Reporter *reporter, const std::string &line);

// ---- summary.cpp

// The totals of a run, in lines of at most 80 columns. hasSummary: a summary file is written too.
std::string TotalsText(const RunTotals &totals, double seconds, bool hasSummary);
// The results of each scene and the totals as JSON. interrupted: results lacks some scenes of the run.
std::string SummaryText(const std::vector<SceneResult> &results, double seconds, bool interrupted);

// ---- page.cpp

// The results as an HTML page without scripts that loads nothing: a row for each scene, failed ones first,
// then those with warnings. Links to files are relative to folder, that of the page.
std::string PageText(const std::vector<SceneResult> &results, double seconds,
                     const std::filesystem::path &folder);

// ---- info_text.cpp, info_json.cpp. reports: texts of the error channel during the load, with counts

// Prints the scene as text on stdout, with colours and box-drawing characters if stdout is a terminal that
// supports them.
void PrintInfo(const Mc3dsFile *scene, const SceneResult &result,
               const std::map<std::string, size_t> &reports);
// Prints the scene as one line of JSON in UTF-8 on stdout, even a scene without objects. scene is null if it
// could not be loaded; "loaded" is false then.
void PrintJson(const Mc3dsFile *scene, const SceneResult &result,
               const std::map<std::string, size_t> &reports);

// ---- left_behind.cpp: what --info lists as left behind

struct LeftBehind {
    std::vector<Finding> losses;
    std::vector<std::string> lights, cameras, hidden; // names, in the order of the file
    std::map<std::string, size_t> unsupported;        // what the format has and the renderer hasn't
    std::map<std::string, size_t> chunks;             // unknown tags in hexadecimal
};

// isRestored: --restore was asked for.
LeftBehind FindLeftBehind(const Mc3dsFile *scene, bool isRestored);

#endif
