// Reads PNG pictures.
#ifndef MC3DS_TESTS_PICTURE_H
#define MC3DS_TESTS_PICTURE_H

#include <vector>

#include <gtest/gtest.h>
#include <png.h>

struct Picture {
    size_t width, height;
    std::vector<unsigned char> rgb;
};

inline Picture ReadPicture(const char *name)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_file(&image, name), 0) << image.message;
    image.format = PNG_FORMAT_RGB;
    Picture picture = {image.width, image.height, std::vector<unsigned char>(PNG_IMAGE_SIZE(image))};
    EXPECT_NE(png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr), 0) << image.message;
    return picture;
}

#endif
