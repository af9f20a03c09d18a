// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What was measured of files in this run, in memory only. Music is measured ahead, one file at a time, on a
// thread of this object's own, which sleeps when nothing is wanted. Any thread but the mixing one.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

#include "sound/DecodeOptions.h"
#include "sound/Decoders.h"
#include "sound/Measurement.h"

namespace sorakaze::sound {

class Measurements {
  public:
    /// `priority` is that of measuring ahead.
    Measurements(std::shared_ptr<Decoders> decoders, Decoders::Priority priority);
    /// Ends a measurement that is under way.
    ~Measurements();
    Measurements(const Measurements&) = delete;
    Measurements& operator=(const Measurements&) = delete;

    /// Has the file's first `part` frames measured, before those that were wanted earlier. Returns at once.
    void Want(const std::filesystem::path& file, Frames part, const DecodeOptions& options);
    /// What is known of the file as it is now, be it of less than was wanted.
    std::optional<Measurement> Find(const std::filesystem::path& file, const DecodeOptions& options) const;
    /// Whether it was tried, and nothing could be measured.
    bool IsLost(const std::filesystem::path& file, const DecodeOptions& options) const;
    /// The measurement of at least `part` frames, or of the whole sound; waits for it for up to `most` where
    /// it is wanted.
    std::optional<Measurement> Await(const std::filesystem::path& file, Frames part,
                                     const DecodeOptions& options, std::chrono::milliseconds most) const;
    /// Measures up to `most` frames in the caller's thread, unless they are known.
    std::optional<Measurement> MeasureNow(const std::filesystem::path& file, const DecodeOptions& options,
                                          Frames most);

  private:
    /// A file as it is at a time, and how it is decoded.
    struct Key {
        FileIdentity identity;
        DecodeOptions options;
        auto operator<=>(const Key&) const = default;
    };
    struct Entry {
        Frames part;                        ///< that was asked for
        std::optional<Measurement> result;  ///< empty: it could not be measured
        std::uint64_t number = 0;           ///< in the order in which they were measured
    };
    struct Request {
        Key key{};
        std::filesystem::path file;
        Frames part;
    };

    void Work(const std::stop_token& stop);
    void Keep(const Key& key, Frames part, std::optional<Measurement> result);
    const Entry* Known(const Key& key, Frames part) const;
    bool IsWanted(const Key& key, Frames part) const;
    static std::optional<Key> KeyOf(const std::filesystem::path& file, const DecodeOptions& options);

    const std::shared_ptr<Decoders> decoders_;
    const Decoders::Priority priority_;

    mutable std::mutex mutex_;  // guards all below
    mutable std::condition_variable_any changed_;
    std::map<Key, Entry> known_;
    std::deque<Request> wanted_;  ///< the next one first
    std::optional<Request> underWay_;
    std::uint64_t measured_ = 0;
    std::jthread thread_;  ///< last, so that it ends before all else
};

}  // namespace sorakaze::sound
