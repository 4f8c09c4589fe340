#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string_view>

#include "batch.h"

// Columns: fewer than any terminal has.
static const size_t lineMost = 78;
static const int barWidth = 20;

static double Now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The bar is shown after one second. A long name is cut at its start.
static void Draw(Progress *progress)
{
    progress->lastDrawn = Now();
    std::string line = '[' + std::to_string(progress->number) + '/' + std::to_string(progress->scenes) + "] ";
    if (Now() - progress->start > 1.0 && progress->bytes > 0) {
        const double here = static_cast<double>(std::min(progress->sceneBytesRead, progress->sceneBytes));
        // Reading is the first half of the work on a scene.
        const double done =
            (static_cast<double>(progress->bytesDone) + here / 2) / static_cast<double>(progress->bytes);
        const auto filled = static_cast<size_t>(std::min(done, 1.0) * barWidth);
        line += '[' + std::string(filled, '#') + std::string(barWidth - filled, '-') + "] ";
    }
    const std::string name = Visible(progress->scene) + (progress->isWriting ? ", writing" : "");
    SetStatusLine(progress->reporter, line + Tail(name, lineMost - line.size()));
}

// The library reports no progress, but how many items of which kind it reads next.
static void OnMessage(Progress *progress, const Mc3dsReport &report)
{
    progress->isWriting = progress->isWriting || report.kind == Mc3dsReportKind::WritingFile;
    if (report.kind == Mc3dsReportKind::ReadingArray)
        progress->sceneBytesRead += report.amount;
    if (Now() - progress->lastDrawn > 0.25)
        Draw(progress);
}

// Whether stderr is a terminal where a line can be overwritten.
static bool HasStatusLine()
{
#if !defined(_WIN32)
    const char *terminal = std::getenv("TERM");
    if (!terminal || std::string_view(terminal) == "dumb")
        return false;
#endif
    return IsTerminal(stderr);
}

void StartProgress(Progress *progress, Reporter *reporter, const std::vector<SceneJob> &jobs)
{
    if (!HasStatusLine())
        return;
    progress->isOn = true;
    progress->reporter = reporter;
    progress->scenes = jobs.size();
    for (const SceneJob &job : jobs)
        progress->bytes += job.bytes;
    progress->start = progress->lastDrawn = Now();
}

void ShowScene(Progress *progress, size_t number, const std::string &scene, uint64_t bytes)
{
    progress->number = number;
    progress->scene = scene;
    progress->sceneBytes = bytes;
    progress->sceneBytesRead = 0;
    progress->isWriting = false;
    if (progress->isOn && progress->scenes > 1)
        Draw(progress);
    if (progress->isOn && bytes > 0 && !progress->reporter->onMessage) {
        progress->reporter->onMessage = [progress](const Mc3dsReport &report) {
            OnMessage(progress, report);
        };
        ListenToLibrary(progress->reporter);
    }
}

void CountBytes(Progress *progress, uint64_t bytes)
{
    progress->bytesDone += bytes;
    progress->sceneBytesRead = 0;
}

void EndProgress(Progress *progress)
{
    if (!progress->isOn)
        return;
    SetStatusLine(progress->reporter, "");
    progress->reporter->onMessage = nullptr;
    ListenToLibrary(progress->reporter);
    progress->isOn = false;
}
