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

// The last line without its line end; empty if the line isn't terminated.
static std::string LastLine(FILE *stream)
{
    char tail[256];
    // The seek fails in a shorter file, which is read from its start.
    if (std::fseek(stream, -static_cast<long>(sizeof tail), SEEK_END) != 0)
        std::rewind(stream);
    std::string line(tail, std::fread(tail, 1, sizeof tail, stream));
    if (line.empty() || line.back() != '\n')
        return "";
    line.pop_back();
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return line.substr(line.rfind('\n') + 1);
}

// An animation file has no end mark. A complete one has a line for each frame, and in all frames as many
// transform lines as in the first.
static bool AnimationIsWhole(FILE *stream, uint32_t frameCount)
{
    uint64_t frames = 0, transforms = 0, transformsOfFirst = 0;
    bool atLineStart = true;
    static char buffer[65536];
    while (const size_t length = std::fread(buffer, 1, sizeof buffer, stream)) {
        for (size_t i = 0; i < length; ++i) {
            if (atLineStart && buffer[i] == 'F')
                ++frames;
            if (atLineStart && buffer[i] == 'T') {
                ++transforms;
                transformsOfFirst += frames == 1;
            }
            atLineStart = buffer[i] == '\n';
        }
    }
    return atLineStart && frames == frameCount && transforms == transformsOfFirst * frameCount;
}

bool IsWhole(const OutputFile &file, const Mc3dsFile *scene)
{
    const Stream stream = OpenStream(file.written, "rb");
    if (!stream)
        return false;
    switch (file.kind) {
    case TextKind::Script: return LastLine(stream.get()) == "ModelEnd";
    case TextKind::Source: return LastLine(stream.get()) == "}";
    case TextKind::Header: {
        const uint32_t last = scene->objectCount - 1;
        return LastLine(stream.get()) ==
               std::string("#define TAG_") + scene->objects[last].safeName + ' ' + std::to_string(last + 2);
    }
    case TextKind::Animation: return AnimationIsWhole(stream.get(), scene->frameCount);
    case TextKind::Picture:
    case TextKind::Glb: break; // their writers check for errors
    }
    return false;
}

bool WriteBytes(const OutputFile &file, const std::string &bytes)
{
    Stream stream = OpenStream(file.written, "wb");
    bool done = stream && std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) == bytes.size();
    done = stream && std::fclose(stream.release()) == 0 && done;
    if (!done)
        ReportUnwritten(file.shown, std::strerror(errno));
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

static Delivery Copy(const OutputFile &file, std::string *why)
{
    errno = 0;
    if (CopyToTarget(file))
        return Delivery::Done;
    if (file.standardOutput && OutputReaderIsGone())
        return Delivery::Unread;
    *why = std::strerror(errno);
    return Delivery::Failed;
}

static Delivery Move(const OutputFile &file, bool noClobber, std::string *why)
{
    std::error_code failure;
    // A new file gets the permissions of the one that it replaces.
    const fs::file_status before = fs::symlink_status(file.target, failure);
    if (fs::exists(before) && noClobber)
        return Delivery::Kept;
    failure.clear();
    if (fs::is_regular_file(before))
        fs::permissions(file.written, before.permissions(), failure);
    if (!failure && noClobber)
        failure = MoveToNewName(file.written, file.target);
    else if (!failure)
        fs::rename(file.written, file.target, failure);
    if (noClobber && failure == std::errc::file_exists)
        return Delivery::Kept;
    *why = failure.message();
    return failure ? Delivery::Failed : Delivery::Done;
}

Delivery Deliver(const OutputFile &file, bool noClobber, uintmax_t *size, std::string *why)
{
    std::error_code failure;
    *size = fs::file_size(file.written, failure);
    if (failure) {
        *why = failure.message();
        return Delivery::Failed;
    }
    return file.inPlace ? Copy(file, why) : Move(file, noClobber, why);
}
