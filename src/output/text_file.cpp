#include <cerrno>
#include <cstring>

#include "../frame/outcome.h"

#include "output.h"

bool Mc3dsOpenText(Mc3dsWriter *writer, const char *path)
{
    Mc3dsMessageOf(Mc3dsReportKind::WritingFile, 0, 0, "Writing File <%s>", path);
    Mc3dsNoteOutputFile();
    errno = 0;
    writer->stream = std::fopen(path, "w");
    if (!writer->stream) {
        Mc3dsNoteFailedStep(Mc3dsFileStep::Open, errno);
        Mc3dsError(1, Mc3dsReportKind::CantOpen, "Unable to open file <%s>", path);
        return false;
    }
    // The writer has its own buffer; that of the stream would only add a copy.
    std::setvbuf(writer->stream, nullptr, _IONBF, 0);
    writer->textLength = 0;
    writer->streamFailed = false;
    return true;
}

// After a failed write nothing more is written: the host sees the failure by the missing end.
void Mc3dsFlushText(Mc3dsWriter *writer)
{
    // Whole blocks: every write but the last begins and ends at a page boundary of the file.
    const size_t length = writer->textLength < Mc3dsTextBlock ? writer->textLength : Mc3dsTextBlock;
    if (!writer->streamFailed && writer->stream) {
        errno = 0;
        writer->streamFailed = std::fwrite(writer->text, 1, length, writer->stream) < length;
        if (writer->streamFailed)
            Mc3dsNoteFailedStep(Mc3dsFileStep::Write, errno);
    }
    writer->textLength -= length;
    std::memmove(writer->text, writer->text + length, writer->textLength);
}

void Mc3dsCloseText(Mc3dsWriter *writer)
{
    while (writer->textLength > 0)
        Mc3dsFlushText(writer);
    errno = 0;
    if (std::fflush(writer->stream) != 0)
        Mc3dsNoteFailedStep(Mc3dsFileStep::Flush, errno);
    if (std::fclose(writer->stream) != 0)
        Mc3dsNoteFailedStep(Mc3dsFileStep::Close, errno);
    writer->stream = nullptr;
}

void Mc3dsWriteText(Mc3dsWriter *writer, const char *text, size_t length)
{
    while (length > 0) {
        const size_t piece = length < Mc3dsTextSlack ? length : Mc3dsTextSlack;
        std::memcpy(Mc3dsReserveText(writer), text, piece);
        writer->textLength += piece;
        text += piece;
        length -= piece;
    }
}

// In pieces: in a deep hierarchy the blanks may exceed the slack.
void Mc3dsWriteBlanks(Mc3dsWriter *writer, size_t count)
{
    while (count > 0) {
        const size_t piece = count < Mc3dsTextSlack ? count : Mc3dsTextSlack;
        std::memset(Mc3dsReserveText(writer), ' ', piece);
        writer->textLength += piece;
        count -= piece;
    }
}
