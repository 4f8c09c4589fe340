// Shared by the fuzz targets: files in memory, and one run of load and output.
#ifndef MC3DS_FUZZ_FUZZ_H
#define MC3DS_FUZZ_FUZZ_H

#include <cstddef>

// Loads a scene with a .vue file (none if vue is null), writes it in one form and frees it. A failed check is
// printed and aborts the process.
void LoadAndWrite(const void *scene, size_t sceneSize, const void *vue, size_t vueSize);

#endif
