// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a show tells an onlooker: one event after the other, in the order in which they happen. The studio
// prints them and writes them as its trace; on the desktop nobody looks on.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "app/runtime/String.h"

namespace sorakaze {

/// Events and their fields:
/// show {program, playlist}, block {name, variant}, line {text: the expanded line}, say {voice, text,
/// seconds}, sayj {voice, text}, sound {path}, track {playlist, number, title, path}, fade {number,
/// position}, ended {number, position}, prepared {number, song, artist, album, wikiContents}, message {text},
/// failed {what, path, why}, end {}.
struct ShowEvent {
    using Value = std::variant<String, std::int32_t, double>;

    std::int32_t ticks = 0;  ///< since the show's start
    std::string_view what;
    std::vector<std::pair<std::string_view, Value>> fields;
};

class ShowObserver {
  public:
    virtual ~ShowObserver() = default;
    /// Called with the baton, on the thread in which it happens. Must not yield.
    virtual void OnShowEvent(const ShowEvent& event) = 0;
};

}  // namespace sorakaze
