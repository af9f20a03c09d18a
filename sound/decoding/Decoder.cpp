// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/decoding/Decoder.h"

#include <algorithm>
#include <new>

namespace sorakaze::sound {

std::unique_ptr<Decoder> Decoder::Open(std::unique_ptr<InputFile> file, const std::string& name,
                                       unsigned helpers, Converter::Fold fold, Frames start) {
    if (!file) throw std::bad_alloc();
    auto reader = PacketReader::Open(std::move(file), name);
    if (!reader) return nullptr;
    auto source = helpers > 0 && start.count == 0 ? MakePartedFrames(reader, helpers) : nullptr;
    if (!source) source = MakeSequentialFrames(std::move(reader));
    if (!source) return nullptr;

    // The first sound goes into the spare room, from where the first Read takes it.
    std::unique_ptr<Decoder> decoder(new Decoder(std::move(source), fold));
    if (start.count > 0) {
        const auto place = decoder->source_->GoTo(start);
        if (!place.frame) return nullptr;
        decoder->pending_ = place.frame;
        decoder->converted_ = place.sample;
    }
    while (decoder->spareEnd_ == 0 && !decoder->ended_) decoder->Advance({});
    return decoder->spareEnd_ > 0 ? std::move(decoder) : nullptr;
}

std::size_t Decoder::Read(std::span<float> interleaved) {
    std::size_t done = 0;
    const std::size_t wanted = interleaved.size() / kChannels;
    while (done < wanted) {
        const auto room = interleaved.subspan(done * kChannels);
        if (spareBegin_ < spareEnd_)
            done += TakeSpare(room);
        else if (!ended_)
            done += Advance(room);
        else
            break;
    }
    return done;
}

/// One step: converts a frame into `room` or into the spare room. Returns the frames written to `room`.
std::size_t Decoder::Advance(std::span<float> room) {
    if (!pending_) {
        pending_ = source_->Next();
        converted_ = 0;
    }
    if (!pending_) {
        ended_ = true;
        return Flush(room);
    }
    if (!converter_.Fits(*pending_)) {
        const std::size_t frames = Flush(room);
        // A frame that can't be converted is skipped.
        if (!converter_.SetUp(*pending_)) pending_ = nullptr;
        return frames;
    }
    const int count = std::min(pending_->nb_samples - converted_, converter_.Step());
    const auto target = RoomFor(converter_.Bound(count), room);
    const std::size_t frames = converter_.Convert(*pending_, converted_, count, target);
    converted_ += count;
    if (converted_ == pending_->nb_samples) pending_ = nullptr;
    return Delivered(frames, target, room);
}

/// Takes what the converter still holds.
std::size_t Decoder::Flush(std::span<float> room) {
    const auto target = RoomFor(converter_.Bound(0), room);
    return Delivered(converter_.Flush(target), target, room);
}

/// The caller's room where `bound` frames fit into it for sure, and the spare room otherwise.
std::span<float> Decoder::RoomFor(std::size_t bound, std::span<float> room) {
    const std::size_t samples = bound * kChannels;
    if (samples <= room.size()) return room.first(samples);
    if (spare_.size() < samples) spare_.resize(samples);
    return std::span(spare_).first(samples);
}

/// Counts `frames` that were written to `target`. Returns how many of them are in the caller's buffer.
std::size_t Decoder::Delivered(std::size_t frames, std::span<float> target, std::span<float> room) {
    if (target.data() == room.data()) return frames;
    spareBegin_ = 0;
    spareEnd_ = frames * kChannels;
    return 0;
}

std::size_t Decoder::TakeSpare(std::span<float> room) {
    const std::size_t samples = std::min(room.size() / kChannels * kChannels, spareEnd_ - spareBegin_);
    std::copy_n(spare_.begin() + static_cast<std::ptrdiff_t>(spareBegin_), samples, room.begin());
    spareBegin_ += samples;
    return samples / kChannels;
}

}  // namespace sorakaze::sound
