#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "files.h"

bool SummaryHasPlace(const std::string &name)
{
    OutputFile file = {TextKind::Script, name, {}, false, {}};
    const std::string why = LocateTarget(&file);
    if (!why.empty())
        ReportUnwritten(name, why);
    return why.empty();
}

bool WriteSummary(const std::string &name, bool noClobber, const std::string &text)
{
    std::vector<OutputFile> files = {{TextKind::Script, name, {}, false, {}}};
    OutputFile &file = files.front();
    const std::string why = LocateTarget(&file);
    if (!why.empty()) {
        ReportUnwritten(name, why);
        return false;
    }
    bool done = MakeRoom(&files, "", false);
    if (done) {
        FILE *stream = std::fopen(file.written.string().c_str(), "wb");
        done = stream && std::fwrite(text.data(), 1, text.size(), stream) == text.size();
        done = stream && std::fclose(stream) == 0 && done;
        if (!done)
            ReportUnwritten(name, std::strerror(errno));
    }
    done = done && DeliverOne(file, noClobber);
    RemovePrivateFolders();
    return done;
}
