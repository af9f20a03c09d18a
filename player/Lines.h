// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The lines of a text file that arrives piece by piece. A line too long to be of use is dropped, so that the
// memory that this takes doesn't depend on the file.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace sorakaze::player {

class Lines {
  public:
    /// Called for each line without its end. The view is valid during the call.
    using Visit = std::function<void(std::string_view line)>;

    Lines(std::size_t longest, Visit visit) : longest_(longest), visit_(std::move(visit)) {}

    /// A line ends with CR, LF or CR LF. UTF-16 with a byte order mark becomes UTF-8, a UTF-8 byte order mark
    /// is dropped, and all else stays as it is, byte by byte.
    void Read(std::string_view piece);
    /// The last line needs no end.
    void Finish();

  private:
    enum class Encoding { Unknown, Bytes, Utf16 };

    bool FindEncoding();
    void ReadUtf16();
    std::string Decoded(std::string_view utf16) const;
    void Split(std::string_view text);
    void Add(std::string_view text);
    void EndLine();

    const std::size_t longest_;
    const Visit visit_;
    Encoding encoding_ = Encoding::Unknown;
    bool bigEndian_ = false;
    std::string undecoded_;
    std::string line_;
    bool tooLong_ = false;
    bool afterCr_ = false;
};

}  // namespace sorakaze::player
