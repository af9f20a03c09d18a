// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/Decoders.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <map>
#include <mutex>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

#include "base/RegularFile.h"
#include "sound/DecoderProcess.h"

namespace sorakaze::sound {
namespace {

using Failure = DecoderProcess::Failure;

/// A program that is ended from outside costs no file anything, as long as it comes back.
constexpr int kAttempts = 4;

/// A measuring that isn't done by then comes too late for whoever wanted it.
constexpr std::chrono::minutes kLongestMeasuring{10};
/// In the background a stretch may take so many times as long, since others may use the whole processor.
constexpr int kBackgroundPatience = 6;

/// What a job may allocate. Files of many hours in one kind of container have indexes of a share of their
/// size.
std::uint64_t MemoryFor(const RegularFile& file) {
    constexpr std::uint64_t kUsual = 40u << 20, kMostForIndexes = 192u << 20;
    char head[8]{};
    const bool indexed = ::pread(file.descriptor.Get(), head, sizeof head, 0) == sizeof head &&
                         std::string_view(head + 4, 4) == "ftyp";
    return kUsual +
           (indexed ? std::min(static_cast<std::uint64_t>(file.status.st_size) / 4, kMostForIndexes) : 0);
}

std::filesystem::path& SharedProgram() {
    static std::filesystem::path program;
    return program;
}

std::optional<Frames> ChecksOut(std::int64_t length) {
    constexpr std::int64_t kLongest = std::int64_t{kSampleRate} * 60 * 60 * 24 * 366;
    return length > 0 && length <= kLongest ? std::optional(Frames{length}) : std::nullopt;
}

}  // namespace

struct Decoders::Impl {
    Impl(std::filesystem::path program, std::chrono::milliseconds standstill)
        : stallTimeout(standstill), process(std::move(program)) {}

    struct Answered {
        DecoderProcess::Job job;
        std::string bytes;
    };
    /// Gives a job until it is answered, or fails for good.
    std::variant<Answered, Failure> Ask(DecoderProcess::Order order, const RegularFile& file,
                                        const std::filesystem::path& path,
                                        const DecoderProcess::Patience& patience);
    /// The failure is told by `why`, if there is one, or else by TakeFailures.
    void Note(const std::filesystem::path& file, const FileIdentity& identity, const Failure& failure,
              std::string* why = nullptr);
    /// The file, unless it can't be read or has ended a decoder before.
    std::optional<RegularFile> Admit(const std::filesystem::path& path, std::string* why);
    bool IsBad(const RegularFile& file) { return WhyBad(file).has_value(); }
    std::optional<std::string> WhyBad(const RegularFile& file);

    const std::chrono::milliseconds stallTimeout;
    DecoderProcess process;
    std::mutex mutex;  // guards all below
    std::vector<DecoderFailure> failures;
    std::map<FileIdentity, std::string> badFiles;  ///< and why
};

std::variant<Decoders::Impl::Answered, Failure> Decoders::Impl::Ask(
    DecoderProcess::Order order, const RegularFile& file, const std::filesystem::path& path,
    const DecoderProcess::Patience& patience) {
    Failure failure{};
    order.memory = MemoryFor(file);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        ::lseek(file.descriptor.Get(), 0, SEEK_SET);
        auto begun = process.Begin(order, file.descriptor.Get(), path.filename().string());
        if (auto* job = std::get_if<DecoderProcess::Job>(&begun)) {
            auto answer = process.Await(*job, patience);
            if (auto* bytes = std::get_if<std::string>(&answer))
                return Answered{std::move(*job), std::move(*bytes)};
            process.Kill(job->name);
            failure = std::get<Failure>(std::move(answer));
        } else {
            failure = std::get<Failure>(std::move(begun));
        }
        if (failure.kind != Failure::Ended) break;
    }
    return failure;
}

void Decoders::Impl::Note(const std::filesystem::path& file, const FileIdentity& identity,
                          const Failure& failure, std::string* why) {
    constexpr std::size_t kMost = 1000;
    const std::lock_guard lock(mutex);
    if (failure.kind == Failure::Died || failure.kind == Failure::Slow)
        badFiles.emplace(identity, failure.why);
    if (why)
        *why = failure.why;
    else if (failures.size() < kMost)
        failures.push_back({file, failure.why});
}

std::optional<RegularFile> Decoders::Impl::Admit(const std::filesystem::path& path, std::string* why) {
    auto file = OpenNonEmptyFile(path);
    auto reason = file ? WhyBad(*file) : WhyNotOpened(path);
    if (!reason) return file;
    if (why) *why = *std::move(reason);
    return std::nullopt;
}

std::optional<std::string> Decoders::Impl::WhyBad(const RegularFile& file) {
    const std::lock_guard lock(mutex);
    const auto found = badFiles.find(IdentityOf(file));
    return found == badFiles.end() ? std::nullopt : std::optional(found->second);
}

Decoders::Decoders(std::filesystem::path program, std::chrono::milliseconds stallTimeout)
    : impl_(std::make_unique<Impl>(std::move(program), stallTimeout)) {}
Decoders::~Decoders() = default;

std::shared_ptr<Decoders> Decoders::Shared() {
    static const auto decoders = [] {
        std::error_code ignored;
        std::filesystem::path program = SharedProgram();
        if (program.empty())
            program =
                std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path() / "sorakaze-decoder";
        return std::make_shared<Decoders>(std::move(program));
    }();
    return decoders;
}

void Decoders::SetSharedProgram(std::filesystem::path program) {
    SharedProgram() = std::move(program);
}

std::unique_ptr<DecodedSound> Decoders::Open(const std::filesystem::path& path, Pace pace,
                                             const DecodeOptions& options, Frames measured,
                                             std::string* why) {
    const auto file = impl_->Admit(path, why);
    if (!file) return nullptr;
    try {
        const auto inRing = static_cast<std::uint32_t>(std::min(measured, kMostMeasuredInRing).count);
        const bool isFast = pace == Pace::Fast;
        const std::uint32_t usual = isFast ? kFastRingCapacity : kRingCapacity;
        auto memory = std::make_unique<SharedMemory>(std::max(usual, std::bit_ceil(inRing + (1u << 16))));
        DecoderProcess::Order order{.kind = isFast ? JobKind::PlayFast : JobKind::Play};
        order.ring = {memory->Descriptor(), memory->Capacity()};
        order.options = options;
        order.limit = {inRing};
        auto asked = impl_->Ask(order, *file, path, {.stretch = impl_->stallTimeout});
        if (const auto* failure = std::get_if<Failure>(&asked)) {
            impl_->Note(path, IdentityOf(*file), *failure, why);
            return nullptr;
        }
        auto& [job, bytes] = std::get<Impl::Answered>(asked);
        PlayAnswer answer{};
        if (bytes.size() == sizeof answer) std::memcpy(&answer, bytes.data(), sizeof answer);
        if (answer.result == PlayAnswer::TooLarge)
            impl_->Note(path, IdentityOf(*file), {Failure::Died, "it takes too much memory to decode"}, why);
        if (answer.result == 0 || answer.result > PlayAnswer::TooLarge)
            impl_->Note(path, IdentityOf(*file), {Failure::Died, "its decoder answered nonsense"}, why);
        if (answer.result == PlayAnswer::NoSound && why) *why = "it holds no sound that can be played";
        if (answer.result != PlayAnswer::Playing) {
            impl_->process.Kill(job.name);
            return nullptr;
        }
        return std::make_unique<DecodedSound>(
            DecodedSound::Origin{path, IdentityOf(*file), job.name, order.limit, isFast}, std::move(memory),
            std::move(job.socket), ChecksOut(answer.length), impl_->stallTimeout);
    } catch (const std::system_error& error) {
        impl_->Note(path, IdentityOf(*file), {Failure::NotStarted, error.what()}, why);
        return nullptr;
    }
}

std::optional<std::string> Decoders::ReadTags(const std::filesystem::path& path, std::string* why) {
    const auto file = impl_->Admit(path, why);
    if (!file) return std::nullopt;
    auto asked = impl_->Ask({.kind = JobKind::Tags}, *file, path, {.stretch = impl_->stallTimeout});
    if (auto* answered = std::get_if<Impl::Answered>(&asked)) {
        impl_->process.Kill(answered->job.name);
        return std::move(answered->bytes);
    }
    impl_->Note(path, IdentityOf(*file), std::get<Failure>(asked), why);
    return std::nullopt;
}

std::optional<Measurement> Decoders::Measure(const std::filesystem::path& path, Frames limit,
                                             const DecodeOptions& options, Priority priority,
                                             const std::stop_token& stop) {
    const auto file = OpenNonEmptyFile(path);
    if (!file || impl_->IsBad(*file) || limit.count <= 0) return std::nullopt;
    const FileDescriptor stopped(::eventfd(0, EFD_CLOEXEC));
    const std::stop_callback tell(stop, [&] {
        const std::uint64_t one = 1;
        static_cast<void>(!::write(stopped.Get(), &one, sizeof one));
    });
    const bool background = priority == Priority::Background;
    const DecoderProcess::Order order{.kind = background ? JobKind::MeasureBackground : JobKind::Measure,
                                      .options = options,
                                      .limit = limit};
    const DecoderProcess::Patience patience{impl_->stallTimeout * (background ? kBackgroundPatience : 1),
                                            kLongestMeasuring, stopped.Get()};
    auto asked = impl_->Ask(order, *file, path, patience);
    auto* const answered = std::get_if<Impl::Answered>(&asked);
    if (!answered) return std::nullopt;
    impl_->process.Kill(answered->job.name);
    auto measurement = UnpackMeasurement(answered->bytes);
    return measurement && measurement->length <= limit ? std::move(measurement) : std::nullopt;
}

void Decoders::RecordEnd(DecodedSound& sound) {
    Failure failure{};
    if (sound.Ring().IsCorrupt()) {
        failure = {Failure::Died, "its decoder wrote nonsense"};
    } else if (sound.HasStalled()) {
        failure = {Failure::Slow, "it takes too long to decode"};
    } else if (sound.Ring().IsComplete()) {
        return;
    } else {
        failure = impl_->process.WhyEnded(sound.From().job);
    }
    impl_->Note(sound.From().file, sound.From().identity, failure);
}

void Decoders::End(const DecodedSound& sound) {
    impl_->process.Kill(sound.From().job);
}

std::vector<DecoderFailure> Decoders::TakeFailures() {
    const std::lock_guard lock(impl_->mutex);
    return std::exchange(impl_->failures, {});
}

void Decoders::Cancel() {
    impl_->process.Cancel();
}

void Decoders::ForgetBadFiles() {
    const std::lock_guard lock(impl_->mutex);
    impl_->badFiles.clear();
}

}  // namespace sorakaze::sound
