#include "files.h"

bool LocateReport(const std::string &name, OutputFile *file)
{
    *file = {TextKind::Script, name, {}, false, {}};
    const std::string why = LocateTarget(file);
    if (!why.empty())
        ReportUnwritten(name, why);
    return why.empty();
}

bool WriteReport(const OutputFile &located, bool noClobber, const std::string &text)
{
    std::vector<OutputFile> files = {located};
    const bool done =
        MakeRoom(&files, "", false) && WriteBytes(files.front(), text) && DeliverAll(files, false, noClobber);
    RemovePrivateFolders();
    return done;
}
