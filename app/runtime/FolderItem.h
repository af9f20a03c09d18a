// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Files and folders as the logic sees them. A reference may be empty: the logic tests it before use.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include "app/runtime/Exceptions.h"
#include "app/runtime/String.h"
#include "sound/Bus.h"

namespace sorakaze {

class BinaryStream;
class FolderItem;
class Sound;
class TextOutputStream;
using FolderItemRef = std::shared_ptr<FolderItem>;
using SoundRef = std::shared_ptr<Sound>;

class FolderItem {
  public:
    explicit FolderItem(std::filesystem::path path) : path_(std::move(path)) {}

    /// The item of that name in this folder, whether or not it exists. Empty for what can't be a name, and in
    /// a folder that is missing along with the one it would lie in.
    FolderItemRef Child(const String& name) const;
    /// The i-th entry, from 1, hidden entries included. Entries are ordered by name, letter case ignored,
    /// then by code points: the same order on every machine. Empty where there is none.
    FolderItemRef Item(std::int32_t i) const;
    /// Number of entries; 0 for an empty or missing folder and for a file.
    std::int32_t Count() const;
    String Name() const;
    bool Exists() const;
    bool Directory() const;
    /// The path, escaped for use without quotes in a shell command.
    String ShellPath() const;
    /// Removes the file, or the empty folder. What can't be removed stays.
    void Delete() const;
    /// Empty if the file is no sound that can be read; `why` is then given the reason, for onlookers. Lets
    /// the other threads run while it reads.
    SoundRef OpenAsSound(sound::Bus bus = sound::Bus::Effects, std::string* why = nullptr) const;
    /// Creates the file, replacing a file or a link of that name. Empty where that can't be done.
    std::shared_ptr<TextOutputStream> CreateTextFile() const;
    /// The existing file, which must not be a link, opened for writing from its start; empty where that can't
    /// be done. Reading isn't supported: without `forWriting` it is empty.
    std::shared_ptr<BinaryStream> OpenAsBinaryFile(bool forWriting) const;

    const std::filesystem::path& Path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// Modes of GetFolderItem.
inline constexpr std::int32_t kAbsolutePath = 0;
inline constexpr std::int32_t kShellPath = 1;

/// The item of a path; the empty path is the folder that holds the application. With kShellPath the path is
/// escaped as ShellPath gives it; blanks need no escape. Empty for what can't be a
/// path.
FolderItemRef GetFolderItem(const String& path, std::int32_t mode);

struct SpecialFolder {
    /// The run's own folder for temporary files, which goes when the application ends. Empty where none can
    /// be made.
    static FolderItemRef Temporary();
};

/// A path escaped for a shell, and back.
String EscapeForShell(const std::string& path);
std::string UnescapeFromShell(const String& path);

}  // namespace sorakaze
