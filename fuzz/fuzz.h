// What the fuzz targets share: a file system without a disk, and the way through load and outputs.
#ifndef MC3DS_FUZZ_FUZZ_H
#define MC3DS_FUZZ_FUZZ_H

#include <cstddef>

// Loads a scene beside a .vue file (none where vue is null), writes it in one form, and frees it. Prints the
// failed check and aborts.
void LoadAndWrite(const void *scene, size_t sceneSize, const void *vue, size_t vueSize);

#endif
