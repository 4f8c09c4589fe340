// What the library says while it reads a scene, kept for --info.
#include <cerrno>

#include "view.h"

static SceneNotes *sceneNotes;
static Mc3dsCallback errorsBefore, messagesBefore;

// The text between the ends; false when it doesn't begin like that. A text that the library cut has no end.
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

// The callbacks from before go first: what they have to tell about lack of memory mustn't get lost when there
// is none to note it in. Both leave errno to whoever called the library.
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
