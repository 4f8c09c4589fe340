// --restore: the library reads a restored copy in a private folder in place of the scene.
#include <cstdio>
#include <system_error>

#include "files.h"

namespace fs = std::filesystem;

bool ReadWhole(const std::string &path, std::string *bytes)
{
    FILE *stream = std::fopen(path.c_str(), "rb");
    if (!stream)
        return false;
    std::error_code failure;
    const uintmax_t size = fs::file_size(PathOf(path), failure);
    bytes->resize(failure ? 0 : static_cast<size_t>(size));
    bytes->resize(std::fread(bytes->data(), 1, bytes->size(), stream));
    const bool done = !std::ferror(stream);
    std::fclose(stream);
    return done;
}

// The last three characters of a scene's path make way for "vue", so the copy ends in the same ones.
static std::string CopyName(const std::string &scenePath)
{
    const std::string end = scenePath.size() < 3 ? "" : scenePath.substr(scenePath.size() - 3);
    return "scene." + (end.size() == 3 && end.find_first_of("/\\.") == std::string::npos ? end : "3ds");
}

// Puts the animation that lies beside the scene beside its copy.
static void LendAnimation(const fs::path &vue, const fs::path &copy)
{
    std::error_code failure;
    fs::create_symlink(fs::absolute(vue, failure), copy, failure);
    if (failure)
        fs::copy_file(vue, copy, failure);
}

bool RestoreScene(const HostOptions &options, const std::string &scenePath, Reporter *reporter,
                  RestoredScene *restored)
{
    restored->path = scenePath;
    std::string original, why;
    if (!ReadWhole(scenePath, &original))
        return true;
    std::error_code failure;
    const fs::path vue = PathOf(VuePath(scenePath));
    const bool hasVue = !vue.empty() && fs::exists(fs::symlink_status(vue, failure));
    Mc3dsRestored made = Mc3dsRestore(
        original, hasVue ? options.restore & ~Mc3dsRestoreBit(Mc3dsRestoreKind::Motion) : options.restore);
    ReportRestored(reporter, made.records);
    if (!options.restoredFile.empty())
        restored->scene = made.scene.empty() ? original : made.scene;
    if (hasVue && !options.restoredFile.empty())
        ReadWhole(vue.string(), &restored->vue);
    else
        restored->vue = made.vue;
    if (made.scene.empty() && made.vue.empty())
        return true;
    if (made.scene.empty())
        made.scene = std::move(original);
    original = {};
    const fs::path folder = MakePrivateFolder(fs::temp_directory_path(failure), &why);
    if (folder.empty()) {
        ReportError(reporter, "no folder for the restored scene: " + why);
        return false;
    }
    const OutputFile scene = {.kind = TextKind::RestoredScene,
                              .shown = scenePath + " as restored",
                              .written = folder / PathOf(CopyName(scenePath))};
    const OutputFile animation = {.kind = TextKind::RestoredVue,
                                  .shown = scenePath + " as restored, its animation",
                                  .written = PathOf(VuePath(scene.written.string()))};
    if (!WriteBytes(scene, made.scene, reporter) ||
        (!made.vue.empty() && !WriteBytes(animation, made.vue, reporter)))
        return false;
    if (hasVue)
        LendAnimation(vue, animation.written);
    restored->path = scene.written.string();
    reporter->standIn = restored->path.substr(0, restored->path.size() - 3);
    return true;
}
