// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The as-run log: what was aired, said and failed, and when by the wall clock. JSON Lines, a file a day,
// YYYY-MM-DD.jsonl by the local date. Each line reaches the file by itself, on a thread of the log's own, so
// that a slow disk holds nobody up. A full disk loses lines, which are counted, and never tears others.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "onair/WallTime.h"
#include "show/ShowObserver.h"

namespace sorakaze::onair {

class AsRunLog final : public ShowObserver {
  public:
    /// Creates the folder and begins or continues today's file. Throws std::runtime_error, one line, where
    /// that can't be done. `now` tells the time; it is called by whoever notes something.
    explicit AsRunLog(
        std::filesystem::path folder,
        std::function<WallTime()> now = [] { return std::chrono::system_clock::now(); });
    /// Writes what is left.
    ~AsRunLog() override;
    AsRunLog(const AsRunLog&) = delete;
    AsRunLog& operator=(const AsRunLog&) = delete;

    void OnShowEvent(const ShowEvent& event) override;

    // Any thread:

    /// What isn't an event of a show.
    void Note(std::string_view what, const ShowEvent::Fields& fields = {});
    /// The file is opened anew for the next line: someone has moved it away.
    void Reopen();
    /// Returns when all lines so far are written or lost.
    void Flush();
    /// One line for people, when lines begin to get lost and when that is over. Empty if there is no news.
    std::string TakeNews();

  private:
    struct Entry {
        WallTime time;
        std::string line;
    };

    void Add(Entry entry);
    void WriteAll();
    void Write(const Entry& entry);
    /// 0, or why not as errno.
    int Open(const std::string& day);
    int Append(const std::string& line);
    void Close();

    const std::filesystem::path folder_;
    const std::function<WallTime()> now_;

    std::mutex mutex_;  ///< guards these
    std::condition_variable changed_;
    std::deque<Entry> entries_;
    std::uint64_t overflown_ = 0;  ///< lines that the queue had no room for
    bool reopen_ = false;
    bool busy_ = false;
    bool ending_ = false;
    std::string news_;

    // The writing thread's:
    int file_ = -1;
    std::string day_;
    bool torn_ = false;  ///< the file ends within a line
    std::uint64_t lost_ = 0;

    std::thread thread_;
};

}  // namespace sorakaze::onair
