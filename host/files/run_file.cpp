#include "files.h"

bool LocateRunFile(const std::string &name, Reporter *reporter, OutputFile *file)
{
    *file = {.kind = TextKind::Script, .shown = name};
    const std::string why = LocateTarget(file);
    if (!why.empty())
        ReportUnwritten(reporter, name, why);
    return why.empty();
}

bool WriteRunFile(const OutputFile &located, bool noClobber, const std::string &text, Reporter *reporter)
{
    std::vector<OutputFile> files = {located};
    const bool done = MakeRoom(&files, "", false, reporter) && WriteBytes(files.front(), text, reporter) &&
                      DeliverAll(files, false, noClobber, reporter);
    ReleaseInterrupts();
    RemovePrivateFolders();
    return done;
}
