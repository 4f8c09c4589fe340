// A picture of the model that a direct build makes: --preview.
#ifndef MC3DS_HOST_PREVIEW_H
#define MC3DS_HOST_PREVIEW_H

#include <cstdint>
#include <filesystem>
#include <string>

#include "frame/frame.h"

// Pixels along one side of a picture of one frame.
constexpr int previewSideLeast = 16, previewSideMost = 4096;

// What to draw. The values here are the defaults.
struct PreviewOptions {
    int width = 0, height = 0; // pixels of one frame; 0: 800 x 600, in a strip 320 x 240
    int64_t frame = -1;        // of the animation, from 0; -1: objects stand as asked.flags says
    bool strip = false; // several frames side by side, spread over the whole animation; goes before frame
};

// Read the values of --preview-size, "WxH", and --preview-frame, a number or "strip". Return why they can't;
// empty when they can.
std::string ReadPreviewSize(const std::string &text, PreviewOptions *preview);
std::string ReadPreviewFrame(const std::string &text, PreviewOptions *preview);

// Why this program draws no pictures at all: it was built without libpng, or with a Meshcaster library that
// doesn't show its models. Empty when it does.
std::string WhyNoPreview();

// Draws the model that asked leads to (its form and sizes count, its file names don't; it stays as it is)
// into a PNG file at path, which is overwritten in place: to have it appear whole or not at all, let it grow
// in a private folder and Deliver it. A scene without animation gets one picture in place of a strip, with a
// warning. False, with the report on name, when there is no picture; part of a file may be left then.
bool WritePreview(const Mc3dsFile *scene, const Mc3dsOptions &asked, const PreviewOptions &preview,
                  const std::string &name, const std::filesystem::path &path);

#endif
