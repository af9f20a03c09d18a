// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace sorakaze::station {

/// Red, green and blue, each 0 to 1.
struct Color {
    double red = 0, green = 0, blue = 0;
};

/// A square picture, three bytes a pixel, row by row.
struct Picture {
    int side = 0;
    std::vector<std::uint8_t> pixels;
};

enum class PictureFormat { Png, Jpeg };

/// A picture as a file has it, ready to be embedded.
struct EncodedPicture {
    std::string bytes;
    std::string mimeType;
};

/// Throws std::runtime_error when the encoder is missing.
EncodedPicture Encode(const Picture& picture, PictureFormat format);

/// Paints a picture by asking `color` for places from 0 to 1 in both directions, several times a pixel.
template <typename Painter>
Picture Paint(int side, const Painter& color) {
    Picture picture{side, {}};
    picture.pixels.reserve(static_cast<std::size_t>(side) * static_cast<std::size_t>(side) * 3);
    constexpr int kSteps = 3;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            Color sum;
            for (int i = 0; i < kSteps * kSteps; ++i) {
                const int right = i % kSteps, down = i / kSteps;
                const double x = (column + (right + 0.5) / kSteps) / side;
                const double y = (row + (down + 0.5) / kSteps) / side;
                const Color one = color(x, y);
                sum = {sum.red + one.red, sum.green + one.green, sum.blue + one.blue};
            }
            for (const double part : {sum.red, sum.green, sum.blue}) {
                picture.pixels.push_back(
                    static_cast<std::uint8_t>(std::lround(part / (kSteps * kSteps) * 255)));
            }
        }
    }
    return picture;
}

}  // namespace sorakaze::station
