// What comes out of a scene: its files, planned, grown in private folders, looked at and delivered.
#ifndef MC3DS_HOST_FILES_H
#define MC3DS_HOST_FILES_H

#include <filesystem>
#include <string>
#include <vector>

#include "../input/input.h"

// A file that a conversion leaves behind. It's written elsewhere first, in a folder of its own.
struct OutputFile {
    TextKind kind;
    std::string shown;             // its name in reports, as the user would type it
    std::filesystem::path target;  // absolute, symbolic links followed
    bool inPlace;                  // exists and is no regular file: gets the bytes, is never replaced
    std::filesystem::path written; // where it grows
    bool standardOutput = false;   // then it's in place, and has no target
    bool followsLink = true;       // else a link at its place is replaced: a stranger may have put it there
};

// ---- private_folder.cpp: where files grow until they are whole

// A new folder inside parent that nobody else uses. Empty, with the reason, when there can't be one.
std::filesystem::path MakePrivateFolder(const std::filesystem::path &parent, std::string *why);
// Removes all private folders with what is still in them. None may be the current folder.
void RemovePrivateFolders();
// The names of private folders have the mark in them from here on. By that another process finds them in
// parent when the one that made them has died.
void MarkPrivateFolders(const std::string &mark);
void RemoveMarkedFolders(const std::filesystem::path &parent, const std::string &mark);
// Makes folder the current one. False, with the reason, when that can't be.
bool EnterFolder(const std::filesystem::path &folder, std::string *why);
// Goes back there. Where that can't be, or folder is empty, the root becomes the current folder, and relative
// paths lead nowhere from then on.
void ReturnToFolder(const std::filesystem::path &folder);
bool CurrentFolderIsLost();

// ---- output_plan.cpp

// Sets all but written. Returns why nothing can be written there; empty when it can.
std::string LocateTarget(OutputFile *file);
// The files of a conversion, the scene's own first, or one for each object, a picture last; sets all but
// written. False, with its report, when one of them can't or mustn't be written.
bool PlanOutput(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                std::vector<OutputFile> *files);

// ---- written_file.cpp

// Whether the library got to the end of the file that it wrote: it doesn't look at its writes.
bool IsWhole(const OutputFile &file, const Mc3dsFile *scene);
// Fills file.written. False, with its report, when that fails.
bool WriteBytes(const OutputFile &file, const std::string &bytes);

enum class Delivery { Done, Kept, Unread, Failed }; // unread: whoever read the standard output has closed it

// Brings a written file to its target. size gets the bytes in it, why the reason of a failure. With noClobber
// a target that exists, even since a moment ago, is kept.
Delivery Deliver(const OutputFile &file, bool noClobber, uintmax_t *size, std::string *why);

// ---- write_files.cpp

// Finds each file a private folder to grow in. Object files share that of the first, which alone gets a path.
bool MakeRoom(std::vector<OutputFile> *files, const std::string &bareName, bool perObject);
// Deliver for each of them, with its reports. False when one failed. areNumbered: their names differ in a
// number.
bool DeliverAll(const std::vector<OutputFile> &files, bool areNumbered, bool noClobber);
// Writes the files that options lead to and brings them to their targets. False, with its report, when one
// failed. picture gets the bytes of the PNG file, if one is drawn.
bool WriteFiles(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                Mc3dsOptions *asked, std::string *picture);

// ---- summary_file.cpp: the summary and the report of a run

// Finds out where a file of that name goes, before the run moves between folders. False, with its report,
// when WriteReport is bound to fail.
bool LocateReport(const std::string &name, OutputFile *file);
// Brings the text to the file, whole or not at all. False, with its report, when that can't be.
bool WriteReport(const OutputFile &located, bool noClobber, const std::string &text);

// ---- convert.cpp: everything for one scene, with its reports

// Why the files of a scene are not even opened; empty when they may be. A pipe or a device may have no end.
std::string WhyNotRegular(const std::string &scenePath);
SceneResult ConvertScene(const HostOptions &options, const SceneJob &job);

#endif
