// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/decoding/Converter.h"

#include <algorithm>
#include <array>

#include "sound/Frames.h"

namespace sorakaze::sound {
namespace {

const AVChannelLayout kStereo = AV_CHANNEL_LAYOUT_STEREO;

/// Lower and higher rates don't occur; their filters and results would need any amount of memory.
constexpr int kLowestRate = 100, kHighestRate = 6'000'000;

constexpr int kMostChannels = 64;

/// The library keeps the pointer that it is given, so the map outlives every conversion.
constexpr std::array<int, 2> kFirstTwo{0, 1};

/// Layouts that the mixing matrix can't be derived from (unordered or custom channels) count as the usual
/// layout for their number of channels.
bool HasKnownOrder(const AVChannelLayout& layout) {
    return layout.order == AV_CHANNEL_ORDER_NATIVE && av_channel_layout_check(&layout) == 1;
}

AvPointer<SwrContext> Allocate(AVChannelLayout layout, const AVFrame& frame) {
    SwrContext* context = nullptr;
    AVChannelLayout stereo = kStereo;
    swr_alloc_set_opts2(&context, &stereo, AV_SAMPLE_FMT_FLT, kSampleRate, &layout,
                        static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    return AvPointer<SwrContext>(context);
}

/// The usual downmix; mono goes to both sides at its own level.
AvPointer<SwrContext> MakeUsual(const AVChannelLayout& layout, const AVFrame& frame, Converter::Fold fold) {
    auto context = Allocate(layout, frame);
    if (!context) return nullptr;
    // The most that the coefficients of a side may add up to before all are scaled down.
    const double mostSum = fold == Converter::Fold::Scaled ? 1.0 : kMostChannels;
    av_opt_set_double(context.get(), "rematrix_maxval", mostSum, 0);
    constexpr std::array<double, 2> kMonoToBoth{1.0, 1.0};
    if (layout.nb_channels == 1 && swr_set_matrix(context.get(), kMonoToBoth.data(), 1) < 0) return nullptr;
    return swr_init(context.get()) < 0 ? nullptr : std::move(context);
}

/// For channel counts without a usual layout: the first two channels are the two sides.
AvPointer<SwrContext> MakeFirstTwo(const AVChannelLayout& layout, const AVFrame& frame) {
    auto context = Allocate(kStereo, frame);
    AVChannelLayout unordered{};
    unordered.order = AV_CHANNEL_ORDER_UNSPEC;
    unordered.nb_channels = layout.nb_channels;
    if (!context || layout.nb_channels < 2 || swr_set_channel_mapping(context.get(), kFirstTwo.data()) < 0 ||
        av_opt_set_chlayout(context.get(), "ichl", &unordered, 0) < 0 ||
        av_opt_set_int(context.get(), "uch", kFirstTwo.size(), 0) < 0)
        return nullptr;
    return swr_init(context.get()) < 0 ? nullptr : std::move(context);
}

}  // namespace

Converter::~Converter() {
    av_channel_layout_uninit(&layout_);
}

bool Converter::Fits(const AVFrame& frame) const {
    return context_ && frame.format == format_ && frame.sample_rate == rate_ &&
           av_channel_layout_compare(&frame.ch_layout, &layout_) == 0;
}

bool Converter::SetUp(const AVFrame& frame) {
    context_.reset();
    framesIn_ = framesOut_ = 0;
    if (frame.sample_rate < kLowestRate || frame.sample_rate > kHighestRate) return false;
    if (frame.ch_layout.nb_channels < 1 || frame.ch_layout.nb_channels > kMostChannels) return false;

    format_ = frame.format;
    rate_ = frame.sample_rate;
    av_channel_layout_uninit(&layout_);
    if (av_channel_layout_copy(&layout_, &frame.ch_layout) < 0) return false;

    AVChannelLayout usual{};
    if (HasKnownOrder(layout_))
        av_channel_layout_copy(&usual, &layout_);
    else
        av_channel_layout_default(&usual, layout_.nb_channels);
    context_ = MakeUsual(usual, frame, fold_);
    if (!context_) context_ = MakeFirstTwo(layout_, frame);
    av_channel_layout_uninit(&usual);
    return context_ != nullptr;
}

int Converter::Step() const {
    constexpr std::int64_t kUsual = 4096, kMostOut = 32768;
    return static_cast<int>(std::clamp<std::int64_t>(kMostOut * rate_ / kSampleRate, 1, kUsual));
}

std::size_t Converter::Bound(int inputFrames) const {
    return context_ ? static_cast<std::size_t>(std::max(0, swr_get_out_samples(context_.get(), inputFrames)))
                    : 0;
}

std::size_t Converter::Convert(const AVFrame& frame, int begin, int count, std::span<float> out) {
    const auto format = static_cast<AVSampleFormat>(format_);
    const bool planar = av_sample_fmt_is_planar(format) != 0;
    const int step = av_get_bytes_per_sample(format) * (planar ? 1 : layout_.nb_channels);
    planes_.resize(planar ? static_cast<std::size_t>(layout_.nb_channels) : 1);
    for (std::size_t i = 0; i < planes_.size(); ++i)
        planes_[i] = frame.extended_data[i] + static_cast<std::ptrdiff_t>(begin) * step;

    auto* target = reinterpret_cast<std::uint8_t*>(out.data());
    const int room = static_cast<int>(out.size() / kChannels);
    const int got = swr_convert(context_.get(), &target, room, planes_.data(), count);
    if (got < 0) return 0;
    framesIn_ += count;
    framesOut_ += got;
    return static_cast<std::size_t>(got);
}

std::size_t Converter::Flush(std::span<float> out) {
    if (!context_) return 0;
    auto* target = reinterpret_cast<std::uint8_t*>(out.data());
    const int got = std::max(
        0, swr_convert(context_.get(), &target, static_cast<int>(out.size() / kChannels), nullptr, 0));
    context_.reset();
    const std::int64_t due = av_rescale(framesIn_, kSampleRate, rate_) - framesOut_;
    return static_cast<std::size_t>(std::clamp<std::int64_t>(due, 0, got));
}

}  // namespace sorakaze::sound
