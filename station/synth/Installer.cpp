// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Installer.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace sorakaze::station {
namespace {

namespace fs = std::filesystem;

/// 64 bits of FNV-1a over a file's bytes: enough to see that someone has edited it. Empty for a file that
/// isn't there.
std::string Digest(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return {};
    std::uint64_t hash = 0xCBF29CE484222325ull;
    for (std::istreambuf_iterator<char> at(in), end; at != end; ++at) {
        hash = (hash ^ static_cast<unsigned char>(*at)) * 0x100000001B3ull;
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

}  // namespace

Installer::Installer(fs::path station, const fs::path& list)
    : station_(std::move(station)), list_(station_ / list), journal_(list_.string() + ".unfinished") {
    work_ = station_ / (".making-" + list.stem().string());
    fs::remove_all(work_);
    fs::create_directories(work_);
    fs::create_directories(list_.parent_path());
    for (const fs::path& file : {list_, journal_}) {
        std::ifstream in(file);
        std::string digest, name;
        while (in >> digest && in.get() == ' ' && std::getline(in, name)) before_[name] = digest;
    }
}

Installer::~Installer() {
    std::error_code ignored;
    fs::remove_all(work_, ignored);
}

fs::path Installer::Work(const fs::path& name) {
    const std::lock_guard lock(mutex_);
    return work_ / (std::to_string(++working_) + name.extension().string());
}

bool Installer::IsTheUsers(const std::string& name, const std::string& wanted) const {
    const std::string present = Digest(station_ / name);
    if (present.empty() || present == wanted) return false;
    const auto known = before_.find(name);
    return known == before_.end() || known->second != present;
}

void Installer::Place(const fs::path& finished, const fs::path& name) {
    const std::string digest = Digest(finished);
    const std::lock_guard lock(mutex_);
    if (IsTheUsers(name.string(), digest)) {
        std::fprintf(stderr, "make-station: kept your own %s\n", name.c_str());
        fs::remove(finished);
        return;
    }
    placed_[name.string()] = digest;
    // On the list before it is in its place: a run that is broken off here leaves no file that nobody owns.
    Save(journal_);
    fs::create_directories((station_ / name).parent_path());
    fs::rename(finished, station_ / name);
}

void Installer::Finish() {
    const std::lock_guard lock(mutex_);
    for (const auto& [name, digest] : before_) {
        if (placed_.contains(name) || Digest(station_ / name) != digest) continue;
        fs::remove(station_ / name);
        std::error_code ignored;
        // Only an empty folder goes.
        for (fs::path folder = (station_ / name).parent_path(); folder != station_;
             folder = folder.parent_path()) {
            if (!fs::is_empty(folder, ignored) || !fs::remove(folder, ignored)) break;
        }
    }
    Save(journal_);
    fs::rename(journal_, list_);
}

void Installer::Save(const fs::path& list) const {
    std::ofstream out(list, std::ios::trunc);
    for (const auto& [name, digest] : placed_) out << digest << ' ' << name << '\n';
    out.close();
    if (!out) throw std::runtime_error("can't write " + list.string());
}

}  // namespace sorakaze::station
