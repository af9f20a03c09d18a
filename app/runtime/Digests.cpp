// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Digests.h"

#include <openssl/evp.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>

namespace sorakaze {

String MD5(const String& data) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (EVP_Digest(data.Bytes().data(), data.Bytes().size(), digest, &size, EVP_md5(), nullptr) != 1) {
        throw std::runtime_error("MD5 isn't offered by this system's OpenSSL.");
    }
    return std::string(reinterpret_cast<const char*>(digest), size);
}

String EncodeBase64(const String& data, std::int32_t lineWrap) {
    // Whole groups of three bytes, few enough for the library's int.
    constexpr std::size_t kPiece = 3 << 20;
    const std::string_view bytes = data.Bytes();
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    std::size_t end = 0;
    for (std::size_t at = 0; at < bytes.size(); at += kPiece) {
        const auto piece = bytes.substr(at, kPiece);
        end += static_cast<std::size_t>(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data() + end),
                                                        reinterpret_cast<const unsigned char*>(piece.data()),
                                                        static_cast<int>(piece.size())));
    }
    text.resize(end);
    if (lineWrap <= 0 || text.empty()) return text;
    const auto width = static_cast<std::size_t>(lineWrap);
    std::string lines;
    lines.reserve(text.size() + text.size() / width * 2);
    for (std::size_t at = 0; at < text.size(); at += width) {
        if (at > 0) lines += "\r\n";
        lines.append(text, at, width);
    }
    return lines;
}

}  // namespace sorakaze
