// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The events of a show, in the order in which they happen, for whoever observes it: the studio prints them
// and writes them as its trace, the desktop logs the failures.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "app/runtime/String.h"
#include "base/FunctionRef.h"

namespace sorakaze {

struct ShowEvent {
    /// Each with its fields.
    enum class Kind {
        Show,      ///< program, playlist
        Block,     ///< name, variant
        Line,      ///< text: the expanded line
        Say,       ///< voice, text, seconds
        Sayj,      ///< voice, text
        Sound,     ///< path
        Track,     ///< playlist, number, title, path
        Fade,      ///< number, position
        Ended,     ///< number, position
        Prepared,  ///< number, song, artist, album, wikiContents
        Level,     ///< path, source, gain, loudness, lift, end: under a desk, after Say, Sound or Track
        Duck,      ///< depth: from here on music and effects go to so many dB below their level
        Voice,    ///< asked, used, why: not the voice that was asked for, or not as it was set; program, line
        Credit,   ///< what ("text" or "voice"), title, address, licence: of what is about to be heard
        Message,  ///< text
        Failed,   ///< what, path, why; program and line where one failed; message where a box follows
        End
    };
    using Value = std::variant<String, std::int32_t, double>;
    using Fields = std::vector<std::pair<std::string_view, Value>>;

    std::int32_t ticks = 0;  ///< since the show's start
    Kind kind = Kind::Show;
    Fields fields;

    /// Null if there is no such field.
    const Value* Find(std::string_view name) const {
        for (const auto& [key, value] : fields) {
            if (key == name) return &value;
        }
        return nullptr;
    }
};

/// The name of an event in a trace.
constexpr std::string_view NameOf(ShowEvent::Kind kind) {
    constexpr std::array<std::string_view, 17> kNames{
        "show",     "block", "line", "say",   "sayj",   "sound",   "track",  "fade", "ended",
        "prepared", "level", "duck", "voice", "credit", "message", "failed", "end"};
    return kNames[static_cast<std::size_t>(kind)];
}

/// How a part of the show tells of an event. Called with the baton; refers to a callable of the caller's.
using TellShow = FunctionRef<void(ShowEvent::Kind kind, ShowEvent::Fields fields)>;

class ShowObserver {
  public:
    virtual ~ShowObserver() = default;
    /// Called with the baton, on the thread in which it happens. Must not yield.
    virtual void OnShowEvent(const ShowEvent& event) = 0;
};

}  // namespace sorakaze
