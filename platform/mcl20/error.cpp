#include "model.h"

#include <cstdio>

static size_t errorCount;
static char firstError[160];
static bool memoryRanOut;

void McmError(const char *call, const char *text)
{
    if (errorCount == 0)
        std::snprintf(firstError, sizeof firstError, "%s: %s", call, text);
    if (errorCount < SIZE_MAX)
        ++errorCount;
}

void McmNoMemory(const char *call)
{
    memoryRanOut = true;
    McmError(call, "out of memory");
}

int McMemoryRanOut(void)
{
    return memoryRanOut;
}

size_t McErrorCount(void)
{
    return errorCount;
}

const char *McFirstError(void)
{
    return firstError;
}

void McClearErrors(void)
{
    errorCount = 0;
    firstError[0] = '\0';
    memoryRanOut = false;
}
