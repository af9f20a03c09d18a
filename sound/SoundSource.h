// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>
#include <utility>

#include "sound/DecodeOptions.h"

namespace sorakaze::sound {

/// A sound file, or a part of one.
struct SoundSource {
    std::filesystem::path file;
    Excerpt excerpt{};

    SoundSource(std::filesystem::path path, Excerpt part = {}) : file(std::move(path)), excerpt(part) {}
    SoundSource(const std::string& path) : file(path) {}
    SoundSource(const char* path) : file(path) {}

    bool operator==(const SoundSource&) const = default;
};

}  // namespace sorakaze::sound
