// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/FileStamp.h"

#include <ctime>

namespace sorakaze::player {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;
/// The coarsest clock of the file systems in use ticks every two seconds.
constexpr std::int64_t kCoarsestTick = 2 * kNanoseconds;

std::int64_t Nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * kNanoseconds + time.tv_nsec;
}

}  // namespace

FileStamp StampOf(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
            Nanoseconds(status.st_ctim)};
}

std::optional<FileStamp> StampOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return StampOf(status);
}

bool IsSettled(const FileStamp& stamp) {
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    const std::int64_t age = Nanoseconds(time) - stamp.modified;
    // A time well in the future is another machine's clock, and no reason to read a file for ever.
    return age > kCoarsestTick || age < -kCoarsestTick;
}

}  // namespace sorakaze::player
