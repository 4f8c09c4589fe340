#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "words.h"

// The library's callbacks have no argument of their own.
static Reporter *listener;

void SetStatusLine(Reporter *reporter, const std::string &line)
{
    if (line == reporter->statusLine && reporter->statusWidth != 0)
        return;
    // Blanks clear a line on every terminal; escape sequences don't.
    std::string text = '\r' + line;
    if (line.size() < reporter->statusWidth)
        text += std::string(reporter->statusWidth - line.size(), ' ') + '\r';
    std::fputs(text.c_str(), stderr);
    reporter->statusLine = line;
    reporter->statusWidth = line.size();
}

// A damaged scene can cause a line for each vertex, so the kept lines are limited, except for errors.
static void KeepLines(Reporter *reporter, const std::string &lines, bool isError)
{
    constexpr size_t most = size_t{4} << 20;
    std::string &said = reporter->scene->said;
    if (isError || said.size() + lines.size() < most) {
        said += lines;
    } else if (!reporter->linesAreLeftOut) {
        said += "3ds2mcx: " + Visible(reporter->scene->scene) + ": further lines left out\n";
        reporter->linesAreLeftOut = true;
    }
}

static void Show(Reporter *reporter, const std::string &lines, bool isError)
{
    StopIfInterrupted();
    if (reporter->keepsLines && reporter->scene) {
        KeepLines(reporter, lines, isError);
        return;
    }
    if (reporter->statusWidth != 0)
        SetStatusLine(reporter, "");
    std::fputs(lines.c_str(), stderr);
}

void ShowLines(Reporter *reporter, const std::string &lines)
{
    Show(reporter, lines, false);
}

// kind: such as "warning: "; empty for results.
static std::string LineOf(const Reporter *reporter, const char *kind, const std::string &text)
{
    const std::string subject = reporter->scene ? Visible(reporter->scene->scene) + ": " : "";
    return "3ds2mcx: " + subject + kind + Visible(text) + '\n';
}

static void ShowWarning(Reporter *reporter, const std::string &text)
{
    Show(reporter, LineOf(reporter, "warning: ", text), false);
}

static void AddWarning(Reporter *reporter, const Finding &finding)
{
    if (!reporter->scene || reporter->verbosity >= 1)
        ShowWarning(reporter, SentenceOf(finding));
    if (!reporter->scene)
        return;
    reporter->lastReport.clear();
    std::vector<Finding> &warnings = reporter->scene->warnings;
    const auto known = std::find_if(warnings.begin(), warnings.end(), [&finding](const Finding &warning) {
        return AreOneKind(warning, finding);
    });
    reporter->lastKind = static_cast<size_t>(known - warnings.begin());
    if (known == warnings.end())
        warnings.push_back(finding);
    else
        known->times += finding.times;
}

void ReportFinding(Reporter *reporter, const Finding &finding)
{
    if (finding.weight != Weight::Note) {
        if (reporter->scene || reporter->verbosity >= 0)
            AddWarning(reporter, finding);
        return;
    }
    if (reporter->scene)
        reporter->scene->notes.push_back(finding);
    if (reporter->verbosity > (reporter->oneLineEach ? 0 : -1))
        Show(reporter, LineOf(reporter, "note: ", SentenceOf(finding)), false);
}

// With one line for each scene, the warnings come before the errors, so errors are held until the scene ends.
void ReportError(Reporter *reporter, const std::string &text)
{
    if (reporter->scene && reporter->scene->error.empty())
        reporter->scene->error = text;
    const std::string line = LineOf(reporter, "error: ", text);
    if (reporter->scene && reporter->oneLineEach && reporter->verbosity == 0) {
        reporter->heldErrors += line;
        return;
    }
    ShowWarnings(reporter);
    Show(reporter, line, true);
}

void ReportUnwritten(Reporter *reporter, const std::string &name, const std::string &why)
{
    ReportError(reporter, "cannot write " + InQuotes(name) + ": " + why);
}

static void ReportResult(Reporter *reporter, const std::string &text)
{
    if (reporter->verbosity >= (reporter->oneLineEach ? 1 : 0))
        Show(reporter, LineOf(reporter, "", text), false);
}

void ReportWritten(Reporter *reporter, const std::vector<WrittenFile> &files)
{
    uint64_t bytes = 0;
    for (const WrittenFile &file : files) {
        bytes += file.size;
        if (reporter->scene)
            reporter->scene->written.push_back(file);
        if (files.size() == 1 || reporter->verbosity > 0)
            ReportResult(reporter, "wrote " + file.name + " (" + std::to_string(file.size) + " bytes)");
    }
    if (files.size() > 1 && reporter->verbosity == 0)
        ReportResult(reporter, "wrote " + files.front().name + " to " + files.back().name + ", " +
                                   std::to_string(files.size()) + " files, " + std::to_string(bytes) +
                                   " bytes");
}

void ReportRestored(Reporter *reporter, const std::vector<Mc3dsRestoreRecord> &records)
{
    std::vector<Finding> left;
    FindRestored(records, &reporter->scene->restored, &left);
    if (!reporter->scene->restored.empty() && reporter->verbosity >= 0)
        Show(reporter, LineOf(reporter, "", RestoredText(reporter->scene->restored)), false);
    for (const Finding &finding : left)
        ReportFinding(reporter, finding);
}

void ReportKept(Reporter *reporter, const std::vector<std::string> &names)
{
    for (const std::string &name : names) {
        if (reporter->scene)
            reporter->scene->kept.push_back(name);
        if (names.size() == 1 || reporter->verbosity > 0)
            ReportResult(reporter, "left " + name + " alone: it exists already");
    }
    if (names.size() > 1 && reporter->verbosity == 0)
        ReportResult(reporter, "left " + names.front() + " to " + names.back() + " alone, " +
                                   std::to_string(names.size()) + " files: they exist already");
}

void ShowWarnings(Reporter *reporter)
{
    if (!reporter->scene || reporter->verbosity != 0 || reporter->oneLineEach)
        return;
    const std::vector<Finding> &warnings = reporter->scene->warnings;
    while (reporter->kindsShown < warnings.size())
        ShowWarning(reporter, WarningText(warnings[reporter->kindsShown++]));
}

void MarkWarningsShown(Reporter *reporter)
{
    reporter->kindsShown = reporter->scene->warnings.size();
}

static void ShowWorst(Reporter *reporter)
{
    const std::vector<Finding> &warnings = reporter->scene->warnings;
    const auto first = warnings.begin() + static_cast<ptrdiff_t>(reporter->kindsShown);
    const auto worst = std::min_element(
        first, warnings.end(), [](const Finding &a, const Finding &b) { return a.weight < b.weight; });
    if (worst == warnings.end())
        return;
    const auto others = static_cast<uint64_t>(warnings.end() - first - 1);
    ShowWarning(reporter, WarningText(*worst) + (others == 0 ? "" : "; and " + Counted(others, "more kind")));
}

void BeginScene(Reporter *reporter, SceneResult *scene)
{
    reporter->scene = scene;
    reporter->modelIsHeard = reporter->memoryRanOut = reporter->linesAreLeftOut = false;
    reporter->notAScene.clear();
    reporter->standIn.clear();
    reporter->reports = nullptr;
    reporter->kindsShown = 0;
    reporter->lastReport.clear();
}

void EndScene(Reporter *reporter)
{
    if (reporter->oneLineEach && reporter->verbosity == 0)
        ShowWorst(reporter);
    else
        ShowWarnings(reporter);
    if (!reporter->heldErrors.empty())
        Show(reporter, reporter->heldErrors, true);
    reporter->heldErrors.clear();
    std::stable_sort(reporter->scene->warnings.begin(), reporter->scene->warnings.end(),
                     [](const Finding &a, const Finding &b) { return a.weight < b.weight; });
    reporter->scene = nullptr;
}

// A damaged mesh can repeat a report for each of its vertices, so repeats are counted without a look-up.
static void HearError(Reporter *reporter, const Mc3dsReport &report)
{
    if (reporter->reports)
        ++(*reporter->reports)[report.text];
    switch (report.kind) {
    case Mc3dsReportKind::CantOpen:        // reported by the program with the reason
    case Mc3dsReportKind::InvalidMaterial: // found by FindLosses with the name and the number of faces
        return;
    case Mc3dsReportKind::NotAScene: reporter->notAScene = report.text; return;
    default: break;
    }
    if (reporter->scene && reporter->verbosity < 1 && reporter->lastReport == report.text) {
        ++reporter->scene->warnings[reporter->lastKind].times;
        return;
    }
    ReportFinding(reporter, {.kind = FindingKind::LibraryReport,
                             .weight = report.level <= 1 ? Weight::Damage : Weight::Doubt,
                             .report = report.kind,
                             .detail = report.text});
    reporter->lastReport = report.text;
}

// Tabs before the first blank and the first name separate columns and are kept. Later tabs belong to a name.
static std::string VisibleMessage(std::string_view text)
{
    const size_t columns = std::min(text.find_first_of(" <"), text.size());
    return Visible(text.substr(0, columns), true) + Visible(text.substr(columns));
}

// The scene has its own name in reports, also where another file is read in its place.
static std::string WithSceneName(const Reporter *reporter, std::string text)
{
    const size_t at = reporter->standIn.empty() ? std::string::npos : text.find(reporter->standIn);
    if (at != std::string::npos)
        text.replace(at, reporter->standIn.size(),
                     reporter->scene->scene.substr(0, reporter->scene->scene.size() - 3));
    return text;
}

// Both callbacks keep errno for the library, as a write to a full or closed stderr changes it.
static void OnError(int32_t, const char *)
{
    const int before = errno;
    HearError(listener, *Mc3dsNewestReport());
    errno = before;
}

static void OnMessage(int32_t level, const char *text)
{
    StopIfInterrupted();
    const int before = errno;
    // Some texts start with a line feed to separate them, which a line for each text does as well.
    if (listener->verbosity > (level <= 1 ? 0 : 1))
        ShowLines(listener, VisibleMessage(WithSceneName(listener, *text == '\n' ? text + 1 : text)) + '\n');
    if (listener->onMessage)
        listener->onMessage(*Mc3dsNewestReport());
    errno = before;
}

// Without use for messages no callback is set: the library sends ten for each object.
void ListenToLibrary(Reporter *reporter)
{
    listener = reporter;
    Mc3dsSetErrorCallback(reporter ? OnError : nullptr);
    Mc3dsSetMessageCallback(reporter && (reporter->verbosity >= 1 || reporter->onMessage) ? OnMessage
                                                                                          : nullptr);
}
