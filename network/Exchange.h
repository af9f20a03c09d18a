// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The state that a socket and the network's thread share for one connection: bytes in both directions, and
// events. Each connection has its own, so that nothing of an old connection reaches a new one.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace sorakaze::network {

enum class Failure {
    NoSocket,      ///< the system has none left
    NoAddress,     ///< the name isn't known
    AddressInUse,  ///< no port is left on this side
    Unreachable,   ///< refused, no way there, or no answer
    Lost           ///< closed by the other end, or cut
};

class Exchange {
  public:
    /// The most received bytes that wait to be taken: then reading from the network pauses.
    static constexpr std::size_t kReceiveAhead = 1 << 20;

    /// `onDue` is called on the network's thread, without a lock, when something becomes due and nothing was.
    explicit Exchange(std::function<void()> onDue) : onDue_(std::move(onDue)) {}

    // For the socket:

    /// True when one of the four below would give something. Any thread.
    bool AnyDue() const { return due_; }
    bool TakeConnected();
    /// Appends what was received to `received`; false if there is nothing new.
    bool TakeReceived(std::string& received);
    /// All that was queued has been passed to the system.
    bool TakeSent();
    /// The connection's end. Comes after all the others.
    std::optional<Failure> TakeFailure();

    void Queue(std::string_view bytes);
    /// Drops received bytes that weren't taken, and those queued that weren't sent.
    void Purge();
    /// From here on nothing becomes due.
    void Abandon();
    /// True when reading has paused, and waits for Connection::Serve.
    bool IsPaused();

    // For the network's thread:

    void TellConnected();
    void TellReceived(std::string_view bytes);
    void TellFailed(Failure failure);
    /// How many bytes may be received; with 0 a pause begins.
    std::size_t Room();
    /// True once after a pause, when there is room again.
    bool EndPause();
    /// `sending` is being sent, and the system has taken `at` bytes of it. Fetches more when it has taken
    /// all. False when there is nothing to send; then what was queued counts as sent.
    bool HasMore(std::string& sending, std::size_t& at);

  private:
    bool TakeMark(bool& mark);
    void CountDue();
    /// Notes something as due with `note`, and tells.
    template <typename Note>
    void Tell(Note note);

    const std::function<void()> onDue_;
    std::atomic<bool> due_{false};

    std::mutex mutex_;  ///< guards all below
    bool abandoned_ = false;
    bool connected_ = false;
    std::string received_;
    bool paused_ = false;
    std::string queued_;
    bool sentIsDue_ = false;  ///< something was queued since the last time all was sent
    bool dropSending_ = false;
    bool sent_ = false;
    std::optional<Failure> failure_;
};

}  // namespace sorakaze::network
