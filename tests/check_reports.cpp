#include "check_reports.h"
#include "frame/outcome.h"

#include <cstring>
#include <map>
#include <utility>
#include <vector>

using Kind = Mc3dsReportKind;

static const struct {
    const char *start; // of the text
    Kind kind;
} errorKinds[] = {
    {"malloc failed", Kind::OutOfMemory},
    {"Out of memory", Kind::OutOfMemory},
    {"The counts of the file", Kind::CountsTooLarge},
    {"File Error", Kind::FileError},
    {"Unable to open file <", Kind::CantOpen},
    {"File is not", Kind::NotAScene},
    {"Chunk header ", Kind::BadChunkHeader},
    {"Path <", Kind::TextCut},
    {"Object name <", Kind::TextCut},
    {"Instance name <", Kind::TextCut},
    {"Material name <", Kind::TextCut},
    {"Map name <", Kind::TextCut},
    {"3D Studio Version", Kind::NewerVersion},
    {"No of Texture Vertices", Kind::TextureCountDiffers},
    {"Mesh <", Kind::FaceOutside},
    {"Failed to invert", Kind::NoInverse},
    {"Unable to invert", Kind::NoInverse},
    {"Error parsing colour", Kind::BadColour},
    {"Error parsing percentage", Kind::BadPercentage},
    {"Texture Map already", Kind::MapTwice},
    {"Opacity Map already", Kind::MapTwice},
    {"Environment Map already", Kind::MapTwice},
    {"Invalid Material ", Kind::InvalidMaterial},
    {"Object ", Kind::ObjectNotFound},
    {"Track <", Kind::TrackTooShort},
    {"Second header", Kind::SecondNodeHeader},
    {"unable to find object", Kind::VueObjectNotFound},
    {"Transform of object", Kind::VueFrameOutside},
    {"Texture co-ordinate range", Kind::TextureRange},
    {"Unable to Create Matrix", Kind::NoMatrix},
};

// In the order of Mc3dsUnsupported.
static const char *const unsupportedTexts[] = {
    "MAT_XPFALL",      "MAT_REFBLUR - R", "MAT_TWO_SIDE",   "MAT_DECAL",       "MAT_BUMPMAP",
    "MAT_REFBLUR - A", "\tMORPH_SMOO",    "\tMORPH_TRACK",  "CAMERA_NODE_TAG", "TARGET_NODE_TAG",
    "LIGHT_NODE",      "L_TARGET_NODE",   "SPOTLIGHT_NODE",
};
static_assert(std::size(unsupportedTexts) == Mc3dsUnsupportedCount);

struct Heard {
    bool messages;      // any; a test may have its own callbacks
    std::string object; // the newest
    std::vector<std::pair<std::string, Mc3dsSkippedKind>> skipped;
    std::vector<uint32_t> unsupported = std::vector<uint32_t>(Mc3dsUnsupportedCount);
    std::map<uint32_t, uint32_t> ignored;
};

static Heard heard;

static bool Starts(const std::string &text, const char *start)
{
    return text.rfind(start, 0) == 0;
}

static Kind ErrorKind(const std::string &text)
{
    if (text == "Out of memory allocating frames" && !Mc3dsGetOutcome()->outOfMemory)
        return Kind::TooManyFrames;
    for (const auto &row : errorKinds)
        if (Starts(text, row.start))
            return row.kind;
    return Kind::Detail;
}

static Kind MessageKind(const std::string &text, uint64_t *amount)
{
    int count;
    char what[20];
    *amount = 0;
    if (Starts(text, "Writing File <"))
        return Kind::WritingFile;
    if (std::sscanf(text.c_str(), "Reading %d %19s", &count, what) != 2)
        return Kind::Detail;
    *amount = static_cast<uint64_t>(count) * (std::strcmp(what, "vertices") == 0 ? 12 : 8);
    return Kind::ReadingArray;
}

static void NoteSkipped(const std::string &text)
{
    unsigned tag;
    heard.messages = true;
    const auto name = [&] {
        const size_t start = text.find('<') + 1;
        return text.substr(start, text.rfind('>') - start);
    };
    if (Starts(text, "Object <"))
        heard.object = name();
    else if (Starts(text, "\nLight <"))
        heard.skipped.emplace_back(name(), Mc3dsSkippedKind::Light);
    else if (Starts(text, "\nCamera <"))
        heard.skipped.emplace_back(name(), Mc3dsSkippedKind::Camera);
    else if (Starts(text, "Hidden Object"))
        heard.skipped.emplace_back(heard.object, Mc3dsSkippedKind::HiddenMesh);
    else if (std::sscanf(text.c_str(), "Ignoring Chunk Tag <%x>", &tag) == 1)
        ++heard.ignored[tag];
    for (size_t i = 0; i < std::size(unsupportedTexts); ++i)
        heard.unsupported[i] += Starts(text, unsupportedTexts[i]);
}

std::string NoteReport(char channel, int32_t level, const char *text)
{
    const Mc3dsReport &report = *Mc3dsNewestReport();
    uint64_t amount = 0;
    const Kind kind = channel == 'E' ? ErrorKind(text) : MessageKind(text, &amount);
    if (channel == 'M')
        NoteSkipped(text);
    const bool fits = report.channel == (channel == 'E' ? Mc3dsChannel::Error : Mc3dsChannel::Message) &&
                      report.kind == kind && report.level == level && report.amount == amount &&
                      std::strcmp(report.text, text) == 0;
    return fits ? "" : "kind " + std::to_string(static_cast<int>(report.kind)) + " or other data of: " + text;
}

void ForgetReports()
{
    heard = {};
}

static std::string CompareSkipped(const Mc3dsFile &file)
{
    for (uint32_t i = 0; i < file.skippedCount; ++i)
        if (i >= heard.skipped.size() || file.skipped[i].name != heard.skipped[i].first ||
            file.skipped[i].kind != heard.skipped[i].second)
            return "skipped object " + std::to_string(i);
    if (file.skippedCount != heard.skipped.size())
        return "a skipped object is missing";
    for (uint32_t i = 0; i < Mc3dsUnsupportedCount; ++i)
        if (file.unsupported[i] != heard.unsupported[i])
            return std::string("count of ") + unsupportedTexts[i];
    for (uint32_t tag = 0; tag < (file.unknownChunks ? Mc3dsTagCount : 0); ++tag)
        if (file.unknownChunks[tag] != 0 && file.unknownChunks[tag] != heard.ignored[tag])
            return "count of tag " + std::to_string(tag);
    for (const auto &[tag, count] : heard.ignored)
        if (!file.unknownChunks || file.unknownChunks[tag] != count)
            return "missing tag " + std::to_string(tag);
    return "";
}

std::string CheckLoad(const Mc3dsFile *file)
{
    const Mc3dsOutcome &outcome = *Mc3dsGetOutcome();
    if (outcome.failedStep != Mc3dsFileStep::None)
        return "a load has an output file";
    const int reasons = outcome.isNoScene + (outcome.openError != 0) + (!file && outcome.outOfMemory);
    if (reasons != (file ? 0 : 1))
        return "the outcome has " + std::to_string(reasons) + " reasons for no scene";
    return file && heard.messages && !outcome.outOfMemory ? CompareSkipped(*file) : "";
}
