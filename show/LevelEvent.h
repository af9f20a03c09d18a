// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>

#include "show/ShowObserver.h"
#include "sound/desk/VoiceLevel.h"

namespace sorakaze {

/// The event of the level that a sound is played at, and of a measurement that failed. Nothing is told where
/// there is no desk.
inline void TellLevel(TellShow tell, const std::filesystem::path& path,
                      const std::optional<sound::VoiceLevel>& level) {
    if (!level) return;
    using Source = sound::VoiceLevel::Source;
    const char* const source = level->source == Source::Measured ? "measured"
                               : level->source == Source::Tags   ? "tags"
                                                                 : "none";
    ShowEvent::Fields fields{
        {"path", path.string()}, {"source", String(source)}, {"gain", level->plan.gainDb}};
    if (level->loudness) fields.emplace_back("loudness", *level->loudness);
    if (level->plan.liftDb > 0) fields.emplace_back("lift", level->plan.liftDb);
    if (level->plan.end) fields.emplace_back("end", level->plan.end->Seconds());
    tell(ShowEvent::Kind::Level, std::move(fields));
    if (!level->isLost) return;
    const char* const why = level->source == Source::Tags
                                ? "its loudness could not be measured: it is played by its gain tags"
                                : "its loudness could not be measured: it is played as it is";
    tell(ShowEvent::Kind::Failed, {{"what", "level"}, {"path", path.string()}, {"why", why}});
}

}  // namespace sorakaze
