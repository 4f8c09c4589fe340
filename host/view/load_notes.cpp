// Collects the library's reports on a scene while it loads, for --info.
#include <cerrno>

#include "view.h"

static SceneNotes *sceneNotes;
static Mc3dsCallback errorsBefore, messagesBefore;

// middle gets the text between begin and end. False if the text doesn't start with begin. A text truncated by
// the library lacks end.
static bool Between(std::string_view text, std::string_view begin, std::string_view end, std::string *middle)
{
    if (!text.starts_with(begin))
        return false;
    text.remove_prefix(begin.size());
    if (text.ends_with(end))
        text.remove_suffix(end.size());
    *middle = text;
    return true;
}

static void NoteMessage(std::string_view text)
{
    std::string name;
    if (Between(text, "Object <", ">", &name))
        sceneNotes->newestObject = name;
    else if (text.starts_with("Hidden Object"))
        sceneNotes->hidden.push_back(sceneNotes->newestObject);
    else if (Between(text, "\nLight <", "> ... skipping", &name))
        sceneNotes->lights.push_back(name);
    else if (Between(text, "\nCamera <", "> ... skipping", &name))
        sceneNotes->cameras.push_back(name);
    else if (Between(text, "Ignoring Chunk Tag <", ">", &name))
        ++sceneNotes->chunks[name];
    else
        for (const std::string_view end : {" ... skipping", " not currently supported by Meshcaster"})
            if (text.ends_with(end) && Between(text, text.starts_with('\t') ? "\t" : "", end, &name))
                ++sceneNotes->unsupported[name];
}

// The previous callbacks are called first: they must notice a lack of memory even if the note can't be
// stored. Both keep errno for the library's caller.
static void OnNotedMessage(int32_t level, const char *text)
{
    const int before = errno;
    if (messagesBefore)
        messagesBefore(level, text);
    NoteMessage(text);
    errno = before;
}

static void OnNotedError(int32_t level, const char *text)
{
    const int before = errno;
    if (errorsBefore)
        errorsBefore(level, text);
    ++sceneNotes->reports[text];
    errno = before;
}

void StartNotes(SceneNotes *notes)
{
    sceneNotes = notes;
    errorsBefore = Mc3dsSetErrorCallback(OnNotedError);
    messagesBefore = Mc3dsSetMessageCallback(OnNotedMessage);
}

void StopNotes()
{
    Mc3dsSetErrorCallback(errorsBefore);
    Mc3dsSetMessageCallback(messagesBefore);
    sceneNotes = nullptr;
}
