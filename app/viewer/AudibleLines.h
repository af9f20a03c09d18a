// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What sorakaze-viewer says on its standard output: a line when its page begins to be heard and one when it
// isn't heard any more.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sorakaze::viewer {

inline constexpr std::string_view kAudibleLine = "audible\n";
inline constexpr std::string_view kSilentLine = "silent\n";

/// Reads them. The bytes may be anybody's; only whole lines of the two mean something.
class AudibleLines {
  public:
    /// What the last line among these bytes says, which continue those before. Empty where there is none.
    std::optional<bool> Read(std::string_view bytes);

  private:
    std::string line_;  ///< not yet whole, and no longer than is of use
};

}  // namespace sorakaze::viewer
