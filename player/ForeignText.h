// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Text from tags, playlists and file names, whose makers tell its encoding wrongly or not at all. Pure
// functions.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::player {

/// UTF-8 for bytes of unknown encoding: kept where they are UTF-8 already (a character cut off at the end is
/// dropped), read as Shift_JIS, EUC-JP, windows-1251, EUC-KR or GBK where the bytes speak clearly for it, as
/// windows-1252 otherwise.
std::string DecodeUnlabelled(std::string_view bytes);

/// One clean line: decoded as by DecodeUnlabelled, composed (NFC), each run of control characters and line
/// breaks one blank, no blanks at the ends.
std::string CleanLine(std::string_view bytes);

}  // namespace sorakaze::player
