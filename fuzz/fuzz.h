// What the fuzz targets share: a file system without a disk, and the way through load and outputs.
#ifndef MC3DS_FUZZ_FUZZ_H
#define MC3DS_FUZZ_FUZZ_H

#include <cstddef>

// Loads a scene beside a .vue file (none where vue is null), writes it in every form, and frees it. Ends the
// process with a word when something isn't as it must be.
void LoadAndWrite(const void *scene, size_t sceneSize, const void *vue, size_t vueSize);

#endif
