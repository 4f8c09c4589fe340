#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <string_view>

#include "run.h"

using Clock = std::chrono::steady_clock;

// Columns: fewer than any terminal has.
static const size_t lineMost = 78;
static const int barWidth = 20;

static struct {
    bool isOn;
    size_t scenes, number;
    std::string scene;
    uint64_t bytes, bytesDone, sceneBytes, sceneBytesRead;
    const char *doing;
    Clock::time_point start, lastDrawn;
} progress;

static double SecondsSince(Clock::time_point time)
{
    return std::chrono::duration<double>(Clock::now() - time).count();
}

// The bar is shown after one second. A long name is cut at its start.
static void Draw()
{
    progress.lastDrawn = Clock::now();
    std::string line = '[' + std::to_string(progress.number) + '/' + std::to_string(progress.scenes) + "] ";
    if (SecondsSince(progress.start) > 1.0 && progress.bytes > 0) {
        const double here = static_cast<double>(std::min(progress.sceneBytesRead, progress.sceneBytes));
        // Reading is the first half of the work on a scene.
        const double done =
            (static_cast<double>(progress.bytesDone) + here / 2) / static_cast<double>(progress.bytes);
        const auto filled = static_cast<size_t>(std::min(done, 1.0) * barWidth);
        line += '[' + std::string(filled, '#') + std::string(barWidth - filled, '-') + "] ";
    }
    std::string name = Visible(progress.scene) + progress.doing;
    const size_t room = lineMost - line.size();
    if (name.size() > room) {
        size_t cut = name.size() - room + 3;
        while (cut < name.size() && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80)
            ++cut; // not inside a UTF-8 character
        name = "..." + name.substr(cut);
    }
    SetStatusLine(line + name);
}

// The library reports no progress, but how many items of which kind it reads next.
static void OnMessage(const char *text)
{
    std::string_view rest = text;
    if (rest.starts_with("Writing File"))
        progress.doing = ", writing";
    if (rest.starts_with("Reading ")) {
        rest.remove_prefix(8);
        uint64_t count = 0;
        const auto end = std::from_chars(rest.data(), rest.data() + rest.size(), count).ptr;
        const std::string_view what(end, static_cast<size_t>(rest.data() + rest.size() - end));
        progress.sceneBytesRead += count * (what == " vertices" ? 12 : 8);
    }
    if (SecondsSince(progress.lastDrawn) > 0.25)
        Draw();
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

void StartProgress(size_t scenes, uint64_t bytes)
{
    if (!HasStatusLine())
        return;
    progress.isOn = true;
    progress.scenes = scenes;
    progress.bytes = bytes;
    progress.doing = "";
    progress.start = progress.lastDrawn = Clock::now();
}

void ShowScene(size_t number, const std::string &scene, uint64_t bytes)
{
    progress.number = number;
    progress.scene = scene;
    progress.sceneBytes = bytes;
    progress.sceneBytesRead = 0;
    progress.doing = "";
    if (progress.isOn && progress.scenes > 1)
        Draw();
    if (progress.isOn && bytes > 0)
        WatchMessages(OnMessage);
}

void CountBytes(uint64_t bytes)
{
    progress.bytesDone += bytes;
    progress.sceneBytesRead = 0;
}

void EndProgress()
{
    if (progress.isOn)
        SetStatusLine("");
    progress.isOn = false;
    WatchMessages(nullptr);
}
