#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>

#include "input.h"

// A switch that sets one bit.
struct BitRow {
    const char *name;
    uint32_t HostOptions::*word;
    uint32_t bit;
    const char *group;
    const char *help;
};

static const BitRow bitRows[] = {
    {"--source", &HostOptions::flags, MC3DS_SOURCE, "Form", "write C source (default: a script)"},
    {"--per-object", &HostOptions::flags, MC3DS_PER_OBJECT, "Form",
     "one file for each object, called OUTPUT and its index from 0 (default: one for the scene)"},
    {"--protos", &HostOptions::flags, MC3DS_PROTOS, "Form",
     "geometry once as prototypes, the tree holds instances (default: geometry in the tree)"},
    {"--flat", &HostOptions::flags, MC3DS_FLAT, "Form",
     "all objects side by side with absolute placements (default: children in their parents)"},
    {"--merged", &HostOptions::flags, MC3DS_MERGED, "Form",
     "all objects in one clump (default: one clump for each)"},
    {"--centre,--center", &HostOptions::flags, MC3DS_CENTRE, "Size",
     "move the middle of the scene's bounds to the origin (default: leave it)"},
    {"--texture-lit", &HostOptions::surfaceFlags, MC3DS_TEXTURE_LIT, "Surfaces",
     "texture mode Lit (default: off)"},
    {"--texture-filter", &HostOptions::surfaceFlags, MC3DS_TEXTURE_FILTER, "Surfaces",
     "texture mode Filter (default: off)"},
    {"--texture-foreshorten", &HostOptions::surfaceFlags, MC3DS_TEXTURE_FORESHORTEN, "Surfaces",
     "texture mode Foreshorten (default: off)"},
    {"--hint-hs", &HostOptions::hintFlags, MC3DS_HINT_HS, "Hints",
     "the hint HS on every clump (default: off)"},
    {"--hint-editable", &HostOptions::hintFlags, MC3DS_HINT_EDITABLE, "Hints",
     "the hint EDITABLE on every clump (default: off)"},
};

struct BoolRow {
    const char *name;
    bool HostOptions::*value;
    const char *group;
    const char *help;
};

static const BoolRow boolRows[] = {
    {"--recursive", &HostOptions::recursive, "Files",
     "a SCENE may be a folder: all *.3ds files in it and below, in any case (default: files only)"},
    {"--no-clobber", &HostOptions::noClobber, "Files",
     "leave files alone that exist already, and say so (default: replace them)"},
    {"--force-names", &HostOptions::forceNames, "Form",
     "write names that break out of the C source or the script too (default: such a scene fails)"},
    {"--info", &HostOptions::info, "Looking",
     "show what the scene holds on the standard output, and convert nothing (default: off)"},
    {"--json", &HostOptions::json, "Looking", "with --info: one line of JSON for each scene (default: text)"},
    {"--strict", &HostOptions::strict, "Reports",
     "warnings count as failures, status 1; files are written all the same (default: off)"},
};

// The value of an option whose FILE wasn't given. No file can have this name.
static const char noName[] = "/";

static void Accept(const char *option, bool isGood, const std::string &whyNot)
{
    if (!isGood)
        throw CLI::ValidationError(option, whyNot);
}

static float ReadNumber(const char *option, const std::string &text, float least, bool leastIsIn, float most,
                        const char *range)
{
    float value = 0.0f;
    const char *end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, value);
    if (failure == std::errc::invalid_argument || stop != end)
        throw CLI::ValidationError(option, InQuotes(text) + " is no number");
    if (failure != std::errc() || !std::isfinite(value) || value < least || (value == least && !leastIsIn) ||
        value > most)
        throw CLI::ValidationError(option, text + " is out of range: " + range);
    return value;
}

static bool ReadWhole(std::string_view text, int64_t least, int64_t most, int64_t *value)
{
    const char *end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, *value);
    return failure == std::errc() && stop == end && *value >= least && *value <= most;
}

static void ReadWeights(const std::string &text, float weights[3])
{
    const std::vector<std::string> words = CLI::detail::split(text, ',');
    Accept("--weights", words.size() == 3, InQuotes(text) + " is not three numbers R,G,B");
    constexpr float most = std::numeric_limits<float>::max();
    for (size_t i = 0; i < 3; ++i)
        weights[i] = ReadNumber("--weights", words[i], -most, true, most, "any finite number");
}

static std::string ReadExtension(std::string text)
{
    if (text.starts_with('.'))
        text.erase(0, 1);
    for (const char c : text)
        if (static_cast<unsigned char>(c) <= ' ' || c == '\x7F' || std::strchr("\"\\/.", c))
            throw CLI::ValidationError("--texture-extension", InQuotes(text) + " is no extension");
    return text;
}

static bool EndsIn(const std::string &text, const char *extension)
{
    return InLowerCase(PathOf(text).filename().string()).ends_with(extension);
}

static std::string ReadName(const char *option, const std::string &text, bool mayBeStandardOutput)
{
    Accept(option, !text.empty(), "the name is empty");
    Accept(option, text != standardOutputName || mayBeStandardOutput,
           "only --output can be -, the standard output");
    return text;
}

// Adds an option with a value. read stores the value or throws CLI::ValidationError.
static void AddValue(CLI::App *app, const char *names, const char *type, const char *group, const char *help,
                     const std::function<void(const std::string &)> &read)
{
    app->add_option_function<std::string>(names, read, help)
        ->type_name(type)
        ->group(group)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

static void AddFileOptions(CLI::App *app, HostOptions *options)
{
    app->add_option("scene", options->scenes, "the 3D Studio files to convert")->type_name("SCENE");
    AddValue(app, "-o,--output", "OUTPUT", "Files",
             "the file to write, - for the standard output (default: the scene's name with .mcx, or .c with "
             "--source)",
             [options](const std::string &text) { options->output = ReadName("--output", text, true); });
    AddValue(
        app, "--output-dir", "DIR", "Files",
        "folder for the files, created if missing; scenes of a folder keep their subfolders (default: beside "
        "each scene)",
        [options](const std::string &text) { options->outputDir = ReadName("--output-dir", text, false); });
    AddValue(app, "-j,--jobs", "N", "Files",
             "convert N scenes at a time, in as many processes; 1 to 256 (default: 1)",
             [options](const std::string &text) {
                 int64_t jobs = 0;
                 Accept("--jobs", ReadWhole(text, 1, jobsMost, &jobs),
                        InQuotes(text) + " is no number from 1 to " + std::to_string(jobsMost));
                 options->jobs = static_cast<unsigned>(jobs);
             });
    app->add_flag("--header{/}", options->headerFile,
                  "write a header file of tags too (default for FILE: OUTPUT with .h)")
        ->type_name("[=FILE]")
        ->group("Files");
    app->add_flag("--animation{/}", options->animationFile,
                  "write the .vue animation too, objects stand as in its frame 0 (default for FILE: OUTPUT "
                  "with .mca)")
        ->type_name("[=FILE]")
        ->group("Files");
}

static void AddSwitches(CLI::App *app, HostOptions *options)
{
    for (const BitRow &row : bitRows)
        app->add_flag_callback(
               row.name, [options, &row] { options->*row.word |= row.bit; }, row.help)
            ->group(row.group);
    for (const BoolRow &row : boolRows)
        app->add_flag(row.name, options->*row.value, row.help)->group(row.group);
    app->add_flag_callback(
           "--no-textures", [options] { options->surfaceFlags &= ~MC3DS_TEXTURES; },
           "name textures in comments only (default: use them)")
        ->group("Surfaces");
}

static void AddFormOptions(CLI::App *app, HostOptions *options)
{
    constexpr float most = std::numeric_limits<float>::max();
    AddValue(app, "--clump-name", "NAME", "Form",
             "with --source: the function is called McBuildNAME; letters, digits, _ (default: the scene's "
             "name)",
             [options](const std::string &text) {
                 Accept("--clump-name", IsIdentifierPart(text),
                        InQuotes(text) + " can't be part of a C name");
                 options->clumpName = text;
             });
    AddValue(app, "--scale", "X", "Size", "factor from the file's units to the model's; above 0 (default: 1)",
             [options](const std::string &text) {
                 options->scale = ReadNumber("--scale", text, 0, false, most, "above 0");
             });
    AddValue(
        app, "--size", "X", "Size",
        "longest side of the scene's bounds in the model's units; above 0 (default: as --scale makes it)",
        [options](const std::string &text) {
            options->size = ReadNumber("--size", text, 0, false, most, "above 0");
            options->flags |= MC3DS_FIT_SIZE;
        });
}

static void AddSurfaceOptions(CLI::App *app, HostOptions *options)
{
    AddValue(app, "--opacity", "X", "Surfaces",
             "opacity of all transparent materials; 0 to 1 (default: that of each material)",
             [options](const std::string &text) {
                 options->opacity = ReadNumber("--opacity", text, 0, true, 1, "0 to 1");
                 options->flags |= MC3DS_OPACITY;
             });
    AddValue(app, "--weights", "R,G,B", "Surfaces",
             "what red, green and blue count in a surface's coefficients; any numbers (default: "
             "0.299,0.587,0.114)",
             [options](const std::string &text) { ReadWeights(text, options->weights); });
    AddValue(app, "--texture-extension", "EXT", "Surfaces",
             "give texture names this extension, \"\" for none (default: as in the file)",
             [options](const std::string &text) {
                 options->textureExtension = ReadExtension(text);
                 options->surfaceFlags |= MC3DS_TEXTURE_EXTENSION;
             });
}

static void ReadPreviewSize(const std::string &text, PreviewOptions *preview)
{
    const size_t cross = text.find('x');
    int64_t width = 0, height = 0;
    Accept(
        "--preview-size",
        cross != std::string::npos &&
            ReadWhole(std::string_view(text).substr(0, cross), previewSideLeast, previewSideMost, &width) &&
            ReadWhole(std::string_view(text).substr(cross + 1), previewSideLeast, previewSideMost, &height),
        InQuotes(text) + " is no size WxH with sides of " + std::to_string(previewSideLeast) + " to " +
            std::to_string(previewSideMost) + " pixels");
    preview->width = static_cast<int>(width);
    preview->height = static_cast<int>(height);
}

static void ReadPreviewFrame(const std::string &text, PreviewOptions *preview)
{
    preview->strip = text == "strip";
    Accept("--preview-frame", preview->strip || ReadWhole(text, 0, UINT32_MAX, &preview->frame),
           InQuotes(text) + " is neither the number of a frame nor \"strip\"");
}

static void AddPreviewOptions(CLI::App *app, HostOptions *options)
{
    AddValue(
        app, "--preview", "FILE.png", "Looking",
        "draw a picture of the model too, for many scenes each in SCENE.FILE.png, or SCENE.png for .png; "
        "with --info nothing else is written (default: none)",
        [options](const std::string &text) {
            Accept("--preview", EndsIn(text, ".png"), InQuotes(text) + " doesn't end in .png");
            options->previewFile = text;
        });
    AddValue(app, "--glb", "FILE.glb", "Looking",
             "write the model as binary glTF 2.0 too, which every viewer opens; for many scenes as --preview "
             "(default: none)",
             [options](const std::string &text) {
                 Accept("--glb", EndsIn(text, ".glb"), InQuotes(text) + " doesn't end in .glb");
                 options->glbFile = text;
             });
    AddValue(app, "--preview-size", "WxH", "Looking",
             "pixels of a picture, 16x16 to 4096x4096 (default: 800x600, in a strip 320x240)",
             [options](const std::string &text) { ReadPreviewSize(text, &options->preview); });
    AddValue(app, "--preview-frame", "N", "Looking",
             "the frame of the animation to draw, from 0; strip: five from all of it, side by side (default: "
             "objects stand as in the output)",
             [options](const std::string &text) { ReadPreviewFrame(text, &options->preview); });
}

static uint32_t ReadRestoreKinds(const std::string &text)
{
    static const char *const names[Mc3dsRestoreKindCount] = {"materials", "pose",  "placements",
                                                             "motion",    "edges", "strays"};
    uint32_t kinds = 0;
    for (const std::string &word : CLI::detail::split(text, ',')) {
        uint32_t kind = 0;
        while (kind < Mc3dsRestoreKindCount && word != names[kind])
            ++kind;
        Accept("--restore", kind < Mc3dsRestoreKindCount,
               InQuotes(word) + " is none of materials, pose, placements, motion, edges, strays");
        kinds |= 1u << kind;
    }
    return kinds;
}

static void AddRestoreOptions(CLI::App *app, HostOptions *options, std::string *kinds)
{
    app->add_flag(
           "--restore{/}", *kinds,
           "complete what old scenes leave to the reader: materials, pose, placements, motion, edges, "
           "strays; KINDS: some of these words with commas between them (default: read the scene as it "
           "is)")
        ->type_name("[=KINDS]")
        ->group("Restoring");
    AddValue(app, "--restored", "FILE.3ds", "Restoring",
             "keep the restored scene, and its animation as FILE.vue; for many scenes as --glb (default: "
             "neither)",
             [options](const std::string &text) {
                 Accept("--restored", EndsIn(text, ".3ds"), InQuotes(text) + " doesn't end in .3ds");
                 options->restoredFile = text;
             });
}

static void AddReportOptions(CLI::App *app, HostOptions *options)
{
    app->add_flag_callback(
           "-q,--quiet", [options] { options->verbosity = -1; },
           "report errors only (default: warnings and written files, or one line for each of many scenes "
           "that "
           "lost something)")
        ->group("Reports");
    app->add_flag_function(
           "-v,--verbose", [options](int64_t count) { options->verbosity = static_cast<int>(count); },
           "report each file, object, material and warning; -vv: every detail (default: off)")
        ->group("Reports");
    AddValue(
        app, "--summary", "FILE", "Reports", "write what was done with each scene as JSON (default: none)",
        [options](const std::string &text) { options->summaryFile = ReadName("--summary", text, false); });
    AddValue(app, "--report", "FILE.html", "Reports",
             "write what was done as one page for a browser, with a picture of each scene (default: none)",
             [options](const std::string &text) {
                 const std::string extension = InLowerCase(PathOf(text).extension().string());
                 Accept("--report", extension == ".html" || extension == ".htm",
                        InQuotes(text) + " doesn't end in .html");
                 options->pageFile = text;
             });
    app->set_help_flag("-h,--help", "print this and exit")->group("Reports");
    app->set_version_flag("--version", "", "print the version and exit")->group("Reports");
}

// The words of text in lines of 80 columns that begin with indent blanks.
static std::string Wrapped(const std::string &text, size_t indent)
{
    constexpr size_t columns = 80;
    std::string lines;
    size_t used = columns;
    for (const std::string &word : CLI::detail::split(text, ' ')) {
        const bool fits = used + 1 + word.size() <= columns;
        lines += fits ? " " : (lines.empty() ? "" : "\n") + std::string(indent, ' ');
        used = (fits ? used + 1 : indent) + word.size();
        lines += word;
    }
    return lines + '\n';
}

static void PrintHelp(const CLI::App &app)
{
    constexpr size_t indent = 29;
    std::fputs("usage: 3ds2mcx [options] SCENE...\n\n"
               "Converts 3D Studio scenes for the Meshcaster renderer.\n",
               stdout);
    for (const char *group :
         {"Files", "Restoring", "Form", "Size", "Surfaces", "Hints", "Looking", "Reports"}) {
        std::printf("\n%s\n", group);
        for (const CLI::Option *option : app.get_options()) {
            if (option->get_group() != group)
                continue;
            const std::string type = option->get_type_name();
            std::string name;
            for (const std::string &letter : option->get_snames())
                name += '-' + letter + ", ";
            for (const std::string &word : option->get_lnames())
                name += (name.empty() || name.ends_with(' ') ? "--" : ", --") + word;
            name += (type.empty() || type[0] == '[' ? "" : " ") + type;
            // The name is at the start of the first line, or has a line of its own.
            std::string lines = Wrapped(option->get_description(), indent);
            name = "  " + name;
            if (name.size() < indent)
                lines.replace(0, name.size(), name);
            else
                lines = name + '\n' + lines;
            std::fputs(lines.c_str(), stdout);
        }
    }
    std::fputs(
        ("\n" + Wrapped("Exit status: 0 done, whatever warnings there were; 1 a scene could not be read "
                        "or written completely, or with --strict there were warnings; 2 the command "
                        "line is wrong, and nothing was done.",
                        0))
            .c_str(),
        stdout);
}

// The fewest insertions, deletions and replacements of letters that turn a into b.
static size_t Distance(std::string_view a, std::string_view b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t i = 0; i <= b.size(); ++i)
        row[i] = i;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i);
        for (size_t at = 1; at <= b.size(); ++at) {
            const size_t changed = diagonal + (a[i - 1] == b[at - 1] ? 0 : 1);
            diagonal = std::exchange(row[at], std::min({row[at] + 1, row[at - 1] + 1, changed}));
        }
    }
    return row.back();
}

// Suggests an option for the unknown one at the end of the failure's text; empty if none is similar.
static std::string NearestOption(const CLI::App &app, const CLI::ParseError &failure)
{
    std::string word = failure.what();
    word.erase(0, word.find("--"));
    word.erase(std::min(word.find_first_of("=: "), word.size()));
    std::string nearest;
    size_t least = 3; // at most 2 letters may differ
    for (const CLI::Option *option : app.get_options())
        for (const std::string &name : option->get_lnames())
            if (const size_t distance = Distance(word, "--" + name); distance < least) {
                least = distance;
                nearest = "--" + name;
            }
    return least == 0 ? "" : nearest;
}

int ParseOptions(int argc, const char *const *argv, HostOptions *options)
{
    CLI::App app("", "3ds2mcx");
    app.allow_windows_style_options(false);
    std::string restoreKinds;
    AddFileOptions(&app, options);
    AddRestoreOptions(&app, options, &restoreKinds);
    AddSwitches(&app, options);
    AddFormOptions(&app, options);
    AddSurfaceOptions(&app, options);
    AddPreviewOptions(&app, options);
    AddReportOptions(&app, options);
    std::string why;
    try {
        app.parse(argc, argv);
        for (std::string *file : {&options->headerFile, &options->animationFile})
            if (*file == noName)
                file->clear();
            else if (*file == standardOutputName)
                throw CLI::ValidationError("FILE", "only --output can be -, the standard output");
        if (app.count("--restore") != 0)
            options->restore = restoreKinds == noName ? Mc3dsRestoreAll : ReadRestoreKinds(restoreKinds);
        options->flags |= app.count("--header") != 0 ? MC3DS_HEADER : 0;
        options->flags |= app.count("--animation") != 0 ? MC3DS_ANIMATION : 0;
        why = FindConflict(*options, [&app](const char *option) { return app.count(option) != 0; });
    } catch (const CLI::CallForHelp &) {
        PrintHelp(app);
        return exitDone;
    } catch (const CLI::CallForVersion &) {
        std::printf("3ds2mcx %s\n", Mc3dsGetVersion());
        return exitDone;
    } catch (const CLI::ParseError &failure) {
        why = failure.what();
        if (const std::string nearest = NearestOption(app, failure); !nearest.empty())
            why += "; did you mean " + nearest + '?';
    }
    if (why.empty())
        return -1;
    std::fprintf(stderr, "3ds2mcx: %s\nTry \"3ds2mcx --help\".\n", Visible(why).c_str());
    return exitUsage;
}
