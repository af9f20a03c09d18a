// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the studio prints: lines on standard output, messages and progress on standard error. On a terminal
// the progress is a bar below the lines; elsewhere it is a plain line now and then.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>

namespace sorakaze::studio {

/// Any thread.
class Console {
  public:
    Console();
    ~Console();

    /// A line on standard output, without control characters.
    void Line(const std::string& text);
    /// The same on standard error.
    void Message(const std::string& text);
    /// Whether lines and messages are seen side by side.
    bool IsOneTerminal() const { return outIsTerminal_ && errorIsTerminal_; }
    /// `done` is 0 to 1 where the length is known; `showSeconds` is how much of the show there is.
    void Progress(std::optional<double> done, double showSeconds);
    /// Takes the bar away.
    void EndProgress();

  private:
    using Time = std::chrono::steady_clock::time_point;

    void ClearBar();
    std::string BarText(std::optional<double> done, double showSeconds) const;
    std::string Speed(double showSeconds) const;

    const bool outIsTerminal_;
    const bool errorIsTerminal_;
    const Time begin_;
    std::mutex mutex_;  ///< guards the rest, and the order on the terminal
    Time lastBar_;
    int lastTenth_ = 0;
    double lastPlain_ = 0;  ///< show seconds at the last plain line
    bool barShown_ = false;
};

/// "1:02:03" or "2:03".
std::string ClockText(double seconds);

}  // namespace sorakaze::studio
