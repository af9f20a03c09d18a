// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/AudibleLines.h"

namespace sorakaze::viewer {

std::optional<bool> AudibleLines::Read(std::string_view bytes) {
    std::optional<bool> result;
    for (const char byte : bytes) {
        // One that is too long stays so until its end, and is none of the two.
        if (line_.size() <= kAudibleLine.size()) line_ += byte;
        if (byte != '\n') continue;
        if (line_ == kAudibleLine) result = true;
        if (line_ == kSilentLine) result = false;
        line_.clear();
    }
    return result;
}

}  // namespace sorakaze::viewer
