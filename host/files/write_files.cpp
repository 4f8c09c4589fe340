#include <cerrno>
#include <cstring>
#include <system_error>

#include "files.h"
#if defined(MC3DS_HAVE_MCLMODEL)
#include "../gltf/gltf.h"
#endif
#include "frame/outcome.h"
#include "output/output.h"

namespace fs = std::filesystem;

static bool IsTaken(const std::vector<OutputFile> &files, const fs::path &path)
{
    for (const OutputFile &file : files)
        if (file.written == path)
            return true;
    return false;
}

// Files with targets in the same folder share a private folder. A file written in place may have a target
// where no folder can be created, as in /dev; it uses the system's temporary folder.
bool MakeRoom(std::vector<OutputFile> *files, const std::string &bareName, bool perObject, Reporter *reporter)
{
    std::string why;
    for (OutputFile &file : *files) {
        const bool isObject = perObject && IsText(file.kind);
        if (isObject && &file != &files->front())
            continue;
        std::error_code failure;
        const bool elsewhere = file.inPlace && !isObject;
        const fs::path parent = elsewhere ? fs::temp_directory_path(failure) : file.target.parent_path();
        const fs::path name = file.standardOutput ? PathOf(bareName) : PathOf(file.shown).filename();
        fs::path folder;
        for (const OutputFile &other : *files)
            if (other.written.parent_path().parent_path() == parent &&
                !IsTaken(*files, other.written.parent_path() / name))
                folder = other.written.parent_path();
        if (failure)
            why = "no folder for temporary files: " + failure.message();
        else if (folder.empty())
            folder = MakePrivateFolder(parent, &why);
        if (folder.empty() && !failure) {
            const fs::path shown = elsewhere ? parent : PathOf(file.shown).parent_path();
            why = "folder " + InQuotes(shown.empty() ? "." : shown.string()) + " can't be written to: " + why;
        }
        if (folder.empty()) {
            ReportUnwritten(reporter, file.shown, why);
            return false;
        }
        file.written = folder / name;
    }
    return true;
}

static void NameObjectFiles(const std::string &bareName, std::vector<OutputFile> *files)
{
    const fs::path folder = files->front().written.parent_path();
    for (uint32_t i = 0; i < files->size(); ++i) {
        char name[256];
        Mc3dsMakeObjectPath(name, bareName.c_str(), i);
        if (IsText((*files)[i].kind))
            (*files)[i].written = folder / PathOf(name);
    }
}

// Changes to the private folder of the first file for the library's writes, so that comments in its files
// name no temporary folder. Returns false after a report on failure.
static bool WriteTexts(const Mc3dsFile *scene, Mc3dsOptions *asked, const std::string &bareName,
                       const std::vector<OutputFile> &files, Reporter *reporter)
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
    const fs::path home = fs::current_path(failure); // empty where that folder is gone
    if (!EnterFolder(folder, &why)) {
        ReportError(reporter, why);
        return false;
    }
    Mc3dsOutput(scene, asked, nullptr);
    ReturnToFolder(home);
    reporter->modelIsHeard = true;
    const Mc3dsOutcome &outcome = *Mc3dsGetOutcome();
    if (outcome.outOfMemory)
        ReportError(reporter, "out of memory while writing; nothing is kept");
    else if (outcome.failedStep != Mc3dsFileStep::None)
        ReportUnwritten(reporter, files[outcome.failedFile].shown, std::strerror(outcome.failedError));
    return !outcome.outOfMemory && outcome.failedStep == Mc3dsFileStep::None;
}

static const OutputFile *FindKind(const std::vector<OutputFile> &files, TextKind kind)
{
    for (const OutputFile &file : files)
        if (file.kind == kind)
            return &file;
    return nullptr;
}

static bool WritePicture([[maybe_unused]] const HostOptions &options, [[maybe_unused]] const Mc3dsFile *scene,
                         [[maybe_unused]] const Mc3dsOptions &asked, [[maybe_unused]] const OutputFile *file,
                         [[maybe_unused]] Reporter *reporter, [[maybe_unused]] std::string *picture)
{
#if defined(MC3DS_HAVE_MCLMODEL) && defined(MC3DS_HAVE_PNG)
    PreviewOptions preview = options.preview;
    if (!file) // small, as one page holds the pictures of all scenes
        preview = {.width = pagePictureWidth, .height = pagePictureHeight};
    *picture = DrawPreview(scene, asked, preview, reporter);
    return !picture->empty() && (!file || WriteBytes(*file, *picture, reporter));
#else
    return options.previewFile.empty();
#endif
}

static bool WriteModel([[maybe_unused]] const Mc3dsFile *scene, [[maybe_unused]] const Mc3dsOptions &asked,
                       [[maybe_unused]] const std::string &scenePath, const OutputFile &file,
                       Reporter *reporter)
{
    std::string why = "the model can't be seen";
#if defined(MC3DS_HAVE_MCLMODEL)
    why = WriteGlb(scene, asked, scenePath, file.written, reporter);
#endif
    if (!why.empty())
        ReportUnwritten(reporter, file.shown, why);
    return why.empty();
}

static bool WriteAll(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                     Mc3dsOptions *asked, std::vector<OutputFile> *files, Reporter *reporter,
                     std::string *picture)
{
    const std::string bareName = BareOutputName(options, scenePath);
    if (!files->empty() && IsText(files->front().kind)) {
        if (!WriteTexts(scene, asked, bareName, *files, reporter))
            return false;
        if (options.flags & MC3DS_PER_OBJECT)
            NameObjectFiles(bareName, files);
    }
    if ((!options.previewFile.empty() || !options.pageFile.empty()) &&
        !WritePicture(options, scene, *asked, FindKind(*files, TextKind::Picture), reporter, picture))
        return false;
    const OutputFile *const glb = FindKind(*files, TextKind::Glb);
    return !glb || WriteModel(scene, *asked, scenePath, *glb, reporter);
}

// Returns the file that can't be delivered, with the reason in why, or null.
static const OutputFile *DeliverEach(const std::vector<OutputFile> &files, bool noClobber,
                                     std::vector<WrittenFile> *written, std::vector<std::string> *kept,
                                     std::string *why)
{
    // Copies come first, as they fail more often than renames: until then no file is replaced.
    for (const bool inPlace : {true, false}) {
        for (const OutputFile &file : files) {
            uintmax_t size = 0;
            if (file.inPlace != inPlace)
                continue;
            switch (Deliver(file, noClobber, &size, why)) {
            case Delivery::Failed: return &file;
            case Delivery::Unread: break;
            case Delivery::Kept: kept->push_back(file.shown); break;
            case Delivery::Done: written->push_back({file.shown, size});
            }
        }
    }
    return nullptr;
}

bool DeliverAll(const std::vector<OutputFile> &files, bool areNumbered, bool noClobber, Reporter *reporter)
{
    std::vector<WrittenFile> written;
    std::vector<std::string> kept;
    std::string why;
    const OutputFile *const failed = DeliverEach(files, noClobber, &written, &kept, &why);
    if (areNumbered) {
        ReportKept(reporter, kept);
        ReportWritten(reporter, written);
    } else {
        for (const std::string &name : kept)
            ReportKept(reporter, {name});
        for (const WrittenFile &file : written)
            ReportWritten(reporter, {file});
    }
    if (failed)
        ReportUnwritten(reporter, failed->shown, why);
    return !failed;
}

// Doesn't follow links below the folder that the user named: they may be someone else's.
static bool MakeOutputFolder(const std::string &top, const std::string &output, Reporter *reporter)
{
    std::error_code failure;
    const fs::path folder = PathOf(output).parent_path();
    fs::path at = PathOf(top);
    for (const fs::path &part : folder.lexically_relative(at)) {
        at /= part;
        if (part != "." && fs::is_symlink(fs::symlink_status(at, failure))) {
            ReportUnwritten(reporter, output, "its folder " + InQuotes(at.string()) + " is a link");
            return false;
        }
    }
    if (!folder.empty())
        fs::create_directories(folder, failure);
    if (failure)
        ReportUnwritten(reporter, output, "its folder can't be made: " + failure.message());
    return !failure;
}

bool WriteFiles(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                Mc3dsOptions *asked, Reporter *reporter, std::string *picture)
{
    std::vector<OutputFile> files;
    const std::string output = OutputName(options, scenePath);
    if (!options.outputDir.empty() && !MakeOutputFolder(options.outputDir, output, reporter))
        return false;
    if (!PlanOutput(options, scenePath, scene, reporter, &files))
        return false;
    const bool perObject = options.flags & MC3DS_PER_OBJECT;
    const bool done = MakeRoom(&files, BareOutputName(options, scenePath), perObject, reporter) &&
                      WriteAll(options, scenePath, scene, asked, &files, reporter, picture);
    ShowWarnings(reporter);
    const bool delivered = done && DeliverAll(files, perObject, options.noClobber, reporter);
    RemovePrivateFolders();
    return delivered;
}
