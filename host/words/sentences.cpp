// The texts of all findings.
#include "words.h"

static std::string Quoted(const Finding &finding)
{
    return finding.names.empty() ? "" : InQuotes(finding.names.front().name);
}

static std::string Number(uint64_t number)
{
    return std::to_string(number);
}

// "TITLE: 3; the first: "A""
static std::string Listed(const char *title, const Finding &finding)
{
    return title + (": " + Number(finding.count)) + "; the first: " + Quoted(finding);
}

static std::string BareFacesText(const Finding &finding)
{
    constexpr size_t namedMost = 3;
    std::string text =
        Number(finding.count) + " of " + Number(finding.of) + " faces have no material and are flat green";
    const size_t count = finding.names.size();
    for (size_t i = 0; i < count && i < namedMost; ++i)
        text += (i == 0 ? "; they name " : ", ") + InQuotes(finding.names[i].name) +
                (finding.names[i].isLater ? ", which comes later in the file" : ", which the file lacks");
    return text + (count > namedMost ? " and " + Number(count - namedMost) + " more" : "");
}

static std::string LostPlacementsText(const Finding &finding)
{
    return "meshes placed by several nodes, of which only the last counts: " + Number(finding.count) + "; " +
           Counted(finding.of, "placement") + (finding.of == 1 ? " is" : " are") +
           " lost; the first: " + Quoted(finding) + ", in " + Number(finding.most) + " nodes";
}

static std::string EmptyModelText(const Finding &finding)
{
    return "the model has no triangles, the scene has " + Number(finding.count) +
           (finding.of != 0 ? "; they hang from no object: --flat writes them"
                            : "; they name no vertices of theirs");
}

static const char *ReasonOf(Mc3dsRestoreLimit limit)
{
    switch (limit) {
    case Mc3dsRestoreLimit::NoInverse: return "a matrix has no inverse";
    case Mc3dsRestoreLimit::DamagedKeys: return "the keys are damaged";
    case Mc3dsRestoreLimit::TooManyVertices: return "a mesh would have more than 65,535 vertices";
    case Mc3dsRestoreLimit::Damaged: return "chunks of the file are too short for what they hold";
    case Mc3dsRestoreLimit::TooLarge: return "the result would be too large for the file";
    case Mc3dsRestoreLimit::None: break;
    }
    return "";
}

static std::string NotRestoredText(const Finding &finding)
{
    static const char *const kinds[Mc3dsRestoreKindCount] = {"materials", "pose",  "placements",
                                                             "motion",    "edges", "strays"};
    const auto limit = static_cast<Mc3dsRestoreLimit>(finding.of);
    if (limit == Mc3dsRestoreLimit::Damaged)
        return std::string("nothing is restored: ") + ReasonOf(limit);
    return std::string("not restored: ") + kinds[finding.most] + " of " + Number(finding.count) + "; " +
           ReasonOf(limit) + "; the first: " + Quoted(finding);
}

static std::string PlainSentence(const Finding &finding)
{
    const std::string number = Number(finding.count), whole = Number(finding.of);
    switch (finding.kind) {
    case FindingKind::LibraryReport: return finding.detail;
    case FindingKind::OrphanObjects:
        return "objects without a parent in the scene, left out: " + number + " of " + whole +
               "; --flat writes them; the first: " + Quoted(finding);
    case FindingKind::LostPlacements: return LostPlacementsText(finding);
    case FindingKind::BareFaces: return BareFacesText(finding);
    case FindingKind::InvalidMaterial:
        return finding.detail + ": material " + Quoted(finding) + " is left out; it costs " +
               Counted(finding.count, "face");
    case FindingKind::NoAnimation: return "no animation: " + finding.detail;
    case FindingKind::CutFile: return "the file is cut short: " + number + " of " + whole + " bytes";
    case FindingKind::NotFiniteVertices:
        return "vertices that hold no finite numbers, and are written as nan or inf: " + number +
               "; the first is in " + Quoted(finding);
    case FindingKind::NotFinitePlacement:
        return "placements that hold no finite numbers, and are written as nan or inf: " + number +
               "; the first is that of " + Quoted(finding);
    case FindingKind::NoExtent:
        return "the scene has no extent that --size could be made of, and is written with a scale of no use; "
               "--scale needs none";
    case FindingKind::ScaleTooLarge:
        return "the scale takes co-ordinates beyond what a number holds, and they are written as inf";
    case FindingKind::SharedNames:
        return Listed("objects with the name of another one, which --protos can't tell apart", finding);
    case FindingKind::SharedTags:
        return Listed("TAG_ lines of the header file that define a name again", finding);
    case FindingKind::InvalidTags:
        return Listed("TAG_ lines of the header file whose names aren't valid in C", finding);
    case FindingKind::ScriptBreaks: return Listed("names that break the script", finding);
    case FindingKind::SourceBreaks: return Listed("names that break the C source", finding);
    case FindingKind::EmptyModel: return EmptyModelText(finding);
    case FindingKind::RendererSaid:
        return "the Meshcaster library counted " + Counted(finding.count, "error") +
               (finding.count == 1 ? ": " : ", the first: ") + finding.detail;
    case FindingKind::EmptyPicture: return "the picture is empty: " + finding.detail;
    case FindingKind::NoPicture: return "no picture is drawn: " + finding.detail;
    case FindingKind::NoStrip: return "the scene has no animation: the strip is one picture";
    case FindingKind::OneProcess:
        return "--jobs: this system can't split processes, so scenes are converted one at a time";
    case FindingKind::UnplayedKeys:
        return "keys of " + Counted(finding.count, "object") + " move" +
               (finding.of == 0 ? "" : " over " + Counted(finding.of, "frame")) +
               "; animation comes from a .vue file alone, and there is none";
    case FindingKind::CoarsePicture:
        return "the picture is coarse: so many faces lie over each other that a sharp one would take too "
               "long";
    case FindingKind::GlbBareFaces:
        return "faces that the .glb lacks, as their corners are no finite numbers: " + number;
    case FindingKind::GlbNearest:
        return "a .glb can't store shear; the nearest placements of the animation are used, up to " +
               NumberText(finding.size) + " units of the file away";
    case FindingKind::GlbMerged: return "the .glb has no animation: the objects of a merged model are one";
    case FindingKind::GlbTextures:
        return "textures that the .glb names and doesn't hold: " + number +
               "; a PNG or JPEG file of that name has to lie beside the scene; the first: " + Quoted(finding);
    case FindingKind::GlbPicture: return "picture " + Quoted(finding) + " isn't embedded: " + finding.detail;
    case FindingKind::TwinName:
        return Quoted(finding) + " is written as " + InQuotes(finding.names[1].name) + ": " +
               InQuotes(finding.names[2].name) + " has the first name";
    case FindingKind::SkippedFiles:
        return Counted(finding.count, "file") +
               " of other programs passed over: " + Number(finding.count - finding.of) +
               " that Macs leave beside a file, " + whole +
               " that stand for a large one; the first: " + Quoted(finding);
    case FindingKind::NothingToShow:
        return "the model has no triangles; " + Quoted(finding) + " is not written";
    case FindingKind::StandElsewhere:
        return Counted(finding.count, "object") + (finding.count == 1 ? " stands" : " stand") +
               " elsewhere in frame 0";
    case FindingKind::RestoredMaterials: return Counted(finding.count, "material");
    case FindingKind::RestoredPose: return "the pose of " + Counted(finding.count, "object");
    case FindingKind::RestoredParents: return "the parents of " + Counted(finding.count, "object");
    case FindingKind::RestoredPlacements: return Counted(finding.of, "placement");
    case FindingKind::RestoredKeys:
        return "keys of " + Counted(finding.count, "object") + " over " + Counted(finding.of, "frame");
    case FindingKind::RestoredEdges: return "edges of " + Counted(finding.count, "mesh", "meshes");
    case FindingKind::RestoredStrays: return Counted(finding.of, "stray vertex", "stray vertices");
    case FindingKind::NotRestored: return NotRestoredText(finding);
    }
    return "";
}

std::string SentenceOf(const Finding &finding)
{
    return PlainSentence(finding) + (finding.isRestorable ? "; --restore completes them" : "");
}

std::string RestoredText(const std::vector<Finding> &restored)
{
    std::string text;
    for (const Finding &finding : restored)
        text += (text.empty() ? "restored: " : ", ") + SentenceOf(finding);
    return text;
}

std::string WarningText(const Finding &finding)
{
    return finding.times == 1 ? SentenceOf(finding)
                              : Number(finding.times) + " times, the first: " + SentenceOf(finding);
}

struct KindWords {
    const char *id, *phrase;
};

static KindWords WordsOf(Mc3dsReportKind report)
{
    switch (report) {
    case Mc3dsReportKind::OutOfMemory: return {"out-of-memory", "memory ran out"};
    case Mc3dsReportKind::TooManyFrames: return {"too-many-frames", "too many frames for the file"};
    case Mc3dsReportKind::CountsTooLarge: return {"counts-too-large", "counts are too large for the file"};
    case Mc3dsReportKind::FileError: return {"read-error", "files can't be read to their end"};
    case Mc3dsReportKind::CantOpen: return {"cannot-open", "files can't be opened"};
    case Mc3dsReportKind::NotAScene: return {"no-scene", "files are no 3D Studio files"};
    case Mc3dsReportKind::BadChunkHeader: return {"bad-chunk-header", "damaged chunk headers"};
    case Mc3dsReportKind::TextCut: return {"name-cut", "names are too long and were cut"};
    case Mc3dsReportKind::NewerVersion: return {"newer-version", "the file's version is above 3"};
    case Mc3dsReportKind::TextureCountDiffers:
        return {"texture-count", "texture co-ordinates don't fit the vertices"};
    case Mc3dsReportKind::FaceOutside: return {"face-outside", "faces name missing vertices"};
    case Mc3dsReportKind::NoInverse: return {"no-inverse", "matrices have no inverse"};
    case Mc3dsReportKind::BadColour: return {"bad-colour", "damaged colours"};
    case Mc3dsReportKind::BadPercentage: return {"bad-percentage", "damaged percentages"};
    case Mc3dsReportKind::MapTwice: return {"map-twice", "maps are defined twice"};
    case Mc3dsReportKind::InvalidMaterial: return {"invalid-material", "invalid materials"};
    case Mc3dsReportKind::ObjectNotFound: return {"object-not-found", "nodes name missing objects"};
    case Mc3dsReportKind::TrackTooShort: return {"track-too-short", "key tracks are too short"};
    case Mc3dsReportKind::SecondNodeHeader: return {"second-node-header", "nodes have two headers"};
    case Mc3dsReportKind::VueObjectNotFound:
        return {"vue-object-not-found", ".vue files name missing objects"};
    case Mc3dsReportKind::VueFrameOutside: return {"vue-frame-outside", ".vue files have too many frames"};
    case Mc3dsReportKind::TextureRange: return {"texture-range", "texture co-ordinates above 32"};
    case Mc3dsReportKind::NoMatrix: return {"no-matrix", "the Meshcaster library gave no matrix"};
    case Mc3dsReportKind::WritingFile:
    case Mc3dsReportKind::ReadingArray:
    case Mc3dsReportKind::Detail: break; // messages, which are never warnings
    }
    return {"report", "other reports"};
}

static KindWords WordsOf(const Finding &finding)
{
    switch (finding.kind) {
    case FindingKind::LibraryReport: return WordsOf(finding.report);
    case FindingKind::OrphanObjects: return {"orphan-objects", "objects without a parent in the scene"};
    case FindingKind::LostPlacements: return {"lost-placements", "meshes placed by several nodes"};
    case FindingKind::BareFaces: return {"bare-faces", "faces have no material and are flat green"};
    case FindingKind::InvalidMaterial: return {"invalid-material", nullptr};
    case FindingKind::NoAnimation: return {"no-animation", "no animation"};
    case FindingKind::CutFile: return {"cut-file", "files are cut short"};
    case FindingKind::NotFiniteVertices:
        return {"not-finite-vertices", "vertices that hold no finite numbers"};
    case FindingKind::NotFinitePlacement:
        return {"not-finite-placements", "placements that hold no finite numbers"};
    case FindingKind::NoExtent: return {"no-extent", "no extent for --size"};
    case FindingKind::ScaleTooLarge: return {"scale-too-large", "the scale is too large"};
    case FindingKind::SharedNames: return {"shared-names", "objects with the name of another one"};
    case FindingKind::SharedTags: return {"shared-tags", "TAG_ lines that define a name again"};
    case FindingKind::InvalidTags: return {"invalid-tags", "TAG_ lines whose names aren't valid in C"};
    case FindingKind::ScriptBreaks: return {"names-break-script", "names that break the script"};
    case FindingKind::SourceBreaks: return {"names-break-source", "names that break the C source"};
    case FindingKind::EmptyModel: return {"empty-model", "the model has no triangles"};
    case FindingKind::RendererSaid: return {"library-errors", "errors of the Meshcaster library"};
    case FindingKind::EmptyPicture: return {"empty-picture", "the picture is empty"};
    case FindingKind::NoPicture: return {"no-picture", "no picture can be drawn"};
    case FindingKind::NoStrip: return {"no-strip", "no animation for a strip"};
    case FindingKind::OneProcess: return {"one-process", "scenes are converted one at a time"};
    case FindingKind::UnplayedKeys: return {"unplayed-keys", "keys move without a .vue file"};
    case FindingKind::CoarsePicture: return {"coarse-picture", "the picture is coarse"};
    case FindingKind::GlbBareFaces: return {"glb-faces", "faces that the .glb lacks"};
    case FindingKind::GlbNearest: return {"glb-shear", "placements that a .glb can't store"};
    case FindingKind::GlbMerged: return {"glb-merged", "no animation of merged models in a .glb"};
    case FindingKind::GlbTextures: return {"glb-textures", "textures that the .glb lacks"};
    case FindingKind::GlbPicture: return {"glb-picture", "pictures that can't be embedded"};
    case FindingKind::TwinName: return {"twin-name", "two scenes with one name"};
    case FindingKind::SkippedFiles: return {"skipped-files", "files that are no scenes"};
    case FindingKind::NothingToShow: return {"nothing-to-show", "models without triangles aren't shown"};
    case FindingKind::StandElsewhere: return {"stand-elsewhere", "objects stand elsewhere in frame 0"};
    case FindingKind::RestoredMaterials: return {"materials", "restored materials"};
    case FindingKind::RestoredPose: return {"pose", "restored poses"};
    case FindingKind::RestoredParents: return {"parents", "restored parents"};
    case FindingKind::RestoredPlacements: return {"placements", "restored placements"};
    case FindingKind::RestoredKeys: return {"motion", "restored keys"};
    case FindingKind::RestoredEdges: return {"edges", "restored edges"};
    case FindingKind::RestoredStrays: return {"strays", "removed stray vertices"};
    case FindingKind::NotRestored: return {"not-restored", "what can't be restored"};
    }
    return {"", ""};
}

std::string PhraseOf(const Finding &finding)
{
    const char *phrase = WordsOf(finding).phrase;
    return phrase ? phrase : finding.detail;
}

const char *IdOf(const Finding &finding)
{
    return WordsOf(finding).id;
}
