// Other programs, for the tests that need a compiler or a tool.
#ifndef MC3DS_TESTS_COMMAND_H
#define MC3DS_TESTS_COMMAND_H

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

struct CommandResult {
    int status; // 0 when the command ended well
    std::string output;
};

// Runs a line of the system's shell and waits for its end. The output is stdout and stderr together.
inline CommandResult RunCommand(const std::string &command)
{
    CommandResult result = {-1, ""};
    FILE *pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr)
        return result;
    char block[4096];
    while (const size_t length = std::fread(block, 1, sizeof block, pipe))
        result.output.append(block, length);
    result.status = pclose(pipe);
    return result;
}

// The output of a command that has to end well.
inline std::string MustRun(const std::string &command)
{
    const CommandResult result = RunCommand(command);
    EXPECT_EQ(result.status, 0) << command << "\n" << result.output;
    return result.output;
}

inline std::string Quoted(const std::string &text)
{
    return '"' + text + '"';
}

#endif
