// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace sorakaze {

class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    ~FileDescriptor() { Close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            Close();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }

    int Get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }
    /// For an owner that closes it by itself.
    int Release() { return std::exchange(number_, -1); }
    void Close() {
        if (number_ >= 0) ::close(std::exchange(number_, -1));
    }

  private:
    int number_ = -1;
};

}  // namespace sorakaze
