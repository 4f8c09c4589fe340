#include <cstring>

#include "output.h"

bool Mc3dsOpenText(Mc3dsWriter *writer, const char *path)
{
    Mc3dsMessage(0, "Writing File <%s>", path);
    writer->stream = std::fopen(path, "w");
    if (!writer->stream) {
        Mc3dsError(1, "Unable to open file <%s>", path);
        return false;
    }
    // The writer's own buffer comes before the stream's, which would only copy once more.
    std::setvbuf(writer->stream, nullptr, _IONBF, 0);
    writer->textLength = 0;
    return true;
}

// A write that fails goes unnoticed here: the host looks at the file.
void Mc3dsFlushText(Mc3dsWriter *writer)
{
    std::fwrite(writer->text, 1, writer->textLength, writer->stream);
    writer->textLength = 0;
}

void Mc3dsCloseText(Mc3dsWriter *writer)
{
    Mc3dsFlushText(writer);
    std::fflush(writer->stream);
    std::fclose(writer->stream);
    writer->stream = nullptr;
}

void Mc3dsWriteText(Mc3dsWriter *writer, const char *text, size_t length)
{
    while (length > 0) {
        if (writer->textLength == sizeof writer->text)
            Mc3dsFlushText(writer);
        const size_t room = sizeof writer->text - writer->textLength;
        const size_t piece = length < room ? length : room;
        std::memcpy(writer->text + writer->textLength, text, piece);
        writer->textLength += piece;
        text += piece;
        length -= piece;
    }
}
