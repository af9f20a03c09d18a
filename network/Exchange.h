// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a socket and the network's thread hand each other over one connection: bytes both ways, and what has
// happened. Each connection has one of its own, so that nothing of an old one is taken for the new one's.
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
    NoSocket,      ///< the system gives none
    NoAddress,     ///< the name isn't known
    AddressInUse,  ///< no port is left on this side
    Unreachable,   ///< refused, no way there, or no answer
    Lost           ///< closed by the other end, or torn
};

class Exchange {
  public:
    /// Received bytes that may wait to be taken. When that many wait, reading from the network pauses.
    static constexpr std::size_t kReceiveAhead = 1 << 20;

    /// `onDue` is called on the network's thread, and holds no lock, when something has become due while
    /// nothing was.
    explicit Exchange(std::function<void()> onDue) : onDue_(std::move(onDue)) {}

    // For the socket:

    /// True when one of the four below would give something. Any thread.
    bool AnyDue() const { return due_; }
    bool TakeConnected();
    /// Appends what was received to `received`; false if there is nothing new.
    bool TakeReceived(std::string& received);
    /// What was queued is sent: handed to the system.
    bool TakeSent();
    /// The connection's end. Comes behind all the others.
    std::optional<Failure> TakeFailure();

    void Queue(std::string_view bytes);
    /// Drops received bytes that weren't taken, and those queued that weren't sent.
    void Purge();
    /// Nothing becomes due from here on.
    void Abandon();
    /// True when reading has paused, and waits for Connection::Serve.
    bool IsPaused();

    // For the network's thread:

    void TellConnected();
    void TellReceived(std::string_view bytes);
    void TellFailed(Failure failure);
    /// How many bytes may be received; where it is 0, a pause has begun.
    std::size_t Room();
    /// True once behind a pause, when there is room again.
    bool EndPause();
    /// `sending` holds what is on its way, `at` how much of that the system has taken. Fetches more when all
    /// is. False when there is nothing to send; then what was queued counts as sent.
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
