#include "vue.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "text_stream.h"
#include "vue_number.h"

// Where a number is expected, a longer run of characters is read as several words.
constexpr size_t longestWord = 250;

// Limit of transforms in all frames together; the .vue file's size in bytes is added to it. It bounds the
// memory that a damaged frame count can request.
constexpr uint64_t mostFrames = 4194304;

static bool Mc3dsReadVueToken(Mc3dsFile *file, char *buffer, size_t size)
{
    size_t length = 0;
    while (Mc3dsIsSpace(Mc3dsPeekCharacter(file)))
        Mc3dsTakeCharacter(file);
    const bool quoted = Mc3dsPeekCharacter(file) == '"';
    if (quoted)
        Mc3dsTakeCharacter(file);
    for (;;) {
        int character = Mc3dsPeekCharacter(file);
        if (character == Mc3dsEndOfText || (!quoted && Mc3dsIsSpace(character)))
            break; // the white space after a bare word is not consumed
        Mc3dsTakeCharacter(file);
        if (quoted && character == '"')
            break;
        if (quoted && character == '\\') {
            character = Mc3dsTakeCharacter(file);
            if (character == Mc3dsEndOfText)
                break;
        }
        if (length < size - 1)
            buffer[length++] = static_cast<char>(character);
    }
    buffer[length] = '\0';
    return length > 0;
}

// Reads a word like scanf's "%250s". False at the end of the file.
static bool ReadPlainWord(Mc3dsFile *file, char word[longestWord + 1])
{
    Mc3dsLoad *load = file->load;
    size_t length = 0;
    while (Mc3dsIsSpace(Mc3dsPeekCharacter(file)))
        ++load->nextText;
    // A word that reaches the end of the buffer may continue after the refill.
    while (length < longestWord && Mc3dsPeekCharacter(file) != Mc3dsEndOfText) {
        const auto available = static_cast<size_t>(load->lastText - load->nextText);
        const size_t room = longestWord - length;
        const uint8_t *at = load->nextText, *limit = at + (available < room ? available : room);
        while (at < limit && !Mc3dsIsSpace(*at))
            ++at;
        const auto taken = static_cast<size_t>(at - load->nextText);
        std::memcpy(word + length, load->nextText, taken);
        length += taken;
        const bool ends = at < load->lastText;
        load->nextText = at;
        if (ends)
            break;
    }
    word[length] = '\0';
    return length > 0;
}

// Skips to after the next line end, at most 255 bytes: one line buffer.
static void DropComment(Mc3dsFile *file)
{
    for (int i = 0; i < 255; ++i) {
        const int character = Mc3dsTakeCharacter(file);
        if (character == '\n' || character == Mc3dsEndOfText)
            return;
    }
}

// The next word outside comments. False at the end of the file.
static bool ReadWordBehindComments(Mc3dsFile *file, char word[longestWord + 1])
{
    while (ReadPlainWord(file, word)) {
        if (word[0] != '#')
            return true;
        DropComment(file);
    }
    return false;
}

// Fast path without a copy: a plain number that ends within the buffer, as nearly all do.
static bool ReadBufferedNumber(Mc3dsFile *file, double *number)
{
    Mc3dsLoad *load = file->load;
    while (Mc3dsIsSpace(Mc3dsPeekCharacter(file)))
        ++load->nextText;
    const char *end = Mc3dsParsePlainReal(reinterpret_cast<const char *>(load->nextText), number);
    if (!end || end == reinterpret_cast<const char *>(load->lastText) || !Mc3dsIsSpace(*end))
        return false;
    load->nextText = reinterpret_cast<const uint8_t *>(end);
    return true;
}

static bool Mc3dsReadVueNumber(Mc3dsFile *file, double *number)
{
    if (ReadBufferedNumber(file, number))
        return true;
    char word[longestWord + 1];
    while (ReadWordBehindComments(file, word))
        if (Mc3dsParseReal(word, number))
            return true;
    return false;
}

// False when the scan is over.
static bool ReadFrameRecord(Mc3dsFile *file, int32_t *frame)
{
    char word[longestWord + 1];
    return ReadWordBehindComments(file, word) && Mc3dsParseInteger(word, frame);
}

static bool ReadTransformRecord(Mc3dsFile *file, int32_t frame)
{
    char name[32];
    Mc3dsTransform matrix;
    if (!Mc3dsReadVueToken(file, name, sizeof name))
        return false;
    for (int i = 0; i < 12; ++i)
        if (!Mc3dsReadVueNumber(file, &matrix.m[i / 3][i % 3]))
            return false;
    Mc3dsObject *object = Mc3dsFindObject(file, name);
    if (!object) {
        Mc3dsError(2, Mc3dsReportKind::VueObjectNotFound, "unable to find object %s", name);
    } else if (frame < 0 || static_cast<uint32_t>(frame) > file->frameCount) {
        Mc3dsError(2, Mc3dsReportKind::VueFrameOutside,
                   "Transform of object %s for frame %d, which the scene doesn't have, dropped", name, frame);
    } else {
        object->hasFrames = 1;
        object->frames[frame] = matrix;
    }
    return true;
}

static bool DropLine(Mc3dsFile *file)
{
    for (;;) {
        const int character = Mc3dsTakeCharacter(file);
        if (character == '\n')
            return true;
        if (character == Mc3dsEndOfText)
            return false;
    }
}

static void Scan(Mc3dsFile *file)
{
    int32_t frame = -1;
    bool more = true;
    while (more) {
        char keyword[128];
        Mc3dsReadVueToken(file, keyword, sizeof keyword);
        Mc3dsLowerCase(keyword);
        if (std::strcmp(keyword, "frame") == 0)
            more = ReadFrameRecord(file, &frame);
        else if (std::strcmp(keyword, "transform") == 0)
            more = ReadTransformRecord(file, frame);
        else
            more = DropLine(file);
    }
}

// False, with a report and nothing allocated, if out of memory or above the limit.
static bool AllocateFrames(Mc3dsFile *file, uint64_t vueSize)
{
    const uint64_t count = uint64_t{file->frameCount} + 1;
    const bool isAllowed = file->objectCount * count <= mostFrames + vueSize;
    bool fits = isAllowed;
    for (uint32_t i = 0; i < file->objectCount && fits; ++i) {
        Mc3dsObject &object = file->objects[i];
        object.frames = static_cast<Mc3dsTransform *>(Mc3dsResize(nullptr, count, sizeof(Mc3dsTransform)));
        fits = object.frames != nullptr;
        for (uint64_t frame = 0; frame < count && fits; ++frame)
            Mc3dsTransformIdentity(&object.frames[frame]);
    }
    if (fits)
        return true;
    Mc3dsError(0, isAllowed ? Mc3dsReportKind::OutOfMemory : Mc3dsReportKind::TooManyFrames,
               "Out of memory allocating frames");
    for (uint32_t i = 0; i < file->objectCount; ++i) {
        std::free(file->objects[i].frames);
        file->objects[i].frames = nullptr;
    }
    return false;
}

uint32_t Mc3dsReadVue(Mc3dsFile *file)
{
    char name[sizeof file->fileName];
    std::memcpy(name, file->fileName, sizeof name);
    const size_t length = std::strlen(name);
    if (length < 3 || file->load->fileNameIsCut)
        return 0;
    std::memcpy(name + length - 3, "vue", 3);
    file->stream = Mc3dsOpenToRead(name, "r");
    if (!file->stream) {
        if (errno != ENOENT && errno != ENOTDIR)
            file->vueError = errno;
        return 0;
    }
    Mc3dsMessage(0, "\nReading File <%s>", name);
    // Files that can't seek count as empty. So do folders, for which some systems give 2^63 - 1.
    errno = 0;
    const int64_t measured = Mc3dsStartStream(file->stream);
    const uint64_t size = measured > 0 && measured < INT64_MAX ? static_cast<uint64_t>(measured) : 0;
    if (size == 0 && errno != ESPIPE)
        file->vueError = errno;
    const bool hasFrames = AllocateFrames(file, size);
    if (hasFrames) {
        Mc3dsOpenTextStream(file, size);
        Scan(file);
    }
    Mc3dsCloseStream(file);
    return hasFrames ? 1 : 0;
}

void Mc3dsApplyFramePivot(Mc3dsObject *object, uint32_t frame)
{
    Mc3dsTransform shift, moved;
    Mc3dsTransformTranslation(object->pivot, &shift);
    Mc3dsTransformMultiply(&shift, &object->frames[frame], &moved);
    object->frames[frame] = moved;
}
