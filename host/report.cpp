#include <cerrno>
#include <cstdio>
#include <unordered_map>

#include "host.h"

// What the library said on its error channel, each text once.
struct LibraryReport {
    const char *kind;
    std::string text;
    size_t count;
};

static int reportVerbosity;
static std::string reportSubject;
static std::vector<LibraryReport> libraryReports;
static std::unordered_map<std::string, size_t> reportIndices;
static std::string lastLibraryError;
static bool memoryRanOut;

std::string Visible(std::string_view text)
{
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte < 0x20 && byte != '\t') || byte == 0x7F) {
            constexpr char digits[] = "0123456789abcdef";
            shown += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
        } else {
            shown += c;
        }
    }
    return shown;
}

static void PrintReport(const char *kind, const std::string &text)
{
    StopIfInterrupted();
    std::string line = "3ds2mcx: ";
    if (!reportSubject.empty())
        line += Visible(reportSubject) + ": ";
    line += kind + Visible(text) + '\n';
    std::fputs(line.c_str(), stderr);
}

void ReportError(const std::string &text)
{
    PrintReport("error: ", text);
}

void ReportWarning(const std::string &text)
{
    if (reportVerbosity >= 0)
        PrintReport("warning: ", text);
}

void ReportResult(const std::string &text)
{
    if (reportVerbosity >= 0)
        PrintReport("", text);
}

void ReportUnwritten(const std::string &name, const std::string &why)
{
    ReportError("cannot write " + InQuotes(name) + ": " + why);
}

std::string InQuotes(const std::string &text)
{
    return '"' + text + '"';
}

// Both callbacks hand errno on as it was: whoever called the library looks at it afterwards, and a stderr
// that is full or closed would leave its own mark there.
static void OnLibraryError(int32_t level, const char *text)
{
    const int before = errno;
    if (before == ENOMEM)
        memoryRanOut = true;
    if (level <= 1)
        lastLibraryError = text;
    const auto [known, isNew] = reportIndices.try_emplace(text, libraryReports.size());
    if (isNew)
        libraryReports.push_back({level <= 1 ? "error: " : "warning: ", text, 0});
    LibraryReport *report = &libraryReports[known->second];
    // One damaged mesh can say the same of each of its vertices.
    if ((report->count++ == 0 && (level <= 1 || reportVerbosity >= 0)) || reportVerbosity >= 2)
        PrintReport(report->kind, report->text);
    errno = before;
}

static void OnLibraryMessage(int32_t level, const char *text)
{
    StopIfInterrupted();
    const int before = errno;
    if (reportVerbosity > (level <= 1 ? 0 : 1)) {
        // A line feed ahead of some texts sets them off from what went before; a line of its own does so too.
        const std::string line = Visible(*text == '\n' ? text + 1 : text) + '\n';
        std::fputs(line.c_str(), stderr);
    }
    errno = before;
}

void StartReports(int verbosity)
{
    reportVerbosity = verbosity;
    Mc3dsSetErrorCallback(OnLibraryError);
    Mc3dsSetMessageCallback(OnLibraryMessage);
}

void SetReportSubject(const std::string &subject)
{
    reportSubject = subject;
    libraryReports.clear();
    reportIndices.clear();
    lastLibraryError.clear();
    memoryRanOut = false;
}

void FinishReports()
{
    for (LibraryReport &report : libraryReports) {
        if (report.count > 1 && reportVerbosity >= 0 && reportVerbosity < 2)
            PrintReport(report.kind, std::to_string(report.count) + " times: " + report.text);
        report.count = 1;
    }
}

bool MemoryRanOut()
{
    return memoryRanOut;
}

std::string LastLibraryError()
{
    return lastLibraryError;
}
