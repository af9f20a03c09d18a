// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reads tags. It parses foreign bytes with a library that wasn't made for hostile ones, so it runs in the
// program sorakaze-decoder alone.
#pragma once

#include <string>

#include "base/FileDescriptor.h"
#include "player/TrackTags.h"

namespace sorakaze::player {

/// The longest text of a tag that is taken, in bytes; what goes beyond is cut off.
inline constexpr std::size_t kLongestTag = 32'000;

/// What a sound file's own tags say, whatever their format. All empty for a file without tags. Reads the tags
/// alone, not the sound. `name` is the file's: endings help to tell formats apart. Throws std::bad_alloc.
TrackTags ReadTags(FileDescriptor file, const std::string& name);

}  // namespace sorakaze::player
