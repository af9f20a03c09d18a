// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/Fixes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/FileDescriptor.h"
#include "base/ScopeExit.h"
#include "program/check/PlacedLine.h"
#include "studio/StudioError.h"
#include "studio/check/TextFile.h"

namespace sorakaze::studio {
namespace {

namespace fs = std::filesystem;
using check::Finding;

[[noreturn]] void Fail(const fs::path& file, const std::string& why) {
    throw StudioError(kFailed, file.string() + " is unchanged: " + why + ".");
}

bool WriteAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const auto written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return fsync(descriptor) == 0;
}

}  // namespace

FixedText ApplyFixes(std::string_view text, const std::vector<Finding>& findings) {
    std::vector<const Finding*> certain;
    for (const Finding& finding : findings) {
        if (finding.fix && finding.fix->certain) certain.push_back(&finding);
    }
    const auto lines = check::SplitLines(text);
    FixedText fixed;
    std::size_t done = 0;
    for (const Finding* finding : certain) {
        const std::string_view line = lines[finding->line - 1];
        const auto begin = static_cast<std::size_t>(line.data() - text.data()) + finding->fix->span.begin;
        if (begin < done) continue;
        fixed.text += text.substr(done, begin - done);
        fixed.text += finding->fix->text;
        done = begin + finding->fix->span.end - finding->fix->span.begin;
        fixed.changes.push_back("line " + std::to_string(finding->line) + ": " +
                                check::Quoted(check::Part(line, finding->fix->span)) + " becomes " +
                                check::Quoted(finding->fix->text));
    }
    fixed.text += text.substr(done);
    return fixed;
}

void ReplaceFile(const fs::path& given, std::string_view before, std::string_view text) {
    std::error_code error;
    const fs::path file = fs::canonical(given, error);
    struct stat status {};
    if (error || stat(file.c_str(), &status) != 0) Fail(given, "it has gone");
    // Hidden, so that no menu lists it.
    std::string name = (file.parent_path() / ("." + file.filename().string() + ".XXXXXX")).string();
    const FileDescriptor copy(mkostemp(name.data(), O_CLOEXEC));
    if (copy.Get() < 0) Fail(given, std::strerror(errno));
    bool moved = false;
    const ScopeExit remove([&] {
        if (!moved) unlink(name.c_str());
    });
    [[maybe_unused]] const int owned = fchown(copy.Get(), status.st_uid, status.st_gid);
    if (!WriteAll(copy.Get(), text) || fchmod(copy.Get(), status.st_mode & 07777) != 0)
        Fail(given, std::strerror(errno));
    if (ReadTextFile(file).bytes != before) Fail(given, "somebody else has changed it meanwhile");
    if (rename(name.c_str(), file.c_str()) != 0) Fail(given, std::strerror(errno));
    moved = true;
}

}  // namespace sorakaze::studio
