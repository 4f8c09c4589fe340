// The program around the library: one scene in, the files that were asked for out.
#ifndef MC3DS_HOST_HOST_H
#define MC3DS_HOST_HOST_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "frame/frame.h"
#include "options.h"

struct McClump;

enum class TextKind { Script, Source, Header, Animation };

// A file that a conversion leaves behind. The library writes it elsewhere first, in a folder of its own.
struct OutputFile {
    TextKind kind;
    std::string shown;             // its name in reports, as the user would type it
    std::filesystem::path target;  // absolute, symbolic links followed
    bool inPlace;                  // exists and is no regular file: gets the bytes, is never replaced
    std::filesystem::path written; // where the library leaves it
};

// ---- report.cpp: all that goes to stderr. Verbosity: -1 errors alone, 0 warnings and results too, 1 files
// and objects, 2 everything.

// Takes over the library's two channels.
void StartReports(int verbosity);
// What reports are about from here on; forgets what was noticed about the one before.
void SetReportSubject(const std::string &subject);
// Says how often the library said what it said more than once: it's shown the first time only.
void FinishReports();
void ReportError(const std::string &text);
void ReportWarning(const std::string &text);
void ReportResult(const std::string &text);
// That a file can't be had, and why.
void ReportUnwritten(const std::string &name, const std::string &why);
std::string InQuotes(const std::string &text);
// Since the subject was set: memory ran out while the library worked; what it said last at its levels 0
// and 1.
bool MemoryRanOut();
std::string LastLibraryError();
// The text with control bytes spelt out, fit for a terminal.
std::string Visible(std::string_view text);

// ---- process.cpp

// Makes a closed standard stream fail when it is used, and a failing write an error instead of a signal.
void PrepareProcess();
// From here on an interrupt or a termination request runs cleanUp, in a thread of its own, and then ends the
// program. Only the first call counts.
void CleanUpWhenInterrupted(void (*cleanUp)());
// Doesn't return once that has begun: files vanish under whoever goes on working.
void StopIfInterrupted();

// ---- private_folder.cpp: where files grow until they are whole

// A new folder inside parent that nobody else uses. Empty, with the reason, when there can't be one.
std::filesystem::path MakePrivateFolder(const std::filesystem::path &parent, std::string *why);
// Removes all private folders with what is still in them. None may be the current folder.
void RemovePrivateFolders();
// Makes folder the current one. False, with the reason, when that can't be.
bool EnterFolder(const std::filesystem::path &folder, std::string *why);

// ---- output_plan.cpp

// The files of a conversion, the scene's own first, or one for each object; sets all but written. False, with
// its report, when one of them can't or mustn't be written.
bool PlanOutput(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                std::vector<OutputFile> *files);
// What OUTPUT is called, or would be if there were one file.
std::string OutputName(const HostOptions &options, const std::string &scenePath);
// The path of the .vue file that the library looks for; empty when the scene's path is too short for one.
std::string VuePath(const std::string &scenePath);

// ---- scene_notes.cpp: what the library passes over in silence

// Why the scene has no animation, if it has none.
void ReportMissingAnimation(const Mc3dsFile *scene, const std::string &scenePath);
// Objects that hang from no object that is written.
void ReportLostObjects(const Mc3dsFile *scene);

// ---- written_file.cpp

// Whether the library got to the end of the file that it wrote: it doesn't look at its writes.
bool IsWhole(const OutputFile &file, const Mc3dsFile *scene);
// Brings a written file to its target. Returns the bytes in it; on failure nothing, with its report.
bool Deliver(const OutputFile &file, uintmax_t *size);

// ---- file_output.cpp

// Writes the files of a text target and brings them to their targets. False, with its report, when one
// failed.
bool ConvertToFiles(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                    Mc3dsOptions *asked);

// ---- convert.cpp: everything for one scene. False, with its reports, when it failed.

bool ConvertScene(const HostOptions &options, const std::string &scenePath);

// ---- model_tree.cpp: the model of a direct build, on stdout

void PrintModel(const Mc3dsFile *scene, const McClump *clump);

#endif
