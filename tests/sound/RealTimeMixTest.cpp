// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The device's thread may take no lock, allocate nothing and open no file. Here it mixes where the kernel
// ends it at its first system call, and where allocations and locks that need none are counted.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <thread>

#include "sound/TapRing.h"
#include "tests/sound/SoundTesting.h"

namespace {

thread_local bool watched = false;
std::atomic<int> offences{0};

template <typename Function>
Function* Noted(Function* function) {
    if (watched) ++offences;
    return function;
}

template <typename Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t size) {
    return Noted(__libc_malloc)(size);
}
void* calloc(std::size_t count, std::size_t size) {
    return Noted(__libc_calloc)(count, size);
}
void* realloc(void* old, std::size_t size) {
    return Noted(__libc_realloc)(old, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Noted(__libc_memalign)(alignment, size);
}
void free(void* old) {
    Noted(__libc_free)(old);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    static auto* const next = Next<int(pthread_mutex_t*)>("pthread_mutex_lock");
    return Noted(next)(mutex);
}
int pthread_cond_signal(pthread_cond_t* condition) {
    static auto* const next = Next<int(pthread_cond_t*)>("pthread_cond_signal");
    return Noted(next)(condition);
}
/// Atomic waits and notifications of the C++ library go through here.
long syscall(long number, ...) {
    va_list list;
    va_start(list, number);
    long a[6];
    for (long& argument : a) argument = va_arg(list, long);
    va_end(list);
    static auto* const next = Next<long(long, ...)>("syscall");
    return Noted(next)(number, a[0], a[1], a[2], a[3], a[4], a[5]);
}
}

namespace sorakaze::sound::testing {
namespace {

/// A thread that mixes on demand and can make no system call: it would be ended at once, and Mix fail. It
/// spins in between, and stays until the process ends, since even its end takes calls.
class ConfinedMixer {
  public:
    ConfinedMixer(MixingEngine& engine, std::span<float> block) {
        std::thread([this, &engine, block] {
            ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT);
            watched = true;
            for (;;) {
                while (mixed_.load() == asked_.load()) {
                }
                engine.Mix(block);
                mixed_.fetch_add(1);
            }
        }).detach();
    }
    bool Mix() {
        const int asked = asked_.fetch_add(1) + 1;
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (mixed_.load() < asked && std::chrono::steady_clock::now() < end) std::this_thread::yield();
        return mixed_.load() == asked;
    }

  private:
    std::atomic<int> asked_{0}, mixed_{0};
};

TEST(RealTimeMix, NeitherAllocatesNorLocks) {
    // The watch itself works.
    watched = true;
    free(malloc(10));
    watched = false;
    ASSERT_EQ(offences, 2);
    offences = 0;

    const ScratchFolder folder;
    WriteSound(folder / "short.wav", Sine(500, 3000, 1.0f));
    WriteSound(folder / "long.flac", Sine(700, 20 * kSampleRate, 1.0f));
    // Left behind for the mixer's thread.
    auto& engine = *new MixingEngine(MixingMode::RealTime);
    engine.UseDesk(-16);
    auto& tap = *new TapRing(Frames{1 << 14});  // full most of the time
    ASSERT_TRUE(engine.AddTap(tap));
    auto& block = *new Samples(800 * kChannels);
    auto& mixer = *new ConfinedMixer(engine, block);
    std::vector<std::shared_ptr<Voice>> voices;
    // Starts, fades, stops, drops, ends, ducks, underruns (twenty seconds at once) and a busy limiter.
    constexpr std::array kBuses{Bus::Music, Bus::Speech, Bus::Effects};
    for (int i = 0; i < 1200; ++i) {
        if (i % 100 == 0) {
            voices.push_back(engine.Open(folder / (i % 200 ? "short.wav" : "long.flac"),
                                         kBuses[voices.size() % kBuses.size()]));
            voices.back()->Start();
        }
        if (i % 100 == 20) voices.back()->SetGain(0.3f, Frames{5000});
        if (i % 500 == 460) voices.back()->FadeOut(Frames{20000});
        if (i % 600 == 570) voices.back()->EndAt(Frames{40000}, Frames{2000});
        if (i % 300 == 250) voices.front()->Stop();
        if (i % 400 == 350) voices.erase(voices.begin(), voices.end() - 1);
        ASSERT_TRUE(mixer.Mix()) << "a system call while mixing";
    }
    EXPECT_FALSE(engine.TakeDucks().empty());
    EXPECT_GT(tap.Dropped(), 0u);
    voices.clear();
    for (int i = 0; i < 100; ++i) ASSERT_TRUE(mixer.Mix());
    EXPECT_EQ(offences, 0);
    EXPECT_EQ(Peak(block), 0.0f);
}

}  // namespace
}  // namespace sorakaze::sound::testing
