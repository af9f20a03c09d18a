// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "base/Ascii.h"
#include "speech/reading/Rules.h"

namespace sorakaze::reading {
namespace {

/// A name without scheme and blanks counts as an address only with one of these ends.
constexpr std::string_view kDomains =
    " com org net de at ch jp uk fm tv info eu fr it es nl se no us ca au biz edu gov radio music band cc ";
constexpr std::size_t kLongestHost = 60, kLongestPath = 20;

bool IsHostCharacter(char c) {
    return ascii::IsLetter(c) || ascii::IsDigit(c) || c == '-' || c == '.';
}

/// A host with a domain at its end and letters before each of its points, such as "bbc.co.uk".
bool IsHost(std::string_view host, bool anyDomain) {
    const auto point = host.rfind('.');
    if (point == host.npos || point == 0 || point + 1 == host.size() || host.size() > kLongestHost)
        return false;
    if (!std::all_of(host.begin(), host.end(), IsHostCharacter) || host.find("..") != host.npos) return false;
    const std::string_view name = host.substr(0, point);
    // "will.i.am" and "r.e.m." have points between letters too.
    const bool isLong = name.find_last_of('.') == name.npos ? name.size() >= 2 : name.size() >= 4;
    if (!isLong || std::none_of(name.begin(), name.end(), ascii::IsLetter)) return false;
    return anyDomain || IsOneOf(ascii::Lowered(host.substr(point + 1)), kDomains);
}

std::string InWords(std::string_view host, const Words& words) {
    std::string said;
    for (const char c : host)
        said += c == '.' ? " " + std::string(words.dot) + " " : std::string(1, c == '-' ? ' ' : c);
    return said;
}

bool DropPrefix(std::string_view& text, std::string_view prefix) {
    if (ascii::Lowered(text.substr(0, prefix.size())) != prefix) return false;
    text.remove_prefix(prefix.size());
    return true;
}

/// What is said for the first part of a path, if it is short and in letters.
std::string PathInWords(std::string_view path, const Words& words) {
    if (path.size() < 2 || path.size() > kLongestPath) return {};
    path.remove_prefix(1);
    if (path.ends_with('/')) path.remove_suffix(1);
    if (path.empty() || !std::all_of(path.begin(), path.end(), ascii::IsLetter)) return {};
    return " " + std::string(words.slash) + " " + std::string(path);
}

/// Empty for what is no address.
std::string AddressInWords(std::string_view address, const Words& words) {
    const bool hasScheme = DropPrefix(address, "https://") || DropPrefix(address, "http://") ||
                           DropPrefix(address, "https:/") || DropPrefix(address, "http:/");
    const bool isWeb = DropPrefix(address, "www.") || hasScheme;
    if (const auto at = address.find('@'); !isWeb && at != address.npos && at > 0) {
        const std::string_view user = address.substr(0, at), host = address.substr(at + 1);
        if (!std::all_of(user.begin(), user.end(), IsHostCharacter) || !IsHost(host, true)) return {};
        return InWords(user, words) + " " + std::string(words.at) + " " + InWords(host, words);
    }
    const std::string_view host = address.substr(0, address.find_first_of("/?#:"));
    if (!IsHost(host, isWeb)) return {};
    return InWords(host, words) + PathInWords(address.substr(host.size()), words);
}

}  // namespace

std::string WithWebAddressesInWords(std::string_view text, Main voice) {
    // Of an address in a Japanese text, the letters are read as English ones.
    const Words& words = WordsOf(voice == Main::Japanese ? Main::English : voice);
    if (words.dot.empty()) return std::string(text);
    std::string result;
    while (!text.empty()) {
        const std::string_view chunk = text.substr(0, text.find(' '));
        const auto last = chunk.find_last_not_of(",.!?;:)\"'");
        const std::string_view address = last == chunk.npos ? std::string_view() : chunk.substr(0, last + 1);
        const std::string said = address.find('.') == address.npos ? "" : AddressInWords(address, words);
        result += said.empty() ? std::string(chunk) : said + std::string(chunk.substr(address.size()));
        const auto blanks = std::min(text.find_first_not_of(' ', chunk.size()), text.size());
        result += text.substr(chunk.size(), blanks - chunk.size());
        text.remove_prefix(blanks);
    }
    return result;
}

}  // namespace sorakaze::reading
