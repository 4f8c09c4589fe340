// Pictures of the model. Only if the Meshcaster library has mclmodel.h and there is libpng.
#ifndef MC3DS_HOST_PICTURE_H
#define MC3DS_HOST_PICTURE_H

#include "../words/words.h"

// Limits of the width and height of a frame, in pixels.
constexpr int previewSideLeast = 16, previewSideMost = 4096;

// The size of a picture that is only drawn for the page.
constexpr int pagePictureWidth = 320, pagePictureHeight = 240;

// What to draw. The values here are the defaults.
struct PreviewOptions {
    int width = 0, height = 0; // pixels of one frame; 0: 800 x 600, in a strip 320 x 240
    int64_t frame = -1;        // of the animation, from 0; -1: objects are placed as in the output
    bool strip = false;        // several frames side by side, from the whole animation; overrides frame
};

// Draws the model for the form and size options in asked, which stays unchanged. png gets the bytes of a PNG
// file; nothing if the model has no faces. Returns false after a report on failure. Without animation a strip
// is one picture, with a warning.
bool DrawPreview(const Mc3dsFile *scene, const Mc3dsOptions &asked, const PreviewOptions &preview,
                 Reporter *reporter, std::string *png);

#endif
