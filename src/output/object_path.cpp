#include <cstring>

#include "output.h"

void Mc3dsMakeObjectPath(char path[256], const char *outputFile, uint32_t index)
{
    const size_t length = std::strlen(outputFile);
    size_t kept = length < 4 ? length : length - 4;
    if (kept > 6)
        kept = 6;
    std::memcpy(path, outputFile, kept);
    Mc3dsFormatText(path + kept, 256 - kept, "%d.mcx", static_cast<int32_t>(index)); // unnoticed
}
