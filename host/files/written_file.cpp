#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>

#include "files.h"

namespace fs = std::filesystem;

using Stream = std::unique_ptr<FILE, int (*)(FILE *)>;

static Stream OpenStream(const fs::path &path, const char *mode)
{
    return Stream(std::fopen(path.string().c_str(), mode), std::fclose);
}

bool WriteBytes(const OutputFile &file, const std::string &bytes, Reporter *reporter)
{
    Stream stream = OpenStream(file.written, "wb");
    bool done = stream && std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) == bytes.size();
    done = stream && std::fclose(stream.release()) == 0 && done;
    if (!done)
        ReportUnwritten(reporter, file.shown, std::strerror(errno));
    return done;
}

// False with errno set.
static bool CopyInto(const fs::path &from, FILE *out)
{
    const Stream in = OpenStream(from, "rb");
    if (!in || !out)
        return false;
    static char buffer[65536];
    while (const size_t length = std::fread(buffer, 1, sizeof buffer, in.get()))
        if (std::fwrite(buffer, 1, length, out) != length)
            return false;
    return !std::ferror(in.get()) && std::fflush(out) == 0;
}

static bool CopyToTarget(const OutputFile &file)
{
    if (file.standardOutput) {
        MakeStandardOutputBinary(); // the file has the system's line ends already
        return CopyInto(file.written, stdout);
    }
    Stream out = OpenStream(file.target, "wb");
    return CopyInto(file.written, out.get()) && std::fclose(out.release()) == 0;
}

Delivery CopyFile(const OutputFile &file, std::string *why)
{
    errno = 0;
    if (CopyToTarget(file))
        return Delivery::Done;
    if (file.standardOutput && OutputReaderIsGone())
        return Delivery::Unread;
    *why = std::strerror(errno);
    return Delivery::Failed;
}

// Gives the existing target a second name, so that it can be put back. Where that isn't possible it is moved.
static std::error_code KeepOld(const fs::path &target, const fs::path &aside)
{
    std::error_code failure;
    fs::create_hard_link(target, aside, failure);
    if (failure)
        fs::rename(target, aside, failure);
    return failure;
}

Delivery MoveFile(const OutputFile &file, bool noClobber, Replaced *replaced, std::string *why)
{
    std::error_code failure;
    const fs::file_status before = fs::symlink_status(file.target, failure);
    if (fs::exists(before) && noClobber)
        return Delivery::Kept;
    failure.clear();
    replaced->target = file.target;
    if (fs::exists(before)) {
        // A new file gets the permissions of the one that it replaces.
        if (fs::is_regular_file(before))
            fs::permissions(file.written, before.permissions(), failure);
        const fs::path aside = SpareName(file.written.parent_path());
        if (!failure)
            failure = KeepOld(file.target, aside);
        if (!failure)
            replaced->aside = aside;
    }
    if (!failure && noClobber)
        failure = MoveToNewName(file.written, file.target);
    else if (!failure)
        fs::rename(file.written, file.target, failure);
    if (noClobber && failure == std::errc::file_exists)
        return Delivery::Kept;
    *why = failure.message();
    return failure ? Delivery::Failed : Delivery::Done;
}

bool PutBack(const Replaced &replaced)
{
    std::error_code failure;
    if (replaced.aside.empty())
        fs::remove(replaced.target, failure);
    else
        fs::rename(replaced.aside, replaced.target, failure);
    return !failure;
}
