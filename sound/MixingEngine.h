// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The one mixing engine for all that is heard: jingles, speech and the player's tracks are voices of it. The
// logic's threads open, start, stop and fade voices; one mixing thread (a device's callback, or the studio's
// clock) calls Mix. Files are decoded ahead in processes of their own (see Decoders). The mixing side takes
// no lock, allocates nothing and opens no file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sound/Bus.h"
#include "sound/Decoders.h"
#include "sound/Frames.h"
#include "sound/OutputTap.h"
#include "sound/SoundSource.h"
#include "sound/desk/VoiceLevel.h"

namespace sorakaze::sound {

class MixingEngine;

/// One sound of the engine: a decoder, its ring of decoded frames and a gain. Made by MixingEngine::Open;
/// silent until Start. All methods may be called from any thread but the mixing one. Dropping the last
/// reference stops the voice the way Stop does.
class Voice {
  public:
    virtual ~Voice() = default;

    /// Starts from the file's beginning. Only the first call has an effect.
    virtual void Start() = 0;

    /// Ends the voice for good: IsPlaying is false from here on; only a fade of a few milliseconds is still
    /// heard.
    virtual void Stop() = 0;

    /// True from Start until Stop or until the file's last frame has been mixed, or its decoder has failed.
    virtual bool IsPlaying() const = 0;

    /// Moves the linear gain (0 to 1) towards `gain`, sample by sample, over `ramp` frames; shorter ramps
    /// than the engine's shortest (5 ms) are lengthened to it, so that no change clicks. Before Start the
    /// gain is simply set.
    virtual void SetGain(float gain, Frames ramp = {}) = 0;

    /// To silence: under a desk in a curve that sounds even, otherwise as SetGain does.
    virtual void FadeOut(Frames frames) = 0;

    /// The level that the desk plays it at; empty without a desk. Effects and speech have theirs from Open;
    /// music gets it by SetLevel, which has an effect before Start only.
    virtual std::optional<VoiceLevel> Level() const = 0;
    virtual void SetLevel(const VoiceLevel& level) = 0;
    /// What the decoder measures while it fills the ring; waits for it. Before Start. Empty where nothing is.
    virtual std::optional<Measurement> AwaitMeasurement() = 0;
    /// Under a desk: the sound is over after `end` frames, the last `fade` of which fade.
    virtual void EndAt(Frames end, Frames fade) = 0;

    /// Frames of the file mixed so far.
    virtual Frames Position() const = 0;

    /// The length that the container states, where it states one. Only an estimate for some formats.
    virtual std::optional<Frames> Length() const = 0;
};

/// What Mix does when a voice's ring runs empty before its file has ended.
enum class MixingMode {
    RealTime,  ///< Mixes silence for the missing frames and counts an underrun: a device can't wait.
    Offline,   ///< Waits for the decoder: a rendered show is the same each time, bit for bit.
    Counting,  ///< Makes no sound: frames pass, and voices end where those of a render do. See SoundCounter.
};

class MixingEngine {
  public:
    /// Without `decoders` the engine uses Decoders::Shared().
    explicit MixingEngine(MixingMode mode, std::shared_ptr<Decoders> decoders = nullptr);
    ~MixingEngine();
    MixingEngine(const MixingEngine&) = delete;
    MixingEngine& operator=(const MixingEngine&) = delete;

    /// Puts a desk behind the voices: each is brought to `target` LUFS, music and effects go down under
    /// speech, and the true peak of the output stays below -1 dBTP. Without it the voices are added as they
    /// are. Before the first Open and Mix.
    void UseDesk(double target);
    bool HasDesk() const;

    /// Opens a file of any format that the decoding libraries know. Empty when the file can't be read or
    /// holds no sound that can be decoded (the first frame is decoded here to be sure). Under a desk effects
    /// and speech are measured here. Blocks for file I/O; never throws for bad files. Any thread but the
    /// mixing one.
    /// `part` is for music: the frames of it that will be played. With `why`, that is given the reason where
    /// the result is empty, and TakeFailures isn't told.
    std::shared_ptr<Voice> Open(const SoundSource& source, Bus bus = Bus::Effects, Frames part = {},
                                std::string* why = nullptr);

    // For music under a desk. Any thread but the mixing one.

    /// Begins to measure the first `part` frames of a file, on another thread.
    void WantLevel(const SoundSource& source, Frames part);
    /// The level for these frames, by the measurement; in MixingMode::RealTime, where that isn't there yet,
    /// by `tagged`, the loudness in LUFS that the file's tags give, if any. MixingMode::Offline waits for it,
    /// if need be for what is measured of `opened`, the file's voice, which has not been started yet.
    VoiceLevel LevelOfMusic(const SoundSource& source, Frames part, std::optional<double> tagged,
                            Voice* opened = nullptr);

    // For speech under a desk. Any thread but the mixing one.

    /// A sentence is being prepared: where the bed is down, it stays down for it, 1.5 seconds at most.
    void ExpectSpeech();
    /// Whether somebody speaks beside what is mixed here.
    void SetOutsideSpeech(bool speaks);
    /// The desk's decisions since the last call: by how many dB music and effects went below their level from
    /// then on. One thread at a time.
    std::vector<double> TakeDucks();

    /// The tags of a sound file, as the tag reader of sorakaze-decoder gives them: foreign bytes. Empty where
    /// there are none. As for Open.
    std::optional<std::string> ReadTags(const std::filesystem::path& file, std::string* why = nullptr);

    /// The files whose decoders failed since the last call. Such a file isn't opened again until
    /// ForgetBadFiles. Any thread but the mixing one.
    std::vector<DecoderFailure> TakeFailures();
    void ForgetBadFiles();
    /// For the application's end: from here on Open and ReadTags return at once, empty.
    void Cancel();
    /// `tell` is called, on any thread but the mixing one, when there is something for TakeFailures. It must
    /// not call the engine. After this returns, the former `tell` isn't called any more.
    void OnFailure(std::function<void()> tell);

    /// Mixes the next frames of every started voice into `interleaved` (kChannels samples a frame,
    /// overwritten), with the sum passed through the limiter: no sample leaves the range -1 to 1. Called from
    /// one thread at a time.
    void Mix(std::span<float> interleaved);

    /// From now on `tap` is given what Mix mixes, for as long as it isn't removed. Any thread but the mixing
    /// one. False when there are OutputTaps::kMost already.
    bool AddTap(OutputTap& tap);
    /// When this returns, the tap isn't called any more.
    void RemoveTap(OutputTap& tap);

    /// Frames mixed since the engine was made.
    Frames Mixed() const;

    /// The limiter's delay: what is mixed at frame n is in the output at n + Latency().
    Frames Latency() const;

    /// How many voices are sounding (started, neither ended nor stopped).
    int Sounding() const;

    /// Number of times a ring ran empty under MixingMode::RealTime.
    std::uint64_t Underruns() const;

  private:
    void MixNext(std::span<float> interleaved);

    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::sound
