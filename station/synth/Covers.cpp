// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Covers.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace sorakaze::station {
namespace {

constexpr Color Rgb(unsigned value) {
    return {((value >> 16) & 255) / 255.0, ((value >> 8) & 255) / 255.0, (value & 255) / 255.0};
}

Color Mix(Color a, Color b, double t) {
    t = std::clamp(t, 0.0, 1.0);
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t};
}

bool InDisc(double x, double y, double centreX, double centreY, double radius) {
    return std::hypot(x - centreX, y - centreY) < radius;
}

bool InOval(double x, double y, double centreX, double centreY, double width, double height) {
    return std::hypot((x - centreX) / width, (y - centreY) / height) < 1;
}

bool InBox(double x, double y, double left, double top, double right, double bottom) {
    return x > left && x < right && y > top && y < bottom;
}

}  // namespace

/// Three paper lanterns on a string over a warm evening.
Color LanternCover(double x, double y) {
    Color color = Mix(Rgb(0xF6C667), Rgb(0xD1495B), y);
    if (std::abs(y - (0.16 + 0.10 * std::sin(x * 3.1))) < 0.006) color = Rgb(0x3B1F2B);
    constexpr std::array<std::array<double, 3>, 3> kLanterns = {
        {{0.22, 0.40, 0.13}, {0.53, 0.50, 0.17}, {0.83, 0.36, 0.11}}};
    for (const auto& [centreX, centreY, size] : kLanterns) {
        if (std::abs(x - centreX) < 0.005 && y < centreY && y > 0.16 + 0.10 * std::sin(x * 3.1))
            color = Rgb(0x3B1F2B);
        if (!InOval(x, y, centreX, centreY, size, size * 1.15)) continue;
        const double ribs = std::abs(std::sin((y - centreY) / size * 9));
        color = Mix(Rgb(0xFFF3C4), Rgb(0xF28F3B), std::hypot(x - centreX, y - centreY) / size / 1.2);
        if (ribs < 0.18) color = Mix(color, Rgb(0xA63A50), 0.5);
    }
    return color;
}

/// Layers of hills of cloud under a pale sun.
Color CloudCover(double x, double y) {
    Color color = Mix(Rgb(0x2E4057), Rgb(0x8FB8DE), y * 1.4);
    if (InDisc(x, y, 0.66, 0.27, 0.105)) color = Rgb(0xFDF6E3);
    for (int layer = 0; layer < 5; ++layer) {
        const double k = layer;
        const double edge = 0.42 + 0.11 * k + 0.045 * std::sin(x * (5 + 1.7 * k) + 2.1 * k) +
                            0.02 * std::sin(x * (13 - k) + k);
        if (y > edge) color = Mix(Rgb(0x7F9EBB), Rgb(0xF4F7FA), 0.2 * k + (y - edge) * 0.6);
    }
    return color;
}

/// An orchard tree of large pixels.
Color PixelCover(double x, double y) {
    constexpr std::array<const char*, 16> kRows = {
        "................", ".....######.....", "...##########...", "..####o#######..",
        "..########o###..", ".###o##########.", ".#########o####.", ".####o#########.",
        "..########o###..", "...###o######...", ".....######.....", ".......tt.......",
        ".......tt.......", ".......tt.......", "gggggggttggggggg", "gGgGgGgGgGgGgGgG"};
    const auto row = std::min<std::size_t>(15, static_cast<std::size_t>(y * 16));
    const auto column = std::min<std::size_t>(15, static_cast<std::size_t>(x * 16));
    switch (kRows[row][column]) {
        case '#':
            return (row + column) % 2 ? Rgb(0x3FA34D) : Rgb(0x4CB963);
        case 'o':
            return Rgb(0xFF5D5D);
        case 't':
            return Rgb(0x7A4B2A);
        case 'g':
            return Rgb(0x9BC53D);
        case 'G':
            return Rgb(0x5B8E2D);
        default:
            return row % 2 ? Rgb(0x232946) : Rgb(0x262D4F);
    }
}

/// A cat asleep on a cushion.
Color CatCover(double x, double y) {
    Color color = Mix(Rgb(0xE8DDF0), Rgb(0xC9B6D9), y);
    if (std::fmod(x * 12 + y * 2, 2) < 1) color = Mix(color, Rgb(0xFFFFFF), 0.18);
    if (InOval(x, y, 0.5, 0.76, 0.40, 0.12)) color = Rgb(0x6D597A);
    const Color fur = Rgb(0xE5A15A), dark = Rgb(0xC47F3A);
    if (InOval(x, y, 0.53, 0.62, 0.28, 0.17)) color = std::sin(x * 60 + y * 14) > 0.55 ? dark : fur;
    const double ear = y - 0.43;
    if (ear > 0 && ear < 0.10 && (std::abs(x - 0.245) < ear * 0.45 || std::abs(x - 0.385) < ear * 0.45))
        color = dark;
    if (InDisc(x, y, 0.315, 0.57, 0.105)) color = fur;
    for (const double eye : {0.275, 0.355}) {
        if (std::abs(std::hypot(x - eye, y - 0.555) - 0.022) < 0.004 && y > 0.558) color = Rgb(0x3D2B1F);
    }
    if (InDisc(x, y, 0.315, 0.60, 0.010)) color = Rgb(0x8A4A3B);
    if (std::abs(std::hypot((x - 0.60) / 1.5, y - 0.70) - 0.10) < 0.022 && y > 0.70) color = dark;
    return color;
}

/// A staircase in the light of one lamp.
Color StairsCover(double x, double y) {
    const double light = std::exp(-5 * std::hypot(x - 0.72, y - 0.20));
    Color color = Mix(Rgb(0x14213D), Rgb(0x3A5A8C), light * 1.4);
    const double step = std::floor(x * 8);
    const double top = 0.90 - step * 0.085;
    if (y > top) color = Mix(Rgb(0x0B132B), Rgb(0x41578A), light + 0.08 * std::fmod(step, 2));
    if (std::abs(y - top) < 0.006 || (std::abs(x - step / 8) < 0.004 && y > top && y < top + 0.085))
        color = Rgb(0xFCA311);
    if (std::abs(x - 0.72) < 0.004 && y < 0.16) color = Rgb(0xE5E5E5);
    if (InDisc(x, y, 0.72, 0.20, 0.045)) color = Rgb(0xFFE8A3);
    return color;
}

/// Five stones, one on the other, before a rising sun.
Color StonesCover(double x, double y) {
    Color color = Mix(Rgb(0xF7EDE2), Rgb(0xF5CAC3), y);
    if (InDisc(x, y, 0.5, 0.42, 0.27)) color = Rgb(0xE4572E);
    double bottom = 0.90, width = 0.30;
    for (int stone = 0; stone < 5; ++stone) {
        const double height = width * 0.30;
        const double centre = 0.5 + 0.022 * (stone % 2 ? 1 : -1);
        if (InOval(x, y, centre, bottom - height, width, height)) {
            color = Mix(Rgb(0x8D99AE), Rgb(0x2B2D42),
                        (y - bottom + 2 * height) / (2.6 * height) + 0.12 * std::sin(x * 70 + stone));
        }
        bottom -= 2 * height - 0.012;
        width *= 0.78;
    }
    if (y > 0.90) color = Rgb(0x84A59D);
    return color;
}

/// Rain on a window at night, and a plant on the sill.
Color WindowCover(double x, double y) {
    Color color = Mix(Rgb(0x1B1B3A), Rgb(0x693668), y * 0.9);
    const double lane = std::floor(x * 26);
    const double drop = std::fmod(y * 3 + std::fmod(lane * 0.61803, 1.0) * 3, 1.0);
    if (std::abs(x * 26 - lane - 0.5) < 0.09 && drop < 0.16) color = Mix(color, Rgb(0xBFD7EA), 0.75);
    for (int light = 0; light < 7; ++light) {
        const double k = light;
        if (InDisc(x, y, 0.12 + 0.13 * k, 0.62 + 0.05 * std::sin(k * 2.3),
                   0.028 + 0.012 * std::sin(k * 1.7))) {
            color = Mix(color, Rgb(light % 2 ? 0xF7B267 : 0xF25C54), 0.55);
        }
    }
    if (std::abs(x - 0.5) < 0.018 || std::abs(y - 0.45) < 0.014 || x < 0.05 || x > 0.95 || y < 0.05)
        color = Rgb(0xD8C3A5);
    if (y > 0.86) color = Rgb(0xB08968);
    if (InBox(x, y, 0.70, 0.74, 0.84, 0.88)) color = Rgb(0xC8553D);
    for (const double lean : {-0.09, -0.04, 0.03, 0.08}) {
        const double height = (0.75 - y) / 0.22;
        if (height > 0 && height < 1 && std::abs(x - 0.77 - lean * height) < 0.022 * std::sin(height * 3.1))
            color = Rgb(0x588157);
    }
    return color;
}

/// A very large hat over three lines of music.
Color HatCover(double x, double y) {
    Color color = Mix(Rgb(0xF2E9E4), Rgb(0xE0D3C8), y);
    for (const double line : {0.60, 0.65, 0.70, 0.75, 0.80}) {
        if (std::abs(y - line - 0.012 * std::sin(x * 7)) < 0.003) color = Rgb(0x9A8C98);
    }
    constexpr std::array<std::array<double, 2>, 5> kNotes = {
        {{0.18, 0.775}, {0.34, 0.70}, {0.50, 0.725}, {0.66, 0.65}, {0.82, 0.68}}};
    for (const auto& [noteX, noteY] : kNotes) {
        if (InOval(x, y, noteX, noteY, 0.028, 0.020)) color = Rgb(0x22223B);
        if (std::abs(x - noteX - 0.025) < 0.004 && y < noteY && y > noteY - 0.13) color = Rgb(0x22223B);
    }
    if (InBox(x, y, 0.32, 0.14, 0.68, 0.42) || InOval(x, y, 0.5, 0.14, 0.18, 0.035)) color = Rgb(0x22223B);
    if (InBox(x, y, 0.32, 0.34, 0.68, 0.40)) color = Rgb(0xC9184A);
    if (InOval(x, y, 0.5, 0.43, 0.33, 0.055)) color = y > 0.40 ? Rgb(0x2F2F4F) : color;
    return color;
}

/// A mail boat with one lit window on a sea by night.
Color BoatCover(double x, double y) {
    Color color = Mix(Rgb(0x0D1B2A), Rgb(0x33658A), y * 1.3);
    if (InDisc(x, y, 0.22, 0.20, 0.07) && !InDisc(x, y, 0.25, 0.185, 0.06)) color = Rgb(0xF6E7CB);
    for (int star = 0; star < 12; ++star) {
        const double k = star;
        if (InDisc(x, y, std::fmod(0.13 + k * 0.382, 1.0), 0.06 + 0.30 * std::fmod(k * 0.618, 1.0), 0.0045))
            color = Rgb(0xFFFFFF);
    }
    if (InBox(x, y, 0.42, 0.42, 0.66, 0.60)) color = Rgb(0xF2EFE9);
    if (InBox(x, y, 0.46, 0.46, 0.53, 0.53)) color = Rgb(0xFFC857);
    if (InBox(x, y, 0.57, 0.28, 0.62, 0.43)) color = y < 0.33 ? Rgb(0x2E282A) : Rgb(0xD64045);
    if (y > 0.58 && y < 0.72 && x > 0.24 + (y - 0.58) * 0.7 && x < 0.82 - (y - 0.58) * 0.9)
        color = y < 0.62 ? Rgb(0xF2EFE9) : Rgb(0x9E2A2B);
    for (int wave = 0; wave < 4; ++wave) {
        const double k = wave;
        if (y > 0.69 + 0.075 * k + 0.014 * std::sin(x * (14 + 3 * k) + 1.9 * k))
            color = Mix(Rgb(0x1D4E6F), Rgb(0x0B1D33), 0.3 * k);
    }
    return color;
}

/// A glass chime under the eaves, and its slip of paper in the wind.
Color ChimeCover(double x, double y) {
    Color color = Mix(Rgb(0xBEE3DB), Rgb(0xFFF1D0), y);
    if (y < 0.10) color = std::fmod(x * 9, 1.0) < 0.08 ? Rgb(0x4A3728) : Rgb(0x7F5A3C);
    const double drift = 0.10 * (y - 0.52) + 0.03 * (1 + std::sin(y * 9));
    if (std::abs(x - 0.5 - (y > 0.52 ? drift : 0)) < 0.004 && y > 0.10 && y < 0.66) color = Rgb(0x555B6E);
    if (InOval(x, y, 0.5, 0.38, 0.17, 0.16) && y < 0.48) {
        color = Mix(color, Rgb(0x89C2D9), 0.45 + 0.3 * std::hypot(x - 0.44, y - 0.31) / 0.2);
        // Two goldfish on the glass.
        if (InOval(x, y, 0.45, 0.40, 0.035, 0.018) || InOval(x, y, 0.56, 0.36, 0.030, 0.016))
            color = Rgb(0xEE4266);
        if (InDisc(x, y, 0.42, 0.30, 0.018)) color = Rgb(0xFFFFFF);
    }
    if (std::abs(x - 0.5 - drift) < 0.055 && y > 0.64 && y < 0.90)
        color =
            std::abs(y - 0.77) < 0.09 && std::abs(x - 0.5 - drift) < 0.012 ? Rgb(0x2D3142) : Rgb(0xFFFDF7);
    return color;
}

}  // namespace sorakaze::station
