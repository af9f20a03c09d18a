// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Checks, in debug builds, what the headers of sound/ promise about the mixing thread: the thread that is
// inside MixingEngine::Mix. Elsewhere the same thread may do what any other may. Costs nothing in a release
// build.
#pragma once

#include <atomic>
#include <cassert>

namespace sorakaze::sound {

/// Held by a thread while it mixes. `mixing` belongs to the engine: one thread mixes at a time.
class MixingScope {
  public:
#ifdef NDEBUG
    explicit MixingScope(std::atomic_flag&) {}
#else
    explicit MixingScope(std::atomic_flag& mixing) : mixing_(mixing) {
        [[maybe_unused]] const bool already = mixing_.test_and_set();
        assert(!already);
        held_ = true;
    }
    ~MixingScope() {
        held_ = false;
        mixing_.clear();
    }
#endif
    MixingScope(const MixingScope&) = delete;
    MixingScope& operator=(const MixingScope&) = delete;

#ifndef NDEBUG
    static bool IsHeld() {
        return held_;
    }

  private:
    static inline thread_local bool held_ = false;
    std::atomic_flag& mixing_;
#endif
};

inline void AssertMixingThread() {
    assert(MixingScope::IsHeld());
}
inline void AssertNotMixingThread() {
    assert(!MixingScope::IsHeld());
}

}  // namespace sorakaze::sound
