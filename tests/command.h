// Runs other programs, for tests that need a compiler or a tool.
#ifndef MC3DS_TESTS_COMMAND_H
#define MC3DS_TESTS_COMMAND_H

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

inline std::string Quoted(const std::string &text)
{
    return '"' + text + '"';
}

struct CommandResult {
    int status; // 0 on success
    std::string output;
};

// A line for the system's shell. The Windows shell removes the first and the last quotation mark.
inline std::string ShellLine(const std::string &command)
{
#if defined(_WIN32)
    return Quoted(command);
#else
    return command;
#endif
}

// Runs a shell command and waits for its end. The output is stdout and stderr together.
inline CommandResult RunCommand(const std::string &command)
{
    CommandResult result = {-1, ""};
    FILE *pipe = popen(ShellLine(command + " 2>&1").c_str(), "r");
    if (pipe == nullptr)
        return result;
    char block[4096];
    while (const size_t length = std::fread(block, 1, sizeof block, pipe))
        result.output.append(block, length);
    result.status = pclose(pipe);
    return result;
}

// Returns the output. The test fails if the command does.
inline std::string MustRun(const std::string &command)
{
    const CommandResult result = RunCommand(command);
    EXPECT_EQ(result.status, 0) << command << "\n" << result.output;
    return result.output;
}

#endif
