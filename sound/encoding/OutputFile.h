// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A file that is written under a temporary name beside its target, and replaces that when it is complete. Not
// for several threads at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace sorakaze::sound {

class OutputFile {
  public:
    /// Throws SoundFileError when nothing can be written there.
    explicit OutputFile(const std::filesystem::path& file);
    /// Removes what was written, unless it was published.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Writes all of it, or throws SoundFileError.
    void Write(const void* data, std::size_t bytes);
    /// The position of the next Write, from the file's beginning.
    void Seek(std::int64_t position);
    std::int64_t Position() const;
    std::int64_t Size() const;

    /// Closes the file and gives it its name. Throws SoundFileError.
    void Publish();

    const std::filesystem::path& Name() const { return target_; }

  private:
    [[noreturn]] void Fail(int error) const;

    std::filesystem::path target_;
    std::filesystem::path temporary_;
    int descriptor_ = -1;
};

}  // namespace sorakaze::sound
