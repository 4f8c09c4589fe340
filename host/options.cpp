#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <CLI/CLI.hpp>

#include "host.h"

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
    {"--direct", &HostOptions::flags, MC3DS_DIRECT, "Form",
     "build the model in memory and list it on the standard output; no file"},
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

// Options that can't stand together.
struct ConflictRow {
    const char *a, *b;
    const char *why;
};

static const char noFile[] = "a direct build writes no file";
static const char ownSpace[] = "the file of an object holds its geometry alone, unplaced";
static const ConflictRow conflictRows[] = {
    {"--direct", "--source", "a direct build writes no source"},
    {"--direct", "--output", noFile},
    {"--direct", "--header", noFile},
    {"--direct", "--per-object", noFile},
    {"--per-object", "--header", "a run of one file for each object writes no header file"},
    {"--per-object", "--animation", "a run of one file for each object writes no animation file"},
    {"--per-object", "--protos", ownSpace},
    {"--per-object", "--flat", ownSpace},
    {"--per-object", "--merged", ownSpace},
    {"--per-object", "--centre", ownSpace},
    {"--scale", "--size", "each decides what the other one is"},
    {"--quiet", "--verbose", "one asks for less and the other for more"},
};

// Stands for a FILE that wasn't given. No file can be called that.
static const char noName[] = "/";

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

static void ReadWeights(const std::string &text, float weights[3])
{
    const std::vector<std::string> words = CLI::detail::split(text, ',');
    if (words.size() != 3)
        throw CLI::ValidationError("--weights", InQuotes(text) + " is not three numbers R,G,B");
    constexpr float most = std::numeric_limits<float>::max();
    for (size_t i = 0; i < 3; ++i)
        weights[i] = ReadNumber("--weights", words[i], -most, true, most, "any finite number");
}

static bool IsIdentifierPart(const std::string &text)
{
    for (const char c : text)
        if (!(c >= 'a' && c <= 'z') && !(c >= 'A' && c <= 'Z') && !(c >= '0' && c <= '9') && c != '_')
            return false;
    return !text.empty();
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

static void AddFileOptions(CLI::App *app, HostOptions *options)
{
    app->add_option("scene", options->scenes, "the 3D Studio file to convert")->type_name("SCENE.3DS");
    app->add_option_function<std::string>(
           "-o,--output",
           [options](const std::string &text) {
               if (text.empty())
                   throw CLI::ValidationError("--output", "the name is empty");
               if (text == "-")
                   throw CLI::ValidationError("--output", "- is no file; the standard output is /dev/stdout");
               options->output = text;
           },
           "the file to write (default: the scene's name with .mcx, or .c with --source)")
        ->type_name("OUTPUT")
        ->group("Files");
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

static void AddFormOptions(CLI::App *app, HostOptions *options)
{
    for (const BitRow &row : bitRows)
        app->add_flag_callback(
               row.name, [options, &row] { options->*row.word |= row.bit; }, row.help)
            ->group(row.group);
    app->add_option_function<std::string>(
           "--clump-name",
           [options](const std::string &text) {
               if (!IsIdentifierPart(text))
                   throw CLI::ValidationError("--clump-name", InQuotes(text) + " can't be part of a C name");
               options->clumpName = text;
           },
           "with --source: the function is called McBuildNAME; letters, digits, _ (default: the scene's "
           "name)")
        ->type_name("NAME")
        ->group("Form");
}

static void AddNumberOptions(CLI::App *app, HostOptions *options)
{
    constexpr float most = std::numeric_limits<float>::max();
    app->add_option_function<std::string>(
           "--scale",
           [options](const std::string &text) {
               options->scale = ReadNumber("--scale", text, 0, false, most, "above 0");
           },
           "factor from the file's units to the model's; above 0 (default: 1)")
        ->type_name("X")
        ->group("Size");
    app->add_option_function<std::string>(
           "--size",
           [options](const std::string &text) {
               options->size = ReadNumber("--size", text, 0, false, most, "above 0");
               options->flags |= MC3DS_FIT_SIZE;
           },
           "longest side of the scene's bounds in the model's units; above 0 (default: as --scale makes it)")
        ->type_name("X")
        ->group("Size");
    app->add_option_function<std::string>(
           "--opacity",
           [options](const std::string &text) {
               options->opacity = ReadNumber("--opacity", text, 0, true, 1, "0 to 1");
               options->flags |= MC3DS_OPACITY;
           },
           "opacity of all transparent materials; 0 to 1 (default: that of each material)")
        ->type_name("X")
        ->group("Surfaces");
    app->add_option_function<std::string>(
           "--weights", [options](const std::string &text) { ReadWeights(text, options->weights); },
           "what red, green and blue count in a surface's coefficients; any numbers (default: "
           "0.299,0.587,0.114)")
        ->type_name("R,G,B")
        ->group("Surfaces");
}

static void AddOtherOptions(CLI::App *app, HostOptions *options)
{
    app->add_flag_callback(
           "--no-textures", [options] { options->surfaceFlags &= ~MC3DS_TEXTURES; },
           "name textures in comments only (default: use them)")
        ->group("Surfaces");
    app->add_option_function<std::string>(
           "--texture-extension",
           [options](const std::string &text) {
               options->textureExtension = ReadExtension(text);
               options->surfaceFlags |= MC3DS_TEXTURE_EXTENSION;
           },
           "give texture names this extension, \"\" for none (default: as in the file)")
        ->type_name("EXT")
        ->group("Surfaces");
    app->add_flag_callback(
           "-q,--quiet", [options] { options->verbosity = -1; },
           "report errors only (default: warnings and written files too)")
        ->group("Reports");
    app->add_flag_function(
           "-v,--verbose", [options](int64_t count) { options->verbosity = static_cast<int>(count); },
           "report each file, object and material; -vv: every detail (default: off)")
        ->group("Reports");
    app->set_help_flag("-h,--help", "print this and exit")->group("Reports");
    app->set_version_flag("--version", "", "print the version and exit")->group("Reports");
}

static void PrintHelp(const CLI::App &app)
{
    std::fputs("usage: 3ds2mcx [options] SCENE.3DS\n\n"
               "Converts a 3D Studio scene for the Meshcaster renderer.\n",
               stdout);
    for (const char *group : {"Files", "Form", "Size", "Surfaces", "Hints", "Reports"}) {
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
            std::printf("  %-26s %s\n", name.c_str(), option->get_description().c_str());
        }
    }
}

// The reason why the command line can't be followed; empty when it can.
static std::string FindConflict(const CLI::App &app, const HostOptions &options)
{
    for (const ConflictRow &row : conflictRows)
        if (app.count(row.a) != 0 && app.count(row.b) != 0)
            return std::string(row.a) + " and " + row.b + " contradict each other: " + row.why;
    if (app.count("--direct") != 0 && !options.animationFile.empty())
        return std::string("--direct and --animation=FILE contradict each other: ") + noFile;
    if (app.count("--clump-name") != 0 && app.count("--source") == 0)
        return "--clump-name needs --source: nothing else has the name in it";
    if (options.scenes.empty())
        return "no scene is given";
    if (options.scenes.size() > 1)
        return "more than one scene is given, the second is " + InQuotes(options.scenes[1]) +
               "; a FILE goes behind an equals sign, as in --header=FILE";
    return "";
}

int ParseOptions(int argc, const char *const *argv, HostOptions *options)
{
    CLI::App app("", "3ds2mcx");
    app.allow_windows_style_options(false);
    AddFileOptions(&app, options);
    AddFormOptions(&app, options);
    AddNumberOptions(&app, options);
    AddOtherOptions(&app, options);
    std::string why;
    try {
        app.parse(argc, argv);
        for (std::string *file : {&options->headerFile, &options->animationFile})
            if (*file == noName)
                file->clear();
        options->flags |= app.count("--header") != 0 ? MC3DS_HEADER : 0;
        options->flags |= app.count("--animation") != 0 ? MC3DS_ANIMATION : 0;
        why = FindConflict(app, *options);
    } catch (const CLI::CallForHelp &) {
        PrintHelp(app);
        return exitDone;
    } catch (const CLI::CallForVersion &) {
        std::printf("3ds2mcx %s\n", Mc3dsGetVersion());
        return exitDone;
    } catch (const CLI::ParseError &failure) {
        why = failure.what();
    }
    if (why.empty())
        return -1;
    std::fprintf(stderr, "3ds2mcx: %s\nTry \"3ds2mcx --help\".\n", why.c_str());
    return exitUsage;
}
