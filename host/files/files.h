// The output files of a scene: planned, written in private folders, checked and delivered.
#ifndef MC3DS_HOST_FILES_H
#define MC3DS_HOST_FILES_H

#include <filesystem>
#include <string>
#include <vector>

#include "../input/input.h"

// An output file of a conversion. It is written in a private folder and then delivered to its target.
struct OutputFile {
    TextKind kind;
    std::string shown;                  // its name in reports, as the user would type it
    std::filesystem::path target = {};  // absolute, symbolic links followed
    bool inPlace = false;               // the target, such as a device, gets the bytes and is never replaced
    std::filesystem::path written = {}; // its path in the private folder
    bool standardOutput = false;        // implies inPlace; target is empty
    bool followsLink = true; // false: a link at the target is replaced, as it may be someone else's
};

// ---- private_folder.cpp: folders for files that are still being written

// Creates a folder in parent for this process alone. On failure returns an empty path and the reason in why.
std::filesystem::path MakePrivateFolder(const std::filesystem::path &parent, std::string *why);
// A path in a private folder that no output of a scene has.
std::filesystem::path SpareName(const std::filesystem::path &folder);
// Removes all private folders with their contents. None may be the current folder.
void RemovePrivateFolders();
// Adds mark to the names of private folders from now on. If this process dies, another one finds them in
// parent by the mark.
void MarkPrivateFolders(const std::string &mark);
void RemoveMarkedFolders(const std::filesystem::path &parent, const std::string &mark);
// Changes the current folder. On failure returns false and the reason in why.
bool EnterFolder(const std::filesystem::path &folder, std::string *why);
// Changes the current folder back. If that fails or folder is empty, the root becomes the current folder, and
// relative paths are no longer valid.
void ReturnToFolder(const std::filesystem::path &folder);
bool CurrentFolderIsLost();

// ---- restored_scene.cpp

struct RestoredScene {
    std::string path;       // what the library has to read: a file in a private folder, or the scene itself
    std::string scene, vue; // bytes for --restored; vue may be empty
};

// Reads a whole file. False if it can't be read.
bool ReadWhole(const std::string &path, std::string *bytes);
// Restores a scene as the options ask, and reports what was done. Returns false after a report on failure.
// What can't be read is left to the library and its reports.
bool RestoreScene(const HostOptions &options, const std::string &scenePath, Reporter *reporter,
                  RestoredScene *restored);

// ---- output_plan.cpp

// Sets target and inPlace. Returns why the file can't be written; empty if it can.
std::string LocateTarget(OutputFile *file);
// Lists the files of a conversion: those of the scene or of its objects, in the order in which the library
// opens them, then the picture and the .glb file. Sets all but written. Returns false after a report if one
// can't or mustn't be written.
bool PlanOutput(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                Reporter *reporter, std::vector<OutputFile> *files);

// ---- written_file.cpp

// Writes bytes to file.written. Returns false after a report on failure.
bool WriteBytes(const OutputFile &file, const std::string &bytes, Reporter *reporter);

enum class Delivery { Done, Kept, Unread, Failed }; // Unread: standard output was closed by its reader

// A target that was replaced or created.
struct Replaced {
    std::filesystem::path target = {};
    std::filesystem::path aside = {}; // the old file, in the private folder; empty: there was none
};

// Copies a written file into its target. On failure why gets the reason.
Delivery CopyFile(const OutputFile &file, std::string *why);
// Moves a written file to its target. noClobber: an existing target is kept, even one created during the
// conversion. On failure why gets the reason, and PutBack(*replaced) restores the target.
Delivery MoveFile(const OutputFile &file, bool noClobber, Replaced *replaced, std::string *why);
// Undoes MoveFile. False if that fails.
bool PutBack(const Replaced &replaced);

// ---- write_files.cpp

// Sets written for each file, in a private folder. Object files share the folder of the first; only the first
// gets its path here.
bool MakeRoom(std::vector<OutputFile> *files, const std::string &bareName, bool perObject,
              Reporter *reporter);
// Delivers each file and reports it. False if one failed. areNumbered: the names differ only in a number.
bool DeliverAll(const std::vector<OutputFile> &files, bool areNumbered, bool noClobber, Reporter *reporter);
// Writes the requested files and delivers them. Returns false after a report on failure. picture gets the
// bytes of the PNG file, if one is drawn.
bool WriteFiles(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                const RestoredScene &restored, Mc3dsOptions *asked, Reporter *reporter, std::string *picture);

// ---- run_file.cpp: a file of the run: the summary or the page

// Finds the target of name before the run changes the current folder. Returns false after a report if
// WriteRunFile can't succeed.
bool LocateRunFile(const std::string &name, Reporter *reporter, OutputFile *file);
// Writes the whole text or nothing. Returns false after a report on failure.
bool WriteRunFile(const OutputFile &located, bool noClobber, const std::string &text, Reporter *reporter);

#endif
