// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/TextFile.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <system_error>
#include <utility>

#include "base/RegularFile.h"
#include "base/Utf8.h"
#include "base/unicode/Conversion.h"
#include "player/ForeignText.h"

namespace sorakaze::studio {
namespace {

using check::Finding;
using check::Severity;
using unicode::Encoding;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct NamedEncoding {
    Encoding encoding;
    const char* name;
};
constexpr const char* kWestern = "Windows-1252 (Western European)";
/// Signs that two have are the former's.
constexpr NamedEncoding kEncodings[] = {
    {Encoding::ShiftJis, "Shift-JIS"}, {Encoding::EucJp, "EUC-JP"},
    {Encoding::EucKr, "EUC-KR"},       {Encoding::Gbk, "GBK"},
    {Encoding::Windows1252, kWestern}, {Encoding::Windows1251, "Windows-1251 (Cyrillic)"}};

Finding OfFile(Severity severity, const char* code, std::string message) {
    return {0, {}, severity, code, std::move(message), {}};
}

TextFile NoText(const char* code, std::string message) {
    TextFile file;
    file.findings.push_back(OfFile(Severity::Error, code, std::move(message)));
    return file;
}

bool IsUtf32(std::string_view bytes) {
    using namespace std::string_view_literals;
    if (bytes.size() % 4 != 0 || bytes.empty()) return false;
    return bytes.starts_with("\xFF\xFE\0\0"sv) || bytes.starts_with("\0\0\xFE\xFF"sv) ||
           static_cast<std::size_t>(std::ranges::count(bytes, '\0')) > bytes.size() / 2;
}

/// Latin text in UTF-16 has a zero in every other byte.
std::optional<Encoding> FindUtf16(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) return Encoding::Utf16LittleEndian;
    if (bytes.starts_with("\xFE\xFF")) return Encoding::Utf16BigEndian;
    std::size_t zeros[2] = {0, 0};
    for (std::size_t at = 0; at < bytes.size(); ++at) zeros[at % 2] += bytes[at] == '\0' ? 1 : 0;
    const std::size_t many = bytes.size() / 5;
    if (bytes.size() < 4 || std::max(zeros[0], zeros[1]) <= many || std::min(zeros[0], zeros[1]) > many / 20)
        return {};
    return zeros[1] > zeros[0] ? Encoding::Utf16LittleEndian : Encoding::Utf16BigEndian;
}

/// Where the first byte that isn't UTF-8 is.
Finding BadByte(std::string_view bytes, std::string message) {
    const std::size_t at = utf8::WellFormedSize(bytes);
    const std::string_view before = bytes.substr(0, at);
    const auto lineEnd = before.find_last_of("\r\n");
    const std::size_t begin = lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
    std::size_t line = 1;
    for (std::size_t i = 0; i < at; ++i) {
        if (bytes[i] == '\n' || (bytes[i] == '\r' && !bytes.substr(i).starts_with("\r\n"))) ++line;
    }
    return {line, {at - begin, at - begin + 1}, Severity::Error, "encoding", std::move(message), {}};
}

bool HoldsUtf8(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const auto character = utf8::Read(bytes, at);
        if (character.size > 1) return true;
        at += character.size;
    }
    return false;
}

void DecodeForeign(TextFile& file) {
    file.text = player::DecodeUnlabelled(file.bytes);
    const char* name = nullptr;
    for (const auto& each : kEncodings) {
        if (!name && unicode::ToUtf8(file.bytes, each.encoding) == file.text) name = each.name;
    }
    const bool damaged = !name || file.text.find(kReplacement) != std::string::npos ||
                         (name == kWestern && HoldsUtf8(file.bytes));
    if (damaged) {
        file.text = file.bytes;
        file.findings.push_back(
            BadByte(file.bytes, "this byte isn't UTF-8: the text is damaged, or of two encodings"));
        return;
    }
    file.isConverted = true;
    file.isGuess = true;
    file.conversion = std::string("from ") + name + " to UTF-8";
    file.findings.push_back(BadByte(
        file.bytes, std::string("the file isn't UTF-8; it looks like ") + name + ", which --fix converts"));
}

}  // namespace

TextFile DecodeText(std::string bytes) {
    TextFile file;
    file.bytes = std::move(bytes);
    file.isText = true;
    if (IsUtf32(file.bytes)) return NoText("encoding", "the file is UTF-32 and not UTF-8: save it as UTF-8");
    if (const auto utf16 = FindUtf16(file.bytes)) {
        const std::string_view view = file.bytes;
        const bool marked = view.starts_with("\xFF\xFE") || view.starts_with("\xFE\xFF");
        file.text = unicode::ToUtf8(view.substr(marked ? 2 : 0), *utf16);
        file.isConverted = true;
        file.conversion = "from UTF-16 to UTF-8";
        file.findings.push_back(
            OfFile(Severity::Error, "encoding", "the file is UTF-16 and not UTF-8; --fix converts it"));
    } else if (file.bytes.find('\0') != std::string::npos) {
        return NoText("binary", "this is no text: it holds zero bytes");
    } else if (!utf8::IsWellFormed(file.bytes)) {
        DecodeForeign(file);
    } else {
        file.text = file.bytes;
    }
    if (file.text.starts_with(kUtf8Mark)) {
        file.text.erase(0, kUtf8Mark.size());
        file.isConverted = true;
        file.conversion += std::string(file.conversion.empty() ? "" : ", ") + "without its byte order mark";
        file.findings.push_back(
            OfFile(Severity::Warning, "byte-order-mark",
                   "the file begins with a byte order mark, which isn't needed; --fix removes it"));
    }
    return file;
}

TextFile ReadTextFile(const std::filesystem::path& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) return NoText("unreadable", "there is no such file");
    if (std::filesystem::is_directory(status)) return NoText("unreadable", "this is a folder");
    if (!std::filesystem::is_regular_file(status))
        return NoText("unreadable", "this is a device or a pipe and no file");
    const FileHandle handle = OpenRegularFile(path, O_RDONLY, "rb");
    if (!handle) return NoText("unreadable", std::string("it can't be read: ") + std::strerror(errno));
    std::string bytes(kLargestText + 1, '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), handle.get()));
    if (std::ferror(handle.get())) return NoText("unreadable", "it can't be read to its end");
    if (bytes.size() > kLargestText)
        return NoText("too-large", "this is longer than 4 MB, which no program is");
    return DecodeText(std::move(bytes));
}

}  // namespace sorakaze::studio
