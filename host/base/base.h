// Used by all parts of the program: text, paths, and calls that depend on the operating system.
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

// The text made safe for a terminal: control characters (see IsControl) and bytes that aren't UTF-8 are
// escaped, as in \x1b. keepTabs: tabs stay.
std::string Visible(std::string_view text, bool keepTabs = false);
// character: the UTF-8 bytes of one character. True for U+0000 to U+001F and U+007F to U+009F.
bool IsControl(std::string_view character);
// Whether text, which isn't empty, starts with a valid UTF-8 character; length gets its bytes.
bool StartsWithUtf8(std::string_view text, size_t *length);
// The end of a text, with at most that many bytes and never from inside a UTF-8 character; "..." replaces the
// rest.
std::string Tail(const std::string &text, size_t most);
// Whether the text is one or more ASCII letters, digits and underscores, as in the name of a C function after
// its start.
bool IsIdentifierPart(std::string_view text);
bool IsIdentifierByte(char c);
std::string InQuotes(const std::string &text);
std::string InLowerCase(std::string text);
// As in "1 vertex" and "2 vertices". The default plural is what with an s.
std::string Counted(uint64_t count, const char *what, const char *plural = nullptr);
// A number with six significant digits; NumbersText: three numbers, separated by between.
std::string NumberText(double value);
template <class Number>
std::string NumbersText(const Number &values, const char *between = " ")
{
    return NumberText(values[0]) + between + NumberText(values[1]) + between + NumberText(values[2]);
}

// ---- paths.cpp

// text is UTF-8 on Windows and raw bytes elsewhere. On Windows the path constructor for char would read each
// byte as a character. string() returns the same text.
inline std::filesystem::path PathOf(const std::string &text)
{
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}
// The path of the .vue file that the library looks for; empty when the scene's path is too short for one.
std::string VuePath(const std::string &scenePath);
// A key that is equal for two paths of the same file. The file need not exist. folders caches the keys of
// folders between calls.
std::string PathKey(const std::filesystem::path &path, std::map<std::string, std::string> *folders);
// Finds files with these names in the folder of path. Returns the actual file name for each name found: the
// exact one if it exists, else one that differs in case.
std::map<std::string, std::string> FindBeside(const std::filesystem::path &path,
                                              const std::set<std::string> &names);

// ---- process.cpp

// Whether an interrupt is being handled. False in the thread that runs cleanUp.
bool IsInterrupted();
// Doesn't return after an interrupt: cleanUp removes files that the caller may be using.
void StopIfInterrupted();
// Between these two an interrupt waits, so that what belongs together is done as a whole. A call of
// HoldInterrupts without the other extends the time.
void HoldInterrupts();
void ReleaseInterrupts();
std::string RandomText();

// ---- system_posix.cpp or system_windows.cpp

// Lets the use of a closed standard stream fail, and turns a failing write into an error instead of a signal.
void PrepareProcess();
bool IsTerminal(FILE *stream);
// Turns off the conversion of line ends on standard output.
void MakeStandardOutputBinary();
// Whether the process that reads standard output has closed it.
bool OutputReaderIsGone();
// Renames a file. Returns file_exists instead of replacing a file.
std::error_code MoveToNewName(const std::filesystem::path &from, const std::filesystem::path &to);
// Creates a folder that only its owner can enter, named beginning plus random letters. On failure returns an
// empty path and the reason in why.
std::filesystem::path MakeOwnFolder(const std::filesystem::path &beginning, std::string *why);
// False if the folder isn't empty.
bool RemoveEmptyFolder(const std::filesystem::path &folder);

// ---- interrupts_posix.cpp or system_windows.cpp

// From this call on, an interrupt or termination request ends the worker processes, runs cleanUp in a
// separate thread and ends the program. Only the first call counts.
void CleanUpWhenInterrupted(void (*cleanUp)());

// ---- workers_posix.cpp or system_windows.cpp

// Whether RunInProcesses starts processes; else it does all work one by one in this one.
bool CanSplitProcesses();
// Calls work for each index below count, in up to atOnce worker processes. Calls finished in this process, in
// the order of the answers, with what work returned. A worker that dies is replaced; its index gets an empty
// answer and the reason in failure. A worker calls cleanUp at its end and when it is interrupted.
void RunInProcesses(
    size_t count, size_t atOnce, const std::function<std::string(size_t)> &work, void (*cleanUp)(),
    const std::function<void(size_t, const std::string &answer, const std::string &failure)> &finished);

#endif
