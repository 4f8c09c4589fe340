#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unordered_map>

#include "view.h"

static int reportVerbosity;
static bool showsOneLineEach;
static bool reportsAreKept;
static bool libraryIsMuted;
static bool linesAreLeftOut;                                // of the subject
static thread_local SceneResult *reportSubject;             // null in the clean-up thread after an interrupt
static std::unordered_map<std::string, size_t> kindIndices; // into the subject's warnings
static size_t kindsShown;                                   // how many of the subject's warnings are shown
static std::string heldErrors;                              // shown after the subject's warnings
static std::string lastWarning;
static size_t lastKind; // index of its kind
static std::string lastLibraryError;
static bool memoryRanOut;
static std::string statusLine;
static size_t statusWidth; // of the line on the terminal
static void (*messageWatcher)(const char *text);

void SetStatusLine(const std::string &line)
{
    if (line == statusLine && statusWidth != 0)
        return;
    // Blanks clear a line on every terminal; escape sequences don't.
    std::string text = '\r' + line;
    if (line.size() < statusWidth)
        text += std::string(statusWidth - line.size(), ' ') + '\r';
    std::fputs(text.c_str(), stderr);
    statusLine = line;
    statusWidth = line.size();
}

// A damaged scene can cause a line for each vertex, so the kept lines are limited, except for errors.
static void KeepLines(const std::string &lines, bool isError)
{
    constexpr size_t most = size_t{4} << 20;
    std::string &said = reportSubject->said;
    if (isError || said.size() + lines.size() < most) {
        said += lines;
    } else if (!linesAreLeftOut) {
        said += "3ds2mcx: " + Visible(reportSubject->scene) + ": further lines left out\n";
        linesAreLeftOut = true;
    }
}

static void Show(const std::string &lines, bool isError)
{
    StopIfInterrupted();
    if (reportsAreKept && reportSubject) {
        KeepLines(lines, isError);
        return;
    }
    if (statusWidth != 0)
        SetStatusLine("");
    std::fputs(lines.c_str(), stderr);
}

void ShowLines(const std::string &lines)
{
    Show(lines, false);
}

static std::string ReportLine(const std::string &subject, std::string_view kind, const std::string &text)
{
    std::string line = "3ds2mcx: ";
    if (!subject.empty())
        line += Visible(subject) + ": ";
    return line.append(kind) + Visible(text) + '\n';
}

static void PrintReport(const std::string &subject, std::string_view kind, const std::string &text)
{
    Show(ReportLine(subject, kind, text), kind.starts_with("error"));
}

static std::string Subject()
{
    return reportSubject ? reportSubject->scene : "";
}

// Replaces names and numbers by '*'. Names are in <> or quotes, except for objects in three texts of the
// library. A digit inside a word isn't replaced.
static std::string KindOf(std::string text)
{
    static const char *const bareNames[][2] = {
        {"Object ", " not found"}, {"unable to find object ", ""}, {"Transform of object ", " for frame "}};
    for (const auto &[before, behind] : bareNames) {
        const size_t start = std::strlen(before), end = text.rfind(behind);
        if (text.starts_with(before) && end != std::string::npos && end >= start)
            text.replace(start, end - start, "*");
    }
    if (const size_t open = text.find('<'); open != std::string::npos) {
        const size_t close = text.rfind('>'); // npos if the library truncated the text
        text.replace(open + 1, close == std::string::npos ? close : close - open - 1, "*");
    }
    std::string kind;
    bool quoted = false, inNumber = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool digit = c >= '0' && c <= '9';
        const char before = i > 0 ? text[i - 1] : ' ', behind = i + 1 < text.size() ? text[i + 1] : ' ';
        const bool startsWord = before == ' ' || before == '(' || before == '-';
        const bool endsWord = behind < 'A'; // letters come after that
        if (quoted && c != '"')
            continue;
        if (c == '"') {
            quoted = !quoted;
            kind += quoted ? "\"*" : "\"";
        } else if (!inNumber && digit && startsWord && endsWord) {
            inNumber = true;
            kind += '*';
        } else if (c == ';') {
            break; // a consequence or the first instance follows
        } else if (!inNumber || !(digit || (c == '.' && behind >= '0' && behind <= '9'))) {
            inNumber = false;
            kind += c;
        }
    }
    return kind;
}

static void AddWarning(const std::string &text, Weight weight)
{
    if (!reportSubject || reportVerbosity >= 1)
        PrintReport(Subject(), "warning: ", text);
    if (!reportSubject)
        return;
    std::vector<WarningKind> &warnings = reportSubject->warnings;
    // A damaged mesh can repeat a text for each of its vertices, so KindOf is skipped for repeats.
    if (text != lastWarning) {
        const std::string kind = KindOf(text);
        const auto [known, isNew] = kindIndices.try_emplace(kind, warnings.size());
        if (isNew)
            warnings.push_back({kind, text, 0, weight});
        lastWarning = text;
        lastKind = known->second;
    }
    ++warnings[lastKind].count;
}

void ReportWarning(const std::string &text, Weight weight)
{
    if (reportSubject || reportVerbosity >= 0)
        AddWarning(text, weight);
}

void ReportNote(const std::string &text)
{
    if (reportSubject)
        reportSubject->notes.push_back(text);
    if (reportVerbosity > (showsOneLineEach ? 0 : -1))
        PrintReport(Subject(), "note: ", text);
}

// With one line for each scene, the warnings come before the errors, so errors are held until the scene ends.
void ReportError(const std::string &text)
{
    if (reportSubject && reportSubject->error.empty())
        reportSubject->error = text;
    if (reportSubject && showsOneLineEach && reportVerbosity == 0) {
        heldErrors += ReportLine(Subject(), "error: ", text);
        return;
    }
    ShowWarnings();
    PrintReport(Subject(), "error: ", text);
}

static void ReportResult(const std::string &text)
{
    if (reportVerbosity >= (showsOneLineEach ? 1 : 0))
        PrintReport(Subject(), "", text);
}

void ReportWritten(const std::vector<WrittenFile> &files)
{
    uintmax_t bytes = 0;
    for (const WrittenFile &file : files) {
        bytes += file.size;
        if (reportSubject)
            reportSubject->written.push_back(file);
        if (files.size() == 1 || reportVerbosity > 0)
            ReportResult("wrote " + file.name + " (" + std::to_string(file.size) + " bytes)");
    }
    if (files.size() > 1 && reportVerbosity == 0)
        ReportResult("wrote " + files.front().name + " to " + files.back().name + ", " +
                     std::to_string(files.size()) + " files, " + std::to_string(bytes) + " bytes");
}

void ReportKept(const std::vector<std::string> &names)
{
    for (const std::string &name : names) {
        if (reportSubject)
            reportSubject->kept.push_back(name);
        if (names.size() == 1 || reportVerbosity > 0)
            ReportResult("left " + name + " alone: it exists already");
    }
    if (names.size() > 1 && reportVerbosity == 0)
        ReportResult("left " + names.front() + " to " + names.back() + " alone, " +
                     std::to_string(names.size()) + " files: they exist already");
}

void ReportUnwritten(const std::string &name, const std::string &why)
{
    ReportError("cannot write " + InQuotes(name) + ": " + why);
}

std::string WarningText(const WarningKind &warning)
{
    return warning.count == 1 ? warning.first
                              : std::to_string(warning.count) + " times, the first: " + warning.first;
}

void ShowWarnings()
{
    if (!reportSubject || reportVerbosity != 0 || showsOneLineEach)
        return;
    const std::vector<WarningKind> &warnings = reportSubject->warnings;
    for (; kindsShown < warnings.size(); ++kindsShown)
        if (warnings[kindsShown].count != 0)
            PrintReport(Subject(), "warning: ", WarningText(warnings[kindsShown]));
}

void MarkWarningsShown()
{
    kindsShown = reportSubject ? reportSubject->warnings.size() : 0;
}

static void ShowWeightiest()
{
    const std::vector<WarningKind> &warnings = reportSubject->warnings;
    const WarningKind *worst = nullptr;
    size_t others = 0;
    for (size_t i = kindsShown; i < warnings.size(); ++i) {
        if (warnings[i].count == 0)
            continue;
        others += worst ? 1 : 0;
        if (!worst || warnings[i].weight < worst->weight)
            worst = &warnings[i];
    }
    if (worst)
        PrintReport(Subject(), "warning: ",
                    WarningText(*worst) + (others == 0 ? "" : "; and " + Counted(others, "more kind")));
}

static void EndSubject()
{
    if (showsOneLineEach && reportVerbosity == 0)
        ShowWeightiest();
    else
        ShowWarnings();
    if (!heldErrors.empty())
        Show(heldErrors, true);
    heldErrors.clear();
    std::stable_sort(reportSubject->warnings.begin(), reportSubject->warnings.end(),
                     [](const WarningKind &a, const WarningKind &b) { return a.weight < b.weight; });
}

// Both callbacks keep errno for the library's caller, as a write to a full or closed stderr changes it.
static void OnLibraryError(int32_t level, const char *text)
{
    const int before = errno;
    // errno alone is no proof: malloc sets it when its first attempt fails, even if the second one succeeds.
    const std::string_view report = text;
    if (before == ENOMEM && (report.starts_with("malloc failed") || report.starts_with("Out of memory")))
        memoryRanOut = true;
    if (!libraryIsMuted) {
        if (level <= 1)
            lastLibraryError = text;
        // FindLosses reports these with the material's name and its number of faces.
        if (!report.starts_with("Invalid Material "))
            AddWarning(text, level <= 1 ? Weight::Damage : Weight::Doubt);
    }
    errno = before;
}

// Tabs before the first blank and the first name separate columns and are kept. Later tabs belong to a name.
static std::string VisibleMessage(std::string_view text)
{
    const size_t columns = std::min(text.find_first_of(" <"), text.size());
    return Visible(text.substr(0, columns), true) + Visible(text.substr(columns));
}

static void OnLibraryMessage(int32_t level, const char *text)
{
    StopIfInterrupted();
    const int before = errno;
    // Some texts start with a line feed to separate them, which a line for each text does as well.
    if (reportVerbosity > (level <= 1 ? 0 : 1) && !libraryIsMuted)
        ShowLines(VisibleMessage(*text == '\n' ? text + 1 : text) + '\n');
    if (messageWatcher)
        messageWatcher(text);
    errno = before;
}

// Without use for messages no callback is set: the library sends ten for each object.
static void ListenToMessages()
{
    Mc3dsSetMessageCallback(reportVerbosity >= 1 || messageWatcher ? OnLibraryMessage : nullptr);
}

void StartReports(int verbosity, bool oneLineEach)
{
    reportVerbosity = verbosity;
    showsOneLineEach = oneLineEach;
    Mc3dsSetErrorCallback(OnLibraryError);
    ListenToMessages();
}

void SetReportSubject(SceneResult *subject)
{
    if (reportSubject)
        EndSubject();
    reportSubject = subject;
    kindsShown = 0;
    kindIndices.clear();
    lastWarning.clear();
    lastLibraryError.clear();
    memoryRanOut = false;
    libraryIsMuted = false;
    linesAreLeftOut = false;
}

void KeepReports(bool keep)
{
    reportsAreKept = keep;
}

void MuteLibrary(bool mute)
{
    libraryIsMuted = mute;
}

void WatchMessages(void (*watcher)(const char *text))
{
    messageWatcher = watcher;
    ListenToMessages();
}

bool MemoryRanOut()
{
    return memoryRanOut;
}

std::string TakeLibraryError()
{
    const auto known = kindIndices.find(KindOf(lastLibraryError));
    if (reportSubject && known != kindIndices.end())
        --reportSubject->warnings[known->second].count;
    return lastLibraryError;
}
