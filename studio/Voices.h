// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>

namespace sorakaze::studio {

struct VoicesOptions {
    std::filesystem::path station;  ///< empty: the one that this program is in
    bool json = false;
    bool measure = false;  ///< have each voice speak a sentence, to know its speed
};

/// Prints the voices of a station, the user's own first. Throws StudioError.
void ListVoices(const VoicesOptions& options);

struct TryOptions {
    std::filesystem::path station;
    std::string name, text;
    std::filesystem::path output;  ///< empty: the sound device
};

/// Has a voice speak a sentence. Throws StudioError where nothing is spoken, and where there is no device.
void TryVoice(const TryOptions& options);

}  // namespace sorakaze::studio
