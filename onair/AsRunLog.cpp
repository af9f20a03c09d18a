// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "onair/AsRunLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "show/EventLine.h"

namespace sorakaze::onair {
namespace {

/// Lines that wait for a slow disk.
constexpr std::size_t kLongestQueue = 10'000;

std::string Reason(int error) {
    return std::generic_category().message(error);
}

}  // namespace

AsRunLog::AsRunLog(std::filesystem::path folder, std::function<WallTime()> now)
    : folder_(std::move(folder)), now_(std::move(now)) {
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    const int failure = error ? error.value() : Open(IsoDay(now_()));
    if (failure != 0)
        throw std::runtime_error("No log can be written in " + folder_.string() + ": " + Reason(failure) +
                                 ".");
    thread_ = std::thread([this] { WriteAll(); });
}

AsRunLog::~AsRunLog() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    thread_.join();
    Close();
}

void AsRunLog::OnShowEvent(const ShowEvent& event) {
    const WallTime time = now_();
    Add({time, EventLine(event, IsoTime(time))});
}

void AsRunLog::Note(std::string_view what, const ShowEvent::Fields& fields) {
    const WallTime time = now_();
    Add({time, NoteLine(IsoTime(time), what, fields)});
}

void AsRunLog::Add(Entry entry) {
    {
        const std::lock_guard lock(mutex_);
        if (entries_.size() < kLongestQueue)
            entries_.push_back(std::move(entry));
        else
            ++overflown_;
    }
    changed_.notify_all();
}

void AsRunLog::Reopen() {
    const std::lock_guard lock(mutex_);
    reopen_ = true;
}

void AsRunLog::Flush() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return entries_.empty() && !busy_; });
}

std::string AsRunLog::TakeNews() {
    const std::lock_guard lock(mutex_);
    return std::exchange(news_, {});
}

void AsRunLog::WriteAll() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return ending_ || !entries_.empty(); });
        if (entries_.empty()) return;
        const Entry entry = std::move(entries_.front());
        entries_.pop_front();
        lost_ += std::exchange(overflown_, 0);
        if (std::exchange(reopen_, false)) Close();
        busy_ = true;
        lock.unlock();
        Write(entry);
        lock.lock();
        busy_ = false;
        changed_.notify_all();
    }
}

void AsRunLog::Write(const Entry& entry) {
    const std::string day = IsoDay(entry.time);
    int error = 0;
    if (file_ < 0 || day != day_) error = Open(day);
    if (error == 0 && lost_ > 0) {
        error = Append(NoteLine(IsoTime(entry.time), "log", {{"lost", static_cast<std::int32_t>(lost_)}}));
        if (error == 0) {
            const std::lock_guard lock(mutex_);
            news_ = "The log in " + folder_.string() + " is written again; " + std::to_string(lost_) +
                    (lost_ == 1 ? " line is lost." : " lines are lost.");
            lost_ = 0;
        }
    }
    if (error == 0) error = Append(entry.line);
    if (error == 0) return;
    if (lost_ == 0) {
        const std::lock_guard lock(mutex_);
        news_ = "The log in " + folder_.string() + " can't be written: " + Reason(error) + ".";
    }
    ++lost_;
    Close();
}

int AsRunLog::Open(const std::string& day) {
    Close();
    // Read too, for the last byte; never waiting, should a pipe have that name.
    const int file = open((folder_ / (day + ".jsonl")).c_str(),
                          O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644);
    if (file < 0) return errno;
    struct stat status {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(file);
        return EINVAL;
    }
    char last = '\n';
    if (status.st_size > 0 && pread(file, &last, 1, status.st_size - 1) != 1) last = '\0';
    torn_ = last != '\n';
    file_ = file;
    day_ = day;
    return 0;
}

int AsRunLog::Append(const std::string& line) {
    const std::string bytes = (torn_ ? "\n" : "") + line + "\n";
    ssize_t written;
    do {
        written = write(file_, bytes.data(), bytes.size());
    } while (written < 0 && errno == EINTR);
    if (written == static_cast<ssize_t>(bytes.size())) {
        torn_ = false;
        return 0;
    }
    return written < 0 ? errno : ENOSPC;  // what has been torn is seen when the file is opened anew
}

void AsRunLog::Close() {
    if (file_ >= 0) close(file_);
    file_ = -1;
}

}  // namespace sorakaze::onair
