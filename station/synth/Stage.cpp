// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Stage.h"

#include <algorithm>

namespace sorakaze::station {

Stereo Stage::Solo(const Line& line, const Player& player) {
    Stereo sound;
    for (const Note& note : line) {
        const double start = tempo_.Seconds(note.beat);
        const double held = (tempo_.Seconds(note.beat + note.beats) - start) * player.held;
        const double velocity = std::clamp(note.velocity * (1 + 0.08 * random_.Signed()), 0.05, 1.0);
        const double begin = start + player.loose * random_.Signed();
        sound.Add(player.instrument(Hertz(note.pitch), held, velocity, random_), begin, player.gain,
                  player.pan);
    }
    return sound;
}

void Stage::Play(const Line& line, const Player& player) {
    Add(Solo(line, player), 1, player.room);
}

void Stage::Add(const Stereo& sound, double gain, double room) {
    dry_.Add(sound, 0, gain);
    if (room > 0) sent_.Add(sound, 0, gain * room);
}

void Stage::Add(const Mono& sound, double seconds, double gain, Pan pan, double room) {
    dry_.Add(sound, seconds, gain, pan);
    if (room > 0) sent_.Add(sound, seconds, gain * room, pan);
}

Stereo Stage::InRoom(const Room& room) const {
    Stereo all = dry_;
    all.Add(Reverberate(sent_, room), 0);
    return all;
}

}  // namespace sorakaze::station
