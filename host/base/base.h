// What all parts of the program stand on: texts for people, paths, and what differs from system to system.
#ifndef MC3DS_HOST_BASE_H
#define MC3DS_HOST_BASE_H

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

// Exit statuses of the program.
constexpr int exitDone = 0;
constexpr int exitFailed = 1;
constexpr int exitUsage = 2;

// ---- text.cpp

// The text as a terminal may get it: UTF-8 stays, control characters (those behind U+007F included) and bytes
// that are no UTF-8 are spelt out, as in \x1b.
std::string Visible(std::string_view text, bool keepTabs = false);
// Whether a character, of the bytes that it takes in UTF-8, is a control of any kind: U+0000 to U+001F and
// U+007F to U+009F.
bool IsControl(std::string_view character);
// Whether the next character of the text is UTF-8, and its bytes; text isn't empty.
bool StartsWithUtf8(std::string_view text, size_t *length);
std::string InQuotes(const std::string &text);
std::string InLowerCase(std::string text);
// As in "1 vertex" and "2 vertices"; without plural, an s is added.
std::string Counted(uint64_t count, const char *what, const char *plural = nullptr);
// Six digits of a number, and of three with something between them.
std::string NumberText(double value);
template <class Number>
std::string NumbersText(const Number &values, const char *between = " ")
{
    return NumberText(values[0]) + between + NumberText(values[1]) + between + NumberText(values[2]);
}

// ---- paths.cpp

// The path that a text names, which is UTF-8 on Windows and bytes as they are elsewhere. The constructor from
// char would take each byte for a character there; string() gives the same text back.
inline std::filesystem::path PathOf(const std::string &text)
{
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}
// The path of the .vue file that the library looks for; empty when the scene's path is too short for one.
std::string VuePath(const std::string &scenePath);
// A text that is the same for two paths if they name one file. The file need not exist. folders keeps the
// keys of folders from one call to the next.
std::string PathKey(const std::filesystem::path &path, std::map<std::string, std::string> *folders);
// What the files beside path are called that have one of the names, by the name: just so, or else with
// letters in another case.
std::map<std::string, std::string> FindBeside(const std::filesystem::path &path,
                                              const std::set<std::string> &names);

// ---- process.cpp

// Makes a closed standard stream fail when it is used, and a failing write an error instead of a signal.
void PrepareProcess();
// From here on an interrupt or a termination request runs cleanUp, in a thread of its own, and then ends the
// program, with the processes that it started. Only the first call counts.
void CleanUpWhenInterrupted(void (*cleanUp)());
// Whether that has begun. False in the thread of cleanUp itself.
bool IsInterrupted();
// Doesn't return then: files vanish under whoever goes on working.
void StopIfInterrupted();
bool IsTerminal(FILE *stream);
// The standard output takes bytes as they are from here on.
void MakeStandardOutputBinary();
// Whether whoever read the standard output has closed it.
bool OutputReaderIsGone();
// Renames a file, but replaces nothing: the error is file_exists then.
std::error_code MoveToNewName(const std::filesystem::path &from, const std::filesystem::path &to);
std::string RandomText();
// Makes a folder that its owner alone can enter, whose name is that beginning and some random letters.
// Returns its path, or an empty one with the reason.
std::filesystem::path MakeOwnFolder(const std::filesystem::path &beginning, std::string *why);
// False when there is something in it.
bool RemoveEmptyFolder(const std::filesystem::path &folder);
// Whether RunInProcesses makes processes; it works one by one otherwise.
bool CanSplitProcesses();
// Calls work for the indices below count in atOnce processes, which live until all is done, and finished with
// what it returned, in this process and in the order in which answers come. A process that dies is replaced;
// for what it worked at, failure says how it died and the answer is empty. CleanUpWhenInterrupted has to come
// first; each process cleans up after itself.
void RunInProcesses(
    size_t count, size_t atOnce, const std::function<std::string(size_t)> &work,
    const std::function<void(size_t, const std::string &answer, const std::string &failure)> &finished);

#endif
