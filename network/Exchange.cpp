// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/Exchange.h"

#include <utility>

namespace sorakaze::network {

void Exchange::CountDue() {
    due_ = connected_ || sent_ || failure_ || !received_.empty();
}

template <typename Note>
void Exchange::Tell(Note note) {
    bool tell = false;
    {
        const std::lock_guard lock(mutex_);
        if (abandoned_) return;
        const bool wasDue = due_;
        note();
        CountDue();
        tell = due_ && !wasDue;
    }
    if (tell) onDue_();
}

bool Exchange::TakeMark(bool& mark) {
    const std::lock_guard lock(mutex_);
    const bool was = std::exchange(mark, false);
    CountDue();
    return was;
}

bool Exchange::TakeConnected() {
    return TakeMark(connected_);
}

bool Exchange::TakeSent() {
    return TakeMark(sent_);
}

bool Exchange::TakeReceived(std::string& received) {
    const std::lock_guard lock(mutex_);
    if (received_.empty()) return false;
    if (received.empty()) {
        received.swap(received_);
    } else {
        received += received_;
    }
    received_.clear();
    CountDue();
    return true;
}

std::optional<Failure> Exchange::TakeFailure() {
    const std::lock_guard lock(mutex_);
    if (connected_ || sent_ || !received_.empty()) return std::nullopt;
    const auto failure = std::exchange(failure_, std::nullopt);
    CountDue();
    return failure;
}

void Exchange::Queue(std::string_view bytes) {
    const std::lock_guard lock(mutex_);
    queued_ += bytes;
    sentIsDue_ = true;
}

void Exchange::Purge() {
    const std::lock_guard lock(mutex_);
    received_.clear();
    queued_.clear();
    dropSending_ = true;
    sentIsDue_ = false;
    CountDue();
}

void Exchange::Abandon() {
    const std::lock_guard lock(mutex_);
    abandoned_ = true;
    connected_ = sent_ = false;
    received_ = {};
    queued_ = {};
    failure_.reset();
    CountDue();
}

bool Exchange::IsPaused() {
    const std::lock_guard lock(mutex_);
    return paused_;
}

bool Exchange::EndPause() {
    const std::lock_guard lock(mutex_);
    return received_.size() < kReceiveAhead && std::exchange(paused_, false);
}

void Exchange::TellConnected() {
    Tell([this] { connected_ = true; });
}

void Exchange::TellReceived(std::string_view bytes) {
    Tell([&] { received_ += bytes; });
}

void Exchange::TellFailed(Failure failure) {
    Tell([&] { failure_ = failure; });
}

std::size_t Exchange::Room() {
    const std::lock_guard lock(mutex_);
    paused_ = received_.size() >= kReceiveAhead;
    return paused_ ? 0 : kReceiveAhead - received_.size();
}

bool Exchange::HasMore(std::string& sending, std::size_t& at) {
    bool more = false;
    Tell([&] {
        if (std::exchange(dropSending_, false)) at = sending.size();
        more = at < sending.size();
        if (more) return;
        at = 0;
        sending = std::exchange(queued_, {});
        more = !sending.empty();
        if (!more && std::exchange(sentIsDue_, false)) sent_ = true;
    });
    return more;
}

}  // namespace sorakaze::network
