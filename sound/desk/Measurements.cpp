// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/desk/Measurements.h"

#include <algorithm>
#include <utility>

#include "base/RegularFile.h"

namespace sorakaze::sound {
namespace {

/// Of a show of days only the last files are remembered.
constexpr std::size_t kMostKnown = 500;
/// Who asks for more wants the newest.
constexpr std::size_t kMostWanted = 8;

}  // namespace

Measurements::Measurements(std::shared_ptr<Decoders> decoders, Decoders::Priority priority)
    : decoders_(std::move(decoders)), priority_(priority) {}

Measurements::~Measurements() = default;

std::optional<Measurements::Key> Measurements::KeyOf(const std::filesystem::path& path,
                                                     const DecodeOptions& options) {
    const auto file = OpenNonEmptyFile(path);
    return file ? std::optional(Key{IdentityOf(*file), options}) : std::nullopt;
}

void Measurements::Want(const std::filesystem::path& file, Frames part, const DecodeOptions& options) {
    const auto key = KeyOf(file, options);
    if (!key) return;
    const std::lock_guard lock(mutex_);
    if (Known(*key, part) || IsWanted(*key, part)) return;
    wanted_.push_front({*key, file, part});
    if (wanted_.size() > kMostWanted) wanted_.pop_back();
    if (!thread_.joinable()) thread_ = std::jthread([this](const std::stop_token& stop) { Work(stop); });
    changed_.notify_all();
}

std::optional<Measurement> Measurements::Find(const std::filesystem::path& file,
                                              const DecodeOptions& options) const {
    const auto key = KeyOf(file, options);
    if (!key) return std::nullopt;
    const std::lock_guard lock(mutex_);
    const Entry* const entry = Known(*key, {});
    return entry ? entry->result : std::nullopt;
}

bool Measurements::IsLost(const std::filesystem::path& file, const DecodeOptions& options) const {
    const auto key = KeyOf(file, options);
    if (!key) return false;
    const std::lock_guard lock(mutex_);
    const Entry* const entry = Known(*key, {});
    return entry && !entry->result;
}

std::optional<Measurement> Measurements::Await(const std::filesystem::path& file, Frames part,
                                               const DecodeOptions& options,
                                               std::chrono::milliseconds most) const {
    const auto key = KeyOf(file, options);
    if (!key) return std::nullopt;
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, most, [&] { return !IsWanted(*key, part); });
    const Entry* const entry = Known(*key, part);
    return entry ? entry->result : std::nullopt;
}

std::optional<Measurement> Measurements::MeasureNow(const std::filesystem::path& file,
                                                    const DecodeOptions& options, Frames most) {
    const auto key = KeyOf(file, options);
    if (!key) return std::nullopt;
    {
        const std::lock_guard lock(mutex_);
        if (const Entry* const entry = Known(*key, most)) return entry->result;
    }
    auto result = decoders_->Measure(file, most, options, Decoders::Priority::Normal);
    const std::lock_guard lock(mutex_);
    Keep(*key, most, result);
    return result;
}

void Measurements::Work(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    while (changed_.wait(lock, stop, [this] { return !wanted_.empty(); })) {
        underWay_ = std::move(wanted_.front());
        wanted_.pop_front();
        const Request request = *underWay_;
        lock.unlock();
        auto result = decoders_->Measure(request.file, request.part, request.key.options, priority_, stop);
        lock.lock();
        underWay_.reset();
        Keep(request.key, request.part, std::move(result));
        changed_.notify_all();
    }
}

void Measurements::Keep(const Key& key, Frames part, std::optional<Measurement> result) {
    known_[key] = {part, std::move(result), ++measured_};
    if (known_.size() <= kMostKnown) return;
    const auto byAge = [](const auto& a, const auto& b) { return a.second.number < b.second.number; };
    known_.erase(std::min_element(known_.begin(), known_.end(), byAge));
}

const Measurements::Entry* Measurements::Known(const Key& key, Frames part) const {
    const auto found = known_.find(key);
    if (found == known_.end()) return nullptr;
    const Entry& entry = found->second;
    return entry.part >= part || (entry.result && entry.result->isWhole) ? &entry : nullptr;
}

bool Measurements::IsWanted(const Key& key, Frames part) const {
    const auto fits = [&](const Request& request) { return request.key == key && request.part >= part; };
    return std::any_of(wanted_.begin(), wanted_.end(), fits) || (underWay_ && fits(*underWay_));
}

}  // namespace sorakaze::sound
