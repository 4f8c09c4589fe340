#include <cerrno>
#include <cstring>
#include <system_error>

#include "host.h"

namespace fs = std::filesystem;

static bool IsTaken(const std::vector<OutputFile> &files, const fs::path &path)
{
    for (const OutputFile &file : files)
        if (file.written == path)
            return true;
    return false;
}

// A private folder for each file, shared by those whose targets stand in one folder. What isn't replaced may
// stand where nothing can be made, such as among the devices; it grows among the temporary files.
// The files of a per-object run share the folder of the first, and are found there when they are written.
static bool MakeRoom(std::vector<OutputFile> *files, bool perObject)
{
    std::string why;
    for (OutputFile &file : *files) {
        std::error_code failure;
        const bool elsewhere = file.inPlace && !perObject;
        const fs::path parent = elsewhere ? fs::temp_directory_path(failure) : file.target.parent_path();
        const fs::path name = fs::path(file.shown).filename();
        fs::path folder;
        for (const OutputFile &other : *files)
            if (other.written.parent_path().parent_path() == parent &&
                !IsTaken(*files, other.written.parent_path() / name))
                folder = other.written.parent_path();
        if (failure)
            why = "no folder for temporary files: " + failure.message();
        else if (folder.empty())
            folder = MakePrivateFolder(parent, &why);
        if (folder.empty()) {
            ReportUnwritten(file.shown, why);
            return false;
        }
        file.written = folder / name;
        if (perObject)
            break;
    }
    return true;
}

// All files of a per-object run end in the object's index and an extension, but begin with a part of the
// given name only: what was written tells how much. The shortest name has an index of one digit.
static void FindObjectFiles(const fs::path &folder, std::vector<OutputFile> *files)
{
    std::string shortest;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        const std::string stem = entry->path().stem().string();
        if (shortest.empty() || stem.size() < shortest.size())
            shortest = stem;
    }
    if (!shortest.empty())
        shortest.pop_back();
    for (size_t i = 0; i < files->size(); ++i)
        (*files)[i].written = folder / (shortest + std::to_string(i) + ".mcx");
}

// Lets the library write into the private folders, from inside that of the first file: it sees bare names,
// and the comments of its files name no folder that is gone when they are read. Returns errno as the library
// left it, or -1 with a report when it couldn't begin.
static int WriteFiles(const Mc3dsFile *scene, Mc3dsOptions *asked, const std::string &bareName,
                      const std::vector<OutputFile> &files)
{
    std::string header, animation, why;
    const fs::path folder = files.front().written.parent_path();
    for (const OutputFile &file : files) {
        const fs::path path = file.written.parent_path() == folder ? file.written.filename() : file.written;
        if (file.kind == TextKind::Header)
            header = path.string();
        if (file.kind == TextKind::Animation)
            animation = path.string();
    }
    asked->outputFile = bareName.c_str();
    asked->headerFile = header.c_str();
    asked->animationFile = animation.c_str();

    std::error_code failure;
    const fs::path home = fs::current_path(failure);
    if (failure) {
        ReportError("the current folder is unknown: " + failure.message());
        return -1;
    }
    if (!EnterFolder(folder, &why)) {
        ReportError(why);
        return -1;
    }
    errno = 0;
    Mc3dsOutput(scene, asked, nullptr);
    const int reason = errno;
    if (!EnterFolder(home, &why)) {
        ReportError(why);
        return -1;
    }
    return reason;
}

// reason is errno behind the writing. Where nothing failed it may be anything, but for what only failed
// writes leave there.
static bool CheckFiles(const Mc3dsFile *scene, const std::vector<OutputFile> &files, int reason)
{
    if (reason == ENOMEM || MemoryRanOut()) {
        ReportError("out of memory while writing; nothing is kept");
        return false;
    }
    for (const OutputFile &file : files) {
        if (!IsWhole(file, scene)) {
            ReportUnwritten(file.shown, reason ? std::strerror(reason) : "its end is missing");
            return false;
        }
    }
    bool failed = reason == ENOSPC || reason == EFBIG || reason == EIO;
#if defined(EDQUOT)
    failed = failed || reason == EDQUOT;
#endif
    if (failed)
        ReportUnwritten(files.front().shown, std::strerror(reason));
    return !failed;
}

bool ConvertToFiles(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                    Mc3dsOptions *asked)
{
    std::vector<OutputFile> files;
    if (!PlanOutput(options, scenePath, scene, &files))
        return false;
    const bool perObject = options.flags & MC3DS_PER_OBJECT;
    if (!MakeRoom(&files, perObject))
        return false;
    const std::string bareName = fs::path(OutputName(options, scenePath)).filename().string();
    const fs::path folder = files.front().written.parent_path();
    const int reason = WriteFiles(scene, asked, bareName, files);
    FinishReports();
    if (perObject)
        FindObjectFiles(folder, &files);
    bool done = reason >= 0 && CheckFiles(scene, files, reason);
    // Copying can still fail where moving hardly does: what is replaced stays as it was until then.
    for (const bool inPlace : {true, false}) {
        for (const OutputFile &file : files) {
            uintmax_t size = 0;
            if (file.inPlace != inPlace)
                continue;
            done = done && Deliver(file, &size);
            if (done)
                ReportResult("wrote " + file.shown + " (" + std::to_string(size) + " bytes)");
        }
    }
    RemovePrivateFolders();
    return done;
}
