// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A program file as bytes and as text: what it is encoded in, and what it would be as UTF-8.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "program/check/Finding.h"

namespace sorakaze::studio {

struct TextFile {
    std::string bytes;
    /// UTF-8; empty where `isText` is false.
    std::string text;
    bool isText = false;
    /// Whether `text` is without doubt what the bytes mean, though they are something else.
    bool isConverted = false;
    bool isGuess = false;    ///< the encoding of the bytes is
    std::string conversion;  ///< for people: what the conversion does
    /// Of the file as a whole and of its encoding.
    std::vector<check::Finding> findings;
};

/// A program is hardly ever longer than a few kilobytes.
inline constexpr std::size_t kLargestText = std::size_t{4} << 20;

/// Pure.
TextFile DecodeText(std::string bytes);
/// The file as it is now. What can't be read as text has one finding that says why.
TextFile ReadTextFile(const std::filesystem::path& file);

}  // namespace sorakaze::studio
