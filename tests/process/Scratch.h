// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A folder of a test's own (mode 0700, a blank and Japanese in its name) with the commands' writable folder
// in it.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include "app/runtime/process/ConfinedProcess.h"
#include "app/runtime/process/Descriptor.h"
#include "app/runtime/process/Mechanisms.h"

namespace sorakaze::process {

class Scratch {
  public:
    Scratch() {
        std::string name = (std::filesystem::temp_directory_path() / "confined 試験 XXXXXX").string();
        if (!::mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
        root_ = name;
        std::filesystem::create_directory(Folder());
        std::filesystem::permissions(Folder(), std::filesystem::perms::owner_all);
        PrepareWritableFolder(Folder());
    }
    ~Scratch() { std::filesystem::remove_all(root_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::filesystem::path Path(const std::string& name) const { return root_ / name; }
    std::filesystem::path Folder() const { return root_ / "書く folder"; }

    Confinement Bounds() const {
        Confinement confinement;
        confinement.writableFolder = Folder();
        confinement.searchFirst = {ATTACKS_FOLDER};
        return confinement;
    }
    CommandResult Run(const std::string& line) const { return Run(line, Bounds()); }
    CommandResult Run(const std::string& line, const Confinement& confinement) const {
        return ConfinedProcess(line, confinement).Run();
    }

    /// Beside the writable folder.
    void Write(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories(Path(name).parent_path());
        std::ofstream(Path(name)) << text;
    }
    void AddProgram(const std::string& folder, const std::string& name, const std::string& text) const {
        Write(folder + '/' + name, text);
        std::filesystem::permissions(Path(folder) / name, std::filesystem::perms::owner_all);
    }
    std::string ReadSecretly(const std::string& name) const { return ReadFile(Path(name)); }
    /// What a command wrote into the writable folder.
    std::string ReadBack(const std::string& name) const { return ReadFile(Folder() / name); }

    /// Waits until a command has made the file.
    void AwaitFile(const std::string& name) const {
        while (!std::filesystem::exists(Folder() / name)) std::this_thread::yield();
    }

    static std::string ReadFile(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::filesystem::path root_;
};

/// While it lives, commands run under these mechanisms at most.
struct Under {
    explicit Under(const Mechanisms& most) { LimitMechanisms(most); }
    ~Under() { LimitMechanisms(std::nullopt); }
    Under(const Under&) = delete;
    Under& operator=(const Under&) = delete;
};

/// Every mechanism, in the order of Mechanisms' members; to be taken away one by one.
inline Mechanisms All() {
    return {99, true, true, true, true};
}
inline Mechanisms WithoutNamespaces() {
    return {99, false, false, false, true};
}

}  // namespace sorakaze::process
