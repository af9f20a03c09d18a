// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/decoding/SoundReader.h"

#include <algorithm>
#include <cmath>

#include "sound/Measurement.h"
#include "sound/SaneSample.h"

namespace sorakaze::sound {
namespace {

/// Kept before the first sound, so that its onset isn't cut.
constexpr std::size_t kLeadSamples = kSampleRate / 50 * kChannels;
/// Looked through in one call of Read.
constexpr std::size_t kSkipSamples = 32768 * kChannels;

}  // namespace

std::optional<SoundReader> SoundReader::Open(std::unique_ptr<InputFile> file, const std::string& name,
                                             const DecodeOptions& options, unsigned helpers) {
    auto decoder = Decoder::Open(std::move(file), name, helpers,
                                 options.fullFold ? Converter::Fold::Full : Converter::Fold::Scaled,
                                 options.excerpt.start);
    if (!decoder) return std::nullopt;
    return SoundReader(std::move(decoder), options);
}

std::size_t SoundReader::Read(std::span<float> interleaved) {
    if (skipping_) Skip();
    if (skipping_ || over_) return 0;
    const std::size_t kept = std::min(kept_.size() - keptBegin_, interleaved.size() / kChannels * kChannels);
    std::copy_n(kept_.begin() + static_cast<std::ptrdiff_t>(keptBegin_), kept, interleaved.begin());
    keptBegin_ += kept;
    if (keptBegin_ < kept_.size()) return kept / kChannels;
    kept_ = {};
    keptBegin_ = 0;
    const auto rest = interleaved.subspan(kept);
    const std::size_t frames = ended_ ? 0 : Decode(rest);
    over_ = frames < rest.size() / kChannels;
    return kept / kChannels + frames;
}

/// The decoder's next frames, up to the excerpt's end.
std::size_t SoundReader::Decode(std::span<float> interleaved) {
    if (excerpt_.length.count > 0) {
        const auto left = static_cast<std::size_t>((excerpt_.length - decoded_).count) * kChannels;
        interleaved = interleaved.first(std::min(interleaved.size(), left));
    }
    const std::size_t frames = decoder_->Read(interleaved);
    decoded_.count += static_cast<std::int64_t>(frames);
    return frames;
}

/// Reads a stretch after the silence that is kept.
void SoundReader::Skip() {
    const std::size_t before = kept_.size();
    kept_.resize(before + kSkipSamples);
    const std::size_t got = Decode(std::span(kept_).subspan(before)) * kChannels;
    ended_ = got < kSkipSamples;
    kept_.resize(before + got);
    const auto sound =
        std::find_if(kept_.begin() + static_cast<std::ptrdiff_t>(before), kept_.end(),
                     [](float sample) { return std::fabs(SaneSample(sample)) > kSilentSample; });
    const bool found = sound != kept_.end();
    // In whole frames.
    const auto end = static_cast<std::size_t>(sound - kept_.begin()) / kChannels * kChannels;
    const std::size_t cut = end - std::min(end, kLeadSamples);
    kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(cut));
    skipped_.count += static_cast<std::int64_t>(cut / kChannels);
    skipping_ = !found && !ended_;
    over_ = !found && ended_;
}

std::optional<Frames> SoundReader::Length() const {
    auto length = decoder_->Length();
    if (length) *length = *length - excerpt_.start;
    if (excerpt_.length.count > 0) length = length ? std::min(*length, excerpt_.length) : excerpt_.length;
    if (!length) return std::nullopt;
    return Frames{std::max<std::int64_t>(length->count - skipped_.count, 1)};
}

}  // namespace sorakaze::sound
