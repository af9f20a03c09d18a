// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The protocol between the application and the program sorakaze-decoder, in packets of fixed form.
//
// The channel leads to the program's first process, which reads no foreign byte itself: for each job it forks
// a worker. A job comes with descriptors: the file, the worker's end of a socket of the job's own and, for
// Play, the memory of its ring. On the job's socket the worker answers once; for Play each further packet, in
// either direction, only means "check the ring". For Measure packets of one byte come before the answer, each
// for a stretch of the sound that has been measured. Either side ends the job by closing the socket.
#pragma once

#include <cstddef>
#include <cstdint>

#include "sound/DecodeOptions.h"

namespace sorakaze::sound {

enum class JobKind : std::uint32_t {
    Play,      ///< for a device: the ring is emptied in true time
    PlayFast,  ///< the ring is emptied as fast as it is filled
    Tags,
    Measure,            ///< the answer is a Measurement, packed
    MeasureBackground,  ///< the same, whenever nobody else needs the processor
    Kill,               ///< no job: ends the worker of the job of that number at once. Without descriptors
};

struct JobRequest {
    JobKind kind;
    std::uint32_t number;   ///< of the job
    std::uint64_t memory;   ///< bytes that the worker may allocate
    std::uint32_t ring;     ///< for Play: the ring's capacity in frames
    DecodeOptions options;  ///< for Play and Measure
    /// Frames to measure: the answer to Measure; for Play on their way to the ring, which then holds the
    /// measurement, or 0.
    std::int64_t limit;
    char name[256];  ///< the file's, without its folders: endings help to tell formats apart. Ends in 0
};

/// On the channel, when a worker has ended.
struct JobEnded {
    std::uint32_t number;
    std::int32_t status;  ///< as wait tells it
};

/// The worker's answer to Play.
struct PlayAnswer {
    enum Result : std::uint32_t { Playing = 1, NoSound, TooLarge };
    Result result;
    std::uint32_t reserved = 0;
    std::int64_t length;  ///< frames as the container states it; negative where it doesn't
};

/// The answer to Tags is a text of at most this many bytes.
inline constexpr std::size_t kLongestTags = 192'100;
/// No answer of any kind is longer.
inline constexpr std::size_t kLongestAnswer = kLongestTags;

}  // namespace sorakaze::sound
