#include <system_error>

#include "base.h"

namespace fs = std::filesystem;

std::string VuePath(const std::string &scenePath)
{
    return scenePath.size() < 3 ? "" : scenePath.substr(0, scenePath.size() - 3) + "vue";
}

static std::string Canonical(const fs::path &path)
{
    std::error_code failure;
    fs::path absolute = fs::absolute(path, failure);
    absolute = fs::weakly_canonical(absolute, failure);
    return (failure ? path.lexically_normal() : absolute).string();
}

std::string PathKey(const fs::path &path, std::map<std::string, std::string> *folders)
{
    std::error_code failure;
    std::string key;
    if (!path.has_filename() || path.filename() == "." || path.filename() == ".." ||
        fs::is_symlink(fs::symlink_status(path, failure))) {
        key = Canonical(path);
    } else {
        const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
        const auto [known, isNew] = folders->try_emplace(folder.string());
        if (isNew)
            known->second = Canonical(folder);
        key = (PathOf(known->second) / path.filename()).string();
    }
#if defined(_WIN32)
    return InLowerCase(key);
#else
    return key;
#endif
}

std::map<std::string, std::string> FindBeside(const fs::path &path, const std::set<std::string> &names)
{
    std::map<std::string, std::string> found;
    std::multimap<std::string, std::string> wanted;
    for (const std::string &name : names)
        wanted.emplace(InLowerCase(name), name);
    std::error_code failure;
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    for (fs::directory_iterator entry(folder, failure), end; !wanted.empty() && !failure && entry != end;
         entry.increment(failure)) {
        const std::string present = entry->path().filename().string();
        const auto [first, last] = wanted.equal_range(InLowerCase(present));
        for (auto at = first; at != last; ++at)
            if (!found.contains(at->second) || present == at->second)
                found[at->second] = present;
    }
    return found;
}
