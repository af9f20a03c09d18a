// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/encoding/SoundFileWriter.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "base/Ascii.h"
#include "sound/encoding/SoundSink.h"

namespace sorakaze::sound {
namespace {

constexpr std::string_view kWav = ".wav";
constexpr std::array kEncodings{
    Encoding{".flac", "flac", "flac"},
    Encoding{".opus", "opus", "libopus", 160'000},
    Encoding{".ogg", "opus", "libopus", 160'000},
    Encoding{".mp3", "mp3", "libmp3lame", 0,
             2},  // about 190 kbit/s; fixed rates would lower the level a little
    Encoding{".m4a", "ipod", "aac", 192'000},
    Encoding{".aiff", "aiff", "pcm_s16be"},
    Encoding{".oga", "oga", "libvorbis", 192'000},
};

std::string EndingOf(const std::filesystem::path& file) {
    return ascii::Lowered(file.extension().string());
}

std::unique_ptr<SoundSink> MakeSink(const std::filesystem::path& file, Dither dither) {
    const std::string ending = EndingOf(file);
    if (ending == kWav) return MakeWavSink(file, dither);
    for (const auto& encoding : kEncodings)
        if (encoding.ending == ending) return MakeEncoderSink(file, encoding, dither);
    std::string known;
    for (const auto& each : SoundFileWriter::Endings()) known += (known.empty() ? "" : ", ") + each;
    throw SoundFileError("Can't tell the format of the sound file " + file.string() +
                         " from its ending. Use one of these: " + known + ".");
}

/// The thread that encodes and writes. Write and Finish command it; it touches nothing but its sink. Blocks
/// are large, so that the two threads rarely wake each other.
class QueuedWriter final : public SoundFileWriter {
  public:
    explicit QueuedWriter(std::unique_ptr<SoundSink> sink)
        : sink_(std::move(sink)), thread_([this] { Work(); }) {
        filling_.reserve(kBlockSamples);
    }

    ~QueuedWriter() override {
        End(Ending::Abandoned);
        if (thread_.joinable()) thread_.join();
    }

    void Write(std::span<const float> interleaved) override {
        while (!interleaved.empty()) {
            const std::size_t count = std::min(interleaved.size(), kBlockSamples - filling_.size());
            filling_.insert(filling_.end(), interleaved.begin(),
                            interleaved.begin() + static_cast<std::ptrdiff_t>(count));
            if (filling_.size() == kBlockSamples) HandOver();
            interleaved = interleaved.subspan(count);
        }
    }

    void Finish() override {
        if (!filling_.empty()) HandOver();
        End(Ending::Whole);
        if (thread_.joinable()) thread_.join();
        const std::lock_guard lock(mutex_);
        if (error_) std::rethrow_exception(error_);
    }

  private:
    using Block = std::vector<float>;
    enum class Ending { None, Whole, Abandoned };
    static constexpr std::size_t kBlockSamples = std::size_t{kSampleRate} * kChannels;
    static constexpr std::size_t kMaxQueued = 8;

    void HandOver() {
        std::unique_lock lock(mutex_);
        roomOrError_.wait(lock, [&] { return queue_.size() < kMaxQueued || error_; });
        if (error_) std::rethrow_exception(error_);
        queue_.push_back(std::move(filling_));
        filling_.clear();
        if (!spare_.empty()) {
            filling_ = std::move(spare_.back());
            spare_.pop_back();
        }
        lock.unlock();
        work_.notify_one();
        filling_.reserve(kBlockSamples);
    }

    void End(Ending ending) {
        {
            const std::lock_guard lock(mutex_);
            if (ending_ == Ending::None) ending_ = ending;
        }
        work_.notify_one();
    }

    void Work() {
        try {
            Block block;
            while (Next(block)) sink_->Write(block);
            if (IsWhole()) sink_->Finish();
        } catch (...) {
            {
                const std::lock_guard lock(mutex_);
                error_ = std::current_exception();
            }
            roomOrError_.notify_one();
        }
        // Here at the latest an unfinished file is removed.
        sink_.reset();
    }

    /// Swaps a done block for the next one. False at the end.
    bool Next(Block& block) {
        std::unique_lock lock(mutex_);
        if (block.capacity() > 0) {
            block.clear();
            spare_.push_back(std::move(block));
        }
        work_.wait(lock, [&] { return !queue_.empty() || ending_ != Ending::None; });
        if (queue_.empty() || ending_ == Ending::Abandoned) return false;
        block = std::move(queue_.front());
        queue_.pop_front();
        const bool wasFull = queue_.size() + 1 == kMaxQueued;
        lock.unlock();
        if (wasFull) roomOrError_.notify_one();
        return true;
    }

    bool IsWhole() {
        const std::lock_guard lock(mutex_);
        return ending_ == Ending::Whole;
    }

    std::unique_ptr<SoundSink> sink_;  // the thread's own
    Block filling_;                    // the caller's own
    std::mutex mutex_;                 // guards all below but the thread
    std::condition_variable work_;
    std::condition_variable roomOrError_;
    std::deque<Block> queue_;
    std::vector<Block> spare_;
    Ending ending_ = Ending::None;
    std::exception_ptr error_;
    std::thread thread_;
};

/// Passes on to both.
class SinkWithListener final : public SoundSink {
  public:
    SinkWithListener(std::unique_ptr<SoundSink> sink, std::shared_ptr<SoundSink> listener)
        : sink_(std::move(sink)), listener_(std::move(listener)) {}

    void Write(std::span<const float> interleaved) override {
        listener_->Write(interleaved);
        sink_->Write(interleaved);
    }
    void Finish() override {
        listener_->Finish();
        sink_->Finish();
    }

  private:
    std::unique_ptr<SoundSink> sink_;
    std::shared_ptr<SoundSink> listener_;
};

}  // namespace

std::vector<std::string> SoundFileWriter::Endings() {
    std::vector<std::string> endings{std::string(kWav)};
    for (const auto& encoding : kEncodings) endings.emplace_back(encoding.ending);
    return endings;
}

std::unique_ptr<SoundFileWriter> SoundFileWriter::Create(const std::filesystem::path& file, Dither dither,
                                                         std::shared_ptr<SoundSink> listener) {
    auto sink = MakeSink(file, dither);
    if (listener) sink = std::make_unique<SinkWithListener>(std::move(sink), std::move(listener));
    return std::make_unique<QueuedWriter>(std::move(sink));
}

}  // namespace sorakaze::sound
