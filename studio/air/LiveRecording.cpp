// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/air/LiveRecording.h"

#include <chrono>
#include <span>
#include <utility>
#include <vector>

namespace sorakaze::studio {
namespace {

constexpr auto kPause = std::chrono::milliseconds(100);

}  // namespace

LiveRecording::LiveRecording(sound::MixingEngine& engine, const std::filesystem::path& file)
    : engine_(engine),
      writer_(sound::SoundFileWriter::Create(
          file, engine.HasDesk() ? sound::Dither::Triangular : sound::Dither::None)) {
    if (!engine_.AddTap(ring_))
        throw sound::SoundFileError(file.string() + ": there are too many outputs already.");
    thread_ = std::thread([this] { Run(); });
}

LiveRecording::~LiveRecording() {
    Stop();
}

std::string LiveRecording::TakeTrouble() {
    const std::lock_guard lock(mutex_);
    return std::exchange(trouble_, {});
}

std::string LiveRecording::Finish() {
    Stop();
    if (failed_) return TakeTrouble();
    try {
        writer_->Finish();
    } catch (const std::exception& error) {
        return error.what();
    }
    if (ring_.Dropped() == 0) return {};
    return "The recording lacks " + std::to_string(ring_.Dropped() / sound::kSampleRate + 1) +
           " seconds: the disk was too slow.";
}

void LiveRecording::Stop() {
    if (!thread_.joinable()) return;
    engine_.RemoveTap(ring_);
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    ended_.notify_all();
    thread_.join();
}

void LiveRecording::Run() {
    std::vector<float> block(std::size_t{sound::kSampleRate} / 5 * sound::kChannels);
    std::unique_lock lock(mutex_);
    for (bool last = false; !last;) {
        last = ended_.wait_for(lock, kPause, [this] { return ending_; });
        lock.unlock();
        std::string why;
        try {
            while (const std::size_t frames = ring_.Take(block))
                writer_->Write(std::span(block).first(frames * sound::kChannels));
        } catch (const std::exception& error) {
            why = error.what();
        }
        lock.lock();
        if (why.empty()) continue;
        failed_ = true;
        trouble_ = why;
        return;
    }
}

}  // namespace sorakaze::studio
