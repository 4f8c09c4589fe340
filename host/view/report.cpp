#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

#include "view.h"

static int reportVerbosity;
static bool resultsAreShown;
static bool reportsAreKept;
static bool libraryIsMuted;
static bool linesAreLeftOut;                    // of the subject
static thread_local SceneResult *reportSubject; // not that of the thread that cleans up after an interrupt
static std::unordered_map<std::string, size_t> kindIndices; // into the subject's warnings
static std::unordered_set<std::string> shownKinds;          // in the whole run
static std::string lastWarning;
static size_t lastKind; // its index
static std::string lastLibraryError;
static bool memoryRanOut;
static std::string statusLine;
static size_t statusWidth; // of what stands on the terminal
static void (*messageWatcher)(const char *text);

void SetStatusLine(const std::string &line)
{
    if (line == statusLine && statusWidth != 0)
        return;
    // Blanks wipe a line on every terminal, which its own commands don't.
    std::string text = '\r' + line;
    if (line.size() < statusWidth)
        text += std::string(statusWidth - line.size(), ' ') + '\r';
    std::fputs(text.c_str(), stderr);
    statusLine = line;
    statusWidth = line.size();
}

// Damage can bring a line for each vertex. What is kept of them is bounded, but for errors.
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

static void PrintReport(const std::string &subject, std::string_view kind, const std::string &text)
{
    std::string line = "3ds2mcx: ";
    if (!subject.empty())
        line += Visible(subject) + ": ";
    Show(line.append(kind) + Visible(text) + '\n', kind.starts_with("error"));
}

static std::string Subject()
{
    return reportSubject ? reportSubject->scene : "";
}

// Names stand between <> or quotes, but for those of objects in three texts of the library. A digit within a
// word is part of it.
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
        const size_t close = text.rfind('>'); // a text that the library cut has none
        text.replace(open + 1, close == std::string::npos ? close : close - open - 1, "*");
    }
    std::string kind;
    bool quoted = false, inNumber = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool digit = c >= '0' && c <= '9';
        const char before = i > 0 ? text[i - 1] : ' ', behind = i + 1 < text.size() ? text[i + 1] : ' ';
        const bool startsWord = before == ' ' || before == '(' || before == '-';
        const bool endsWord = behind < 'A'; // a letter isn't
        if (quoted && c != '"')
            continue;
        if (c == '"') {
            quoted = !quoted;
            kind += quoted ? "\"*" : "\"";
        } else if (!inNumber && digit && startsWord && endsWord) {
            inNumber = true;
            kind += '*';
        } else if (c == ';') {
            break; // what comes of it, or the first instance
        } else if (!inNumber || !(digit || (c == '.' && behind >= '0' && behind <= '9'))) {
            inNumber = false;
            kind += c;
        }
    }
    return kind;
}

static void AddWarning(const std::string &text)
{
    if (!reportSubject || reportVerbosity >= 1)
        PrintReport(Subject(), "warning: ", text);
    if (!reportSubject)
        return;
    std::vector<WarningKind> &warnings = reportSubject->warnings;
    // One damaged mesh can say the same of each of its vertices.
    if (text != lastWarning) {
        const std::string kind = KindOf(text);
        const auto [known, isNew] = kindIndices.try_emplace(kind, warnings.size());
        if (isNew)
            warnings.push_back({kind, text, 0});
        lastWarning = text;
        lastKind = known->second;
    }
    ++warnings[lastKind].count;
}

void ReportWarning(const std::string &text)
{
    if (reportSubject || reportVerbosity >= 0)
        AddWarning(text);
}

void ReportError(const std::string &text)
{
    if (reportSubject && reportSubject->error.empty())
        reportSubject->error = text;
    PrintReport(Subject(), "error: ", text);
}

void ReportResult(const std::string &text)
{
    if (resultsAreShown)
        PrintReport(Subject(), "", text);
}

void ReportWritten(const std::string &name, uintmax_t size)
{
    if (reportSubject)
        reportSubject->written.push_back({name, size});
    ReportResult("wrote " + name + " (" + std::to_string(size) + " bytes)");
}

void ReportKept(const std::string &name)
{
    if (reportSubject)
        reportSubject->kept.push_back(name);
    ReportResult("left " + name + " alone: it exists already");
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

void ShowWarnings(const SceneResult &result, bool asShown)
{
    if (reportVerbosity != 0 || reportsAreKept)
        return;
    for (const WarningKind &warning : result.warnings)
        if (warning.count != 0 && shownKinds.insert(warning.kind).second && !asShown)
            PrintReport(result.scene, "warning: ", WarningText(warning));
}

void ShowWarningsSoFar(bool asShown)
{
    if (reportSubject)
        ShowWarnings(*reportSubject, asShown);
}

// Both callbacks hand errno on as it was: whoever called the library looks at it afterwards, and a stderr
// that is full or closed would leave its own mark there.
static void OnLibraryError(int32_t level, const char *text)
{
    const int before = errno;
    // errno alone may be left over: malloc sets it when it looks for memory in a second place, and finds it.
    const std::string_view report = text;
    if (before == ENOMEM && (report.starts_with("malloc failed") || report.starts_with("Out of memory")))
        memoryRanOut = true;
    if (!libraryIsMuted) {
        if (level <= 1)
            lastLibraryError = text;
        AddWarning(text);
    }
    errno = before;
}

// Tabs set off columns, and stand ahead of the first blank and the first name; behind these they are a
// name's.
static std::string VisibleMessage(std::string_view text)
{
    const size_t columns = std::min(text.find_first_of(" <"), text.size());
    return Visible(text.substr(0, columns), true) + Visible(text.substr(columns));
}

static void OnLibraryMessage(int32_t level, const char *text)
{
    StopIfInterrupted();
    const int before = errno;
    // A line feed ahead of some texts sets them off from what went before; a line of its own does so too.
    if (reportVerbosity > (level <= 1 ? 0 : 1) && !libraryIsMuted)
        ShowLines(VisibleMessage(*text == '\n' ? text + 1 : text) + '\n');
    if (messageWatcher)
        messageWatcher(text);
    errno = before;
}

// Nobody listens where nobody looks: a scene of many objects has ten messages for each.
static void ListenToMessages()
{
    Mc3dsSetMessageCallback(reportVerbosity >= 1 || messageWatcher ? OnLibraryMessage : nullptr);
}

void StartReports(int verbosity, bool showResults)
{
    reportVerbosity = verbosity;
    resultsAreShown = showResults && verbosity >= 0;
    Mc3dsSetErrorCallback(OnLibraryError);
    ListenToMessages();
}

void SetReportSubject(SceneResult *subject)
{
    reportSubject = subject;
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
