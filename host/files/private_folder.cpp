#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>

#include "files.h"

namespace fs = std::filesystem;

static std::mutex foldersMutex;
static std::vector<fs::path> folders;
static const std::string folderStart = ".3ds2mcx-";
static std::string folderMark;

void MarkPrivateFolders(const std::string &mark)
{
    folderMark = mark;
}

fs::path MakePrivateFolder(const fs::path &parent, std::string *why)
{
    CleanUpWhenInterrupted(RemovePrivateFolders);
    StopIfInterrupted();
    const std::lock_guard lock(foldersMutex);
    if (IsInterrupted()) { // since then; the folders are removed already
        *why = "the run is interrupted";
        return {};
    }
    fs::path folder = MakeOwnFolder(parent / (folderStart + folderMark), why);
    if (!folder.empty())
        folders.push_back(folder);
    return folder;
}

fs::path SpareName(const fs::path &folder)
{
    return folder / (".spare-" + RandomText());
}

void RemovePrivateFolders()
{
    const std::lock_guard lock(foldersMutex);
    if (IsInterrupted()) // the clean-up thread may be using one
        return;
    for (const fs::path &folder : folders) {
        std::error_code ignored;
        if (RemoveEmptyFolder(folder)) // the usual case; remove_all takes as long as a small conversion
            continue;
        fs::remove_all(folder, ignored);
        // After an interrupt the library may still create a file in the folder.
        for (int attempt = 0; attempt < 20 && fs::exists(folder, ignored); ++attempt) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            fs::remove_all(folder, ignored);
        }
    }
    folders.clear(); // unnoticed
}

void RemoveMarkedFolders(const fs::path &parent, const std::string &mark)
{
    std::error_code failure, ignored;
    for (fs::directory_iterator entry(parent, failure), end; !failure && entry != end;
         entry.increment(failure))
        if (entry->path().filename().string().starts_with(folderStart + mark))
            fs::remove_all(entry->path(), ignored);
}

bool EnterFolder(const fs::path &folder, std::string *why)
{
    std::error_code failure;
    fs::current_path(folder, failure);
    if (failure)
        *why = "folder " + InQuotes(folder.string()) + " can't be entered: " + failure.message();
    return !failure;
}

static bool currentFolderIsLost;

void ReturnToFolder(const fs::path &folder)
{
    std::string ignored;
    std::error_code failure;
    if (!folder.empty() && EnterFolder(folder, &ignored))
        return;
    currentFolderIsLost = true;
    fs::current_path(fs::temp_directory_path(failure).root_path(), failure); // unnoticed
}

bool CurrentFolderIsLost()
{
    return currentFolderIsLost;
}
