// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <functional>
#include <memory>

namespace sorakaze::desktop {

/// One running application per station folder and user. A second one asks the first to show its window and
/// ends.
class SingleInstance {
  public:
    /// Empty if another instance runs for this folder; it has then been asked to show its window. `onSecond`
    /// is called on the main thread when another one is started later. The folder may be read-only. An
    /// instance that crashed is no obstacle. If no lock can be made anywhere, the application runs without
    /// the check.
    static std::unique_ptr<SingleInstance> Claim(const std::filesystem::path& folder,
                                                 std::function<void()> onSecond);
    virtual ~SingleInstance() = default;
};

}  // namespace sorakaze::desktop
