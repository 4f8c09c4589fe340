// The program around the library: scenes in, the files that were asked for out.
#ifndef MC3DS_HOST_HOST_H
#define MC3DS_HOST_HOST_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/frame.h"
#include "options.h"
#include "result.h"

struct McClump;

// A picture is no text, but goes the same way.
enum class TextKind { Script, Source, Header, Animation, Picture };

// A file that a conversion leaves behind. It's written elsewhere first, in a folder of its own.
struct OutputFile {
    TextKind kind;
    std::string shown;             // its name in reports, as the user would type it
    std::filesystem::path target;  // absolute, symbolic links followed
    bool inPlace;                  // exists and is no regular file: gets the bytes, is never replaced
    std::filesystem::path written; // where it grows
    bool standardOutput = false;   // then it's in place, and has no target
};

// The path that a text names, which is UTF-8 on Windows and bytes as they are elsewhere. The constructor from
// char would take each byte for a character there; string() gives the same text back.
inline std::filesystem::path PathOf(const std::string &text)
{
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

// ---- report.cpp: all that goes to stderr. Verbosity: -1 errors alone, 0 each kind of warning once, 1 files,
// objects and all warnings, 2 everything.

// Takes over the library's two channels. Results are files that were written or left alone.
void StartReports(int verbosity, bool showResults);
// What reports are about from here on, and where they are counted; null: the run itself.
void SetReportSubject(SceneResult *subject);
// Whether lines are added to the subject's said from here on instead of being shown.
void KeepReports(bool keep);
// Shows lines that were kept.
void ShowLines(const std::string &lines);
// Shows those kinds of warnings of a scene that the run has not shown yet, or takes them as shown elsewhere.
// Does nothing where each warning is shown as it comes, or none is, or reports are kept. The second is about
// the subject.
void ShowWarnings(const SceneResult &result, bool asShown);
void ShowWarningsSoFar(bool asShown);
// From here on reports of the library only tell that memory ran out: what it does was done before.
void MuteLibrary(bool mute);
void ReportError(const std::string &text);
void ReportWarning(const std::string &text);
void ReportResult(const std::string &text);
void ReportWritten(const std::string &name, uintmax_t size);
void ReportKept(const std::string &name);
// That a file can't be had, and why.
void ReportUnwritten(const std::string &name, const std::string &why);
std::string InQuotes(const std::string &text);
std::string InLowerCase(std::string text);
// Since the subject was set: memory ran out while the library worked.
bool MemoryRanOut();
// What the library said last at its levels 0 and 1, which counts as a warning no longer: it becomes an error.
std::string TakeLibraryError();
// The text with control bytes spelt out, fit for a terminal.
std::string Visible(std::string_view text);
// A line that stays at the bottom of the terminal until it's replaced; empty: none. It needs a terminal.
void SetStatusLine(const std::string &line);
// Is told every text of the library's message channel.
void WatchMessages(void (*watcher)(const char *text));

// ---- process.cpp: what differs from system to system

// Makes a closed standard stream fail when it is used, and a failing write an error instead of a signal.
void PrepareProcess();
// From here on an interrupt or a termination request runs cleanUp, in a thread of its own, and then ends the
// program, with the processes that it started. Only the first call counts.
void CleanUpWhenInterrupted(void (*cleanUp)());
// Doesn't return once that has begun: files vanish under whoever goes on working.
void StopIfInterrupted();
// Whether stderr is a terminal on which a line can be written over.
bool HasStatusLine();
// The standard output takes bytes as they are from here on.
void MakeStandardOutputBinary();
// A text that is the same for two paths if they name one file. The file need not exist.
std::string PathKey(const std::filesystem::path &path);
// Calls work for the indices below count, atOnce of them at a time, each in a process of its own, and
// finished with what it returned, in this process and in the order in which they end. Where a process failed,
// failure says how and the answer is empty. A system that can't split processes works one by one, with a
// warning. CleanUpWhenInterrupted has to come first; each process cleans up after itself.
void RunInProcesses(
    size_t count, size_t atOnce, const std::function<std::string(size_t)> &work,
    const std::function<void(size_t, const std::string &answer, const std::string &failure)> &finished);

// ---- private_folder.cpp: where files grow until they are whole

// A new folder inside parent that nobody else uses. Empty, with the reason, when there can't be one.
std::filesystem::path MakePrivateFolder(const std::filesystem::path &parent, std::string *why);
// Removes all private folders with what is still in them. None may be the current folder.
void RemovePrivateFolders();
// The names of private folders have the mark in them from here on. By that another process finds them in
// parent when the one that made them has died.
void MarkPrivateFolders(const std::string &mark);
void RemoveMarkedFolders(const std::filesystem::path &parent, const std::string &mark);
std::string RandomText();
// Makes folder the current one. False, with the reason, when that can't be.
bool EnterFolder(const std::filesystem::path &folder, std::string *why);

// ---- output_plan.cpp

struct NamedTarget {
    TextKind kind;
    std::string name;
};

// The files that options lead to, but for those of a per-object run. The animation file stands there whether
// the scene has animation or not.
std::vector<NamedTarget> TargetNames(const HostOptions &options, const std::string &scenePath);
// What a file of a per-object run is called.
std::string ObjectFileName(const HostOptions &options, const std::string &scenePath, size_t index);
// Sets all but written. Returns why nothing can be written there; empty when it can.
std::string LocateTarget(OutputFile *file);
// The files of a conversion, the scene's own first, or one for each object, a picture last; sets all but
// written. False, with its report, when one of them can't or mustn't be written.
bool PlanOutput(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                std::vector<OutputFile> *files);
// What OUTPUT is called, or would be if there were one file.
std::string OutputName(const HostOptions &options, const std::string &scenePath);
// The same without folders, as comments show it; a name also where OUTPUT is the standard output.
std::string BareOutputName(const HostOptions &options, const std::string &scenePath);
// The path of the .vue file that the library looks for; empty when the scene's path is too short for one.
std::string VuePath(const std::string &scenePath);

// ---- written_file.cpp

// Whether the library got to the end of the file that it wrote: it doesn't look at its writes.
bool IsWhole(const OutputFile &file, const Mc3dsFile *scene);
// Brings a written file to its target. Returns the bytes in it; on failure nothing, with its report.
bool Deliver(const OutputFile &file, uintmax_t *size);

// ---- file_output.cpp

// Finds each file a private folder to grow in. Object files share that of the first, which alone gets a path.
bool MakeRoom(std::vector<OutputFile> *files, const std::string &bareName, bool perObject);
// Writes the files that options lead to and brings them to their targets. False, with its report, when one
// failed.
bool ConvertToFiles(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                    Mc3dsOptions *asked);

// ---- scene_notes.cpp, name_notes.cpp: what the library passes over in silence

void ReportSceneNotes(const HostOptions &options, const Mc3dsFile *scene, const std::string &scenePath);
void ReportNames(const HostOptions &options, const Mc3dsFile *scene);

// ---- model_tree.cpp: the model of a direct build, on stdout

void PrintModel(const Mc3dsFile *scene, const McClump *clump);

#endif
