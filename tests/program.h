// Runs the program in a shell: its inputs, its start and its result.
#ifndef MC3DS_TESTS_PROGRAM_H
#define MC3DS_TESTS_PROGRAM_H

#include <algorithm>
#include <sstream>

#include "command.h"
#include "harness.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

inline const std::filesystem::path program = std::filesystem::absolute(MC3DS_PROGRAM);

struct Outcome {
    int status;
    std::string said;  // stdout, then stderr
    std::string files; // new files, sorted, separated by blanks
};

inline std::string ListFiles()
{
    std::vector<std::string> names;
    for (const std::filesystem::directory_entry &entry : std::filesystem::recursive_directory_iterator("."))
        names.push_back(entry.path().lexically_relative(".").generic_string());
    std::sort(names.begin(), names.end());
    std::string list;
    for (const std::string &name : names)
        list += (list.empty() ? "" : " ") + name;
    return list;
}

inline chunks::Bytes Triangle(const chunks::Bytes &name, float x)
{
    using namespace chunks;
    return NamedObject(name, {Mesh({Points({x, 0, 0, x + 4, 0, 0, x, 2, 0}), TexVerts({0, 0, 1, 0, 0, 1}),
                                    Faces({0, 1, 2}, {MaterialGroup("GLASS", {0})})})});
}

inline chunks::Bytes Glass(uint32_t shading = 2)
{
    using namespace chunks;
    const Bytes grey = Colour24(51, 51, 51);
    return Material("GLASS", {Finish(grey, grey, grey, shading, 25, 50), Map(0xA200, "PANE.GIF")});
}

// Empties the current folder and adds two.3ds, where BOX is the parent of LID, its animation, and faulty
// inputs.
inline void MakeInputs()
{
    using namespace chunks;
    for (const std::filesystem::directory_entry &entry : std::filesystem::directory_iterator("."))
        std::filesystem::remove_all(entry.path());
    const Bytes glass = Glass();
    WriteFile("two.3ds", Scene({glass, Triangle("BOX", 0), Triangle("LID", 6)},
                               {Kfhdr(2), ObjectNode("BOX", noParent), ObjectNode("LID", 0)}));
    WriteFile("two.vue",
              "frame 0 transform BOX 1 0 0 0 1 0 0 0 1 7 0 0 transform LID 1 0 0 0 1 0 0 0 1 0 0 0");
    WriteFile("none.3ds", Scene({}));
    WriteFile("text.3ds", "no scene");
    WriteFile("lost.3ds", Scene({glass, Triangle("BOX", 0), Triangle("LID", 6)},
                                {Kfhdr(2), ObjectNode("BOX", noParent), ObjectNode("LID", 7)}));
    std::filesystem::create_directory("dir");
}

// before: shell text in front of the program's name.
inline Outcome Start(const std::string &arguments, [[maybe_unused]] const std::string &before = "")
{
    const std::string inputs = ' ' + ListFiles() + ' ';
#if defined(_WIN32)
    const CommandResult result = RunCommand(Quoted(program.string()) + ' ' + arguments);
    Outcome run = {result.status, result.output, ""};
#else
    const std::string line = before + MC3DS_EMULATOR " " + Quoted(program.string()) + ' ' + arguments;
    const CommandResult result = RunCommand("{ " + line + "\n}");
    Outcome run = {WIFEXITED(result.status) ? WEXITSTATUS(result.status) : -1, result.output, ""};
#endif
    std::istringstream names(ListFiles());
    for (std::string name; names >> name;)
        if (inputs.find(' ' + name + ' ') == std::string::npos)
            run.files += (run.files.empty() ? "" : " ") + name;
    return run;
}

#endif
