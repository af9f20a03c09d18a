// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Sound files that no honest program writes, made in memory or as files with holes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sorakaze::sound::testing {

inline std::string LittleEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i));
    return text;
}

inline std::string BigEndian(std::uint64_t value, int bytes) {
    const std::string little = LittleEndian(value, bytes);
    return {little.rbegin(), little.rend()};
}

/// Seven bits a byte, as ID3v2 has its sizes.
inline std::string Syncsafe(std::uint32_t value) {
    std::string text;
    for (const int shift : {21, 14, 7, 0}) text += static_cast<char>(value >> shift & 0x7F);
    return text;
}

struct WavForm {
    std::uint32_t rate = 48000;
    std::uint16_t channels = 2;
    std::int64_t mask = -1;         ///< of the extensible form; negative: the plain form
    std::uint64_t statedBytes = 0;  ///< of the data chunk, where not what there is
};

/// A 16-bit WAV of `frames` frames of a constant level of a quarter.
inline std::string Wav(const WavForm& form, std::size_t frames) {
    const std::uint32_t align = form.channels * 2u;
    const std::string common = LittleEndian(form.channels, 2) + LittleEndian(form.rate, 4) +
                               LittleEndian(form.rate * align, 4) + LittleEndian(align, 2) +
                               LittleEndian(16, 2);
    std::string header = LittleEndian(1, 2) + common;
    if (form.mask >= 0) {
        constexpr std::string_view kPcm("\x01\0\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 16);
        header = LittleEndian(0xFFFE, 2) + common + LittleEndian(22, 2) + LittleEndian(16, 2) +
                 LittleEndian(static_cast<std::uint64_t>(form.mask), 4) + std::string(kPcm);
    }
    std::string data;
    for (std::size_t i = 0; i < frames * form.channels; ++i) data += LittleEndian(8192, 2);
    return "RIFF" + LittleEndian(4 + 8 + header.size() + 8 + data.size(), 4) + "WAVEfmt " +
           LittleEndian(header.size(), 4) + header + "data" +
           LittleEndian(form.statedBytes ? form.statedBytes : data.size(), 4) + data;
}

/// An MP4 file of `depth` atoms, each within the one before.
inline std::string NestedAtoms(std::uint32_t depth) {
    std::string atoms = BigEndian(24, 4) + "ftypM4A " + std::string(4, '\0') + "M4A mp42";
    for (std::uint32_t i = 0; i < depth; ++i) atoms += BigEndian(8 * (depth - i), 4) + "moov";
    return atoms;
}

/// An ID3v2 tag of `depth` chapters, each within the one before.
inline std::string NestedChapters(std::uint32_t depth) {
    const std::string fields = std::string("a\0", 2) + std::string(16, '\0');
    const std::uint32_t each = 10 + static_cast<std::uint32_t>(fields.size());
    std::string frames;
    for (std::uint32_t i = 0; i < depth; ++i)
        frames += "CHAP" + Syncsafe((depth - i) * each - 10) + std::string(2, '\0') + fields;
    return std::string("ID3\x04\0\0", 6) + Syncsafe(static_cast<std::uint32_t>(frames.size())) + frames;
}

/// A WAV of `count` empty chunks and no sound.
inline std::string ManyChunks(std::uint32_t count) {
    std::string chunks;
    chunks.reserve(std::size_t{count} * 8 + 12);
    chunks = "RIFF" + LittleEndian(4 + std::uint64_t{count} * 8, 4) + "WAVE";
    for (std::uint32_t i = 0; i < count; ++i) chunks += std::string("junk\0\0\0\0", 8);
    return chunks;
}

/// `flac` with so many comments in place of all its metadata but the first block.
inline std::string WithComments(const std::string& flac, std::uint32_t count) {
    constexpr std::size_t kStreamInfoEnd = 4 + 4 + 34;
    std::size_t audio = 4;
    for (bool last = false; !last;) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(flac[audio + at]); };
        last = (byte(0) & 0x80) != 0;
        audio += 4 + (std::size_t{byte(1)} << 16 | std::size_t{byte(2)} << 8 | byte(3));
    }
    std::string comments = LittleEndian(0, 4) + LittleEndian(count, 4);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string comment = "K" + std::to_string(i) + "=v";
        comments += LittleEndian(comment.size(), 4) + comment;
    }
    return flac.substr(0, 4) + std::string(1, '\0') + flac.substr(5, kStreamInfoEnd - 5) + "\x84" +
           BigEndian(comments.size(), 3) + comments + flac.substr(audio);
}

}  // namespace sorakaze::sound::testing
