// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "station/synth/Effects.h"
#include "station/synth/Score.h"
#include "station/synth/Sound.h"

namespace sorakaze::station {

/// Plays one note: its pitch, how long it is held and how hard it is struck (0 to 1). What rings on after the
/// note is part of what is returned.
using Instrument = std::function<Mono(double hertz, double seconds, double velocity, Random& random)>;

struct Player {
    Instrument instrument;
    double gain = 0.3;
    Pan pan{};
    double room = 0.2;     ///< how much of it is sent to the room
    double held = 0.95;    ///< the share of a note's length that it is held
    double loose = 0.004;  ///< seconds by which a player is early or late at most
};

/// Where a piece is played: the dry mix of all players, and the signal sent to the reverb.
class Stage {
  public:
    Stage(Tempo tempo, std::uint64_t seed) : tempo_(tempo), random_(seed) {}

    void Play(const Line& line, const Player& player);

    /// What one player would play, by itself, to be put through effects before it is added.
    Stereo Solo(const Line& line, const Player& player);
    void Add(const Stereo& sound, double gain = 1, double room = 0);
    void Add(const Mono& sound, double seconds, double gain, Pan pan, double room);

    double Seconds(double beat) const { return tempo_.Seconds(beat); }
    Random& Chance() { return random_; }

    Stereo InRoom(const Room& room) const;

  private:
    Tempo tempo_;
    Random random_;
    Stereo dry_, sent_;
};

}  // namespace sorakaze::station
