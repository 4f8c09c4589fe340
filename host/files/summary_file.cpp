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
    const bool done = MakeRoom(&files, "", false) && WriteBytes(file, text) && DeliverOne(file, noClobber);
    RemovePrivateFolders();
    return done;
}
