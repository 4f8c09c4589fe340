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
                folder = other.written.parent_path(); // unnoticed
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
    return DrawPreview(scene, asked, preview, reporter, picture) &&
           (!file || picture->empty() || WriteBytes(*file, *picture, reporter));
#else
    return options.previewFile.empty();
#endif
}

static bool WriteModel([[maybe_unused]] const Mc3dsFile *scene, [[maybe_unused]] const Mc3dsOptions &asked,
                       [[maybe_unused]] const std::string &scenePath, const OutputFile &file,
                       Reporter *reporter, [[maybe_unused]] bool *isEmpty)
{
    std::string why = "the model can't be seen";
#if defined(MC3DS_HAVE_MCLMODEL)
    const fs::path working = SpareName(file.written.parent_path());
    why = WriteGlb(scene, asked, scenePath, file.written, working, reporter, isEmpty);
    if (*isEmpty && why.empty())
        ReportFinding(reporter, {.kind = FindingKind::NothingToShow, .names = {{file.shown}}});
#endif
    if (!why.empty())
        ReportUnwritten(reporter, file.shown, why);
    return why.empty();
}

static bool WriteAll(const HostOptions &options, const std::string &scenePath, const Mc3dsFile *scene,
                     const RestoredScene &restored, Mc3dsOptions *asked, std::vector<OutputFile> *files,
                     Reporter *reporter, std::string *picture)
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
    bool isEmpty = false;
    if (glb && !WriteModel(scene, *asked, scenePath, *glb, reporter, &isEmpty))
        return false;
    for (const auto &[kind, bytes] : {std::pair(TextKind::RestoredScene, &restored.scene),
                                      std::pair(TextKind::RestoredVue, &restored.vue)})
        if (const OutputFile *const file = FindKind(*files, kind);
            file && !bytes->empty() && !WriteBytes(*file, *bytes, reporter))
            return false;
    // What has nothing to show isn't delivered.
    std::erase_if(*files, [&](const OutputFile &file) {
        return (file.kind == TextKind::RestoredScene && restored.scene.empty()) ||
               (file.kind == TextKind::RestoredVue && restored.vue.empty()) ||
               (file.kind == TextKind::Picture && picture->empty()) ||
               (file.kind == TextKind::Glb && isEmpty);
    });
    return true;
}

struct Delivered {
    std::vector<WrittenFile> written;
    size_t copies = 0; // how many of them were copied, and can't be undone
    std::vector<std::string> kept;
    std::vector<Replaced> replaced;
    const OutputFile *failed = nullptr;
    std::string why;
};

static void Note(const OutputFile &file, Delivery delivery, uint64_t size, Delivered *delivered)
{
    if (delivery == Delivery::Failed)
        delivered->failed = &file;
    else if (delivery == Delivery::Kept)
        delivered->kept.push_back(file.shown);
    else if (delivery == Delivery::Done)
        delivered->written.push_back({file.shown, size});
}

// Copies come first, as they fail more often than renames: until then no file is replaced. Interrupts wait
// until all files are renamed. If one can't be, the others are put back.
static Delivered DeliverEach(const std::vector<OutputFile> &files, bool noClobber)
{
    Delivered delivered;
    std::error_code failure;
    for (const bool inPlace : {true, false}) {
        if (!inPlace) {
            delivered.copies = delivered.written.size();
            HoldInterrupts();
        }
        for (const OutputFile &file : files) {
            if (file.inPlace != inPlace || delivered.failed)
                continue;
            const uint64_t size = fs::file_size(file.written, failure);
            delivered.why = failure ? failure.message() : "";
            Replaced replaced;
            const Delivery delivery = failure   ? Delivery::Failed
                                      : inPlace ? CopyFile(file, &delivered.why)
                                                : MoveFile(file, noClobber, &replaced, &delivered.why);
            Note(file, delivery, size, &delivered);
            if (!replaced.target.empty() && (delivery == Delivery::Done || !replaced.aside.empty()))
                delivered.replaced.push_back(replaced);
        }
    }
    return delivered;
}

// Restores the old files after a failed delivery. Returns what can't be restored, for the report.
static std::string PutAllBack(Delivered *delivered)
{
    std::string lost;
    for (; !delivered->replaced.empty(); delivered->replaced.pop_back())
        if (const Replaced &last = delivered->replaced.back(); !PutBack(last))
            lost += "; " + InQuotes(last.target.string()) + " can't be put back";
    delivered->written.resize(delivered->copies);
    return lost;
}

bool DeliverAll(const std::vector<OutputFile> &files, bool areNumbered, bool noClobber, Reporter *reporter)
{
    Delivered delivered = DeliverEach(files, noClobber);
    const std::string lost = delivered.failed ? PutAllBack(&delivered) : "";
    std::error_code ignored;
    for (const Replaced &replaced : delivered.replaced)
        if (!replaced.aside.empty())
            fs::remove(replaced.aside, ignored);
    if (areNumbered) {
        ReportKept(reporter, delivered.kept);
        ReportWritten(reporter, delivered.written);
    } else {
        for (const std::string &name : delivered.kept)
            ReportKept(reporter, {name});
        for (const WrittenFile &file : delivered.written)
            ReportWritten(reporter, {file});
    }
    if (delivered.failed)
        ReportUnwritten(reporter, delivered.failed->shown, delivered.why + lost);
    return !delivered.failed;
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
                const RestoredScene &restored, Mc3dsOptions *asked, Reporter *reporter, std::string *picture)
{
    std::vector<OutputFile> files;
    const std::string output = OutputName(options, scenePath);
    if (!options.outputDir.empty() && !MakeOutputFolder(options.outputDir, output, reporter))
        return false;
    if (!PlanOutput(options, scenePath, scene, reporter, &files))
        return false;
    const bool perObject = options.flags & MC3DS_PER_OBJECT;
    const bool done = MakeRoom(&files, BareOutputName(options, scenePath), perObject, reporter) &&
                      WriteAll(options, scenePath, scene, restored, asked, &files, reporter, picture);
    ShowWarnings(reporter);
    const bool delivered = done && DeliverAll(files, perObject, options.noClobber, reporter);
    RemovePrivateFolders();
    return delivered;
}
