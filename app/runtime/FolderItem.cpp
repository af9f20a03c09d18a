// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/FolderItem.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "app/runtime/BinaryStream.h"
#include "app/runtime/Runtime.h"
#include "app/runtime/TextStreams.h"
#include "base/Utf8.h"
#include "base/unicode/Characters.h"

namespace sorakaze {
namespace {

namespace fs = std::filesystem;

/// A newline can't be escaped by a backslash: the shell takes the two for nothing.
constexpr std::string_view kQuotedNewline = "'\n'";

bool NeedsNoEscape(unsigned char byte) {
    return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') ||
           std::string_view("/._-+,:@%").find(static_cast<char>(byte)) != std::string_view::npos;
}

/// The entries of the folder read last. Loops over Count and Item ask for them again and again.
struct Listing {
    fs::path folder;
    timespec changed{};
    dev_t device = 0;
    ino_t inode = 0;
    bool settled = false;  ///< not changed just before it was read
    std::vector<std::string> names;
};

bool IsSame(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

/// By name, letter case ignored as String's comparison ignores it, then by code points. Bytes that aren't
/// UTF-8 are last. File systems give their entries in orders that differ between machines.
void SortAsPeopleDo(std::vector<std::string>& names) {
    std::vector<std::pair<std::u32string, std::string>> keyed;
    keyed.reserve(names.size());
    for (std::string& name : names) {
        std::u32string key;
        for (std::size_t at = 0; at < name.size();) {
            const auto character = utf8::Read(name, at);
            key += unicode::Fold(character.code);
            at += character.size;
        }
        keyed.emplace_back(std::move(key), std::move(name));
    }
    std::sort(keyed.begin(), keyed.end());
    std::transform(keyed.begin(), keyed.end(), names.begin(),
                   [](auto& entry) { return std::move(entry.second); });
}

const std::vector<std::string>& EntriesOf(const fs::path& folder) {
    thread_local Listing last;
    struct stat now {};
    if (stat(folder.c_str(), &now) != 0 || !S_ISDIR(now.st_mode)) {
        last = {};
        return last.names;
    }
    // Two changes within one step of the file system's clock look alike: a folder changed just now is read
    // anew.
    timespec clock{};
    clock_gettime(CLOCK_REALTIME, &clock);
    const bool settled = clock.tv_sec - now.st_mtim.tv_sec > 1;
    const bool known = last.folder == folder && last.device == now.st_dev && last.inode == now.st_ino &&
                       IsSame(last.changed, now.st_mtim);
    if (known && last.settled) return last.names;
    last = {folder, now.st_mtim, now.st_dev, now.st_ino, settled, {}};
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        last.names.push_back(entry->path().filename().string());
    }
    SortAsPeopleDo(last.names);
    return last.names;
}

bool CanBeName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

}  // namespace

FolderItemRef FolderItem::Child(const String& name) const {
    std::error_code ignored;
    if (!CanBeName(name.Bytes())) return nullptr;
    if (!Exists() && !fs::exists(path_.parent_path(), ignored)) return nullptr;
    return std::make_shared<FolderItem>(path_ / name.Bytes());
}

FolderItemRef FolderItem::Item(std::int32_t i) const {
    const auto& names = EntriesOf(path_);
    if (i < 1 || static_cast<std::size_t>(i) > names.size()) return nullptr;
    return std::make_shared<FolderItem>(path_ / names[static_cast<std::size_t>(i) - 1]);
}

std::int32_t FolderItem::Count() const {
    return static_cast<std::int32_t>(EntriesOf(path_).size());
}

String FolderItem::Name() const {
    return path_.filename().string();
}

bool FolderItem::Exists() const {
    std::error_code ignored;
    return fs::exists(path_, ignored);
}

bool FolderItem::Directory() const {
    std::error_code ignored;
    return fs::is_directory(path_, ignored);
}

String FolderItem::ShellPath() const {
    return EscapeForShell(path_.string());
}

void FolderItem::Delete() const {
    std::error_code ignored;
    fs::remove(path_, ignored);
}

std::shared_ptr<TextOutputStream> FolderItem::CreateTextFile() const {
    return TextOutputStream::Create(std::make_shared<FolderItem>(*this));
}

std::shared_ptr<BinaryStream> FolderItem::OpenAsBinaryFile(bool forWriting) const {
    FileHandle handle = forWriting ? OpenRegularFile(path_, O_WRONLY | O_NOFOLLOW, "wb") : nullptr;
    return handle ? std::make_shared<BinaryStream>(std::move(handle)) : nullptr;
}

FolderItemRef GetFolderItem(const String& path, std::int32_t mode) {
    const auto& appFolder = Runtime::Current().AppFolder();
    const std::string plain = mode == kShellPath ? UnescapeFromShell(path) : path.Bytes();
    if (plain.find('\0') != std::string::npos) return nullptr;
    return std::make_shared<FolderItem>(plain.empty() ? appFolder : appFolder / plain);
}

FolderItemRef SpecialFolder::Temporary() {
    const auto& folder = Runtime::Current().TemporaryFolder();
    return folder.empty() ? nullptr : std::make_shared<FolderItem>(folder);
}

String EscapeForShell(const std::string& path) {
    std::string escaped;
    for (const char byte : path) {
        if (byte == '\n') {
            escaped += kQuotedNewline;
            continue;
        }
        if (!NeedsNoEscape(static_cast<unsigned char>(byte))) escaped += '\\';
        escaped += byte;
    }
    return escaped;
}

std::string UnescapeFromShell(const String& path) {
    const std::string& escaped = path.Bytes();
    std::string plain;
    for (std::size_t at = 0; at < escaped.size(); ++at) {
        if (escaped.compare(at, kQuotedNewline.size(), kQuotedNewline) == 0) {
            plain += '\n';
            at += kQuotedNewline.size() - 1;
        } else if (escaped[at] == '\\' && at + 1 < escaped.size()) {
            plain += escaped[++at];
        } else {
            plain += escaped[at];
        }
    }
    return plain;
}

}  // namespace sorakaze
