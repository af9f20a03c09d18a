// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/SpeechFile.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "base/BlockedSignals.h"
#include "speech/say/ScratchFile.h"

namespace sorakaze::speech {
namespace {

/// The file that a signal's handler removes, or null. Written by the one SpeechFile.
std::atomic<const char*> unfinishedName{nullptr};

void RemoveAndDie(int signalNumber) {
    if (const char* name = unfinishedName.load()) unlink(name);
    signal(signalNumber, SIG_DFL);
    raise(signalNumber);
}

void RemoveWhenEnded(const char* name) {
    unfinishedName = name;
    for (const int number : std::array{SIGHUP, SIGINT, SIGTERM, SIGXCPU, SIGABRT, SIGSEGV, SIGBUS, SIGFPE}) {
        signal(number, name ? RemoveAndDie : SIG_DFL);
    }
    // A limit on file sizes is then an error of the write, not the end of the program.
    signal(SIGXFSZ, SIG_IGN);
}

[[noreturn]] void Fail(const std::filesystem::path& file, const std::string& why) {
    throw SpeechFileError("can't write " + file.string() + ": " + why);
}

/// Writes one file's content into another existing one, or leaves that empty, returns false and sets errno.
bool CopyInto(const char* from, const char* to) {
    const int source = open(from, O_RDONLY | O_CLOEXEC);
    const int target = open(to, O_WRONLY | O_TRUNC | O_NOFOLLOW | O_CLOEXEC);
    ssize_t copied = -1;
    if (source >= 0 && target >= 0) {
        do copied = sendfile(target, source, nullptr, std::size_t{1} << 30);
        while (copied > 0);
    }
    const int reason = errno;
    if (copied < 0 && target >= 0 && ftruncate(target, 0) != 0) unlink(to);
    if (source >= 0) close(source);
    if (target >= 0) close(target);
    errno = reason;
    return copied == 0;
}

mode_t ReadUmask() {
    const mode_t mask = umask(022);
    umask(mask);
    return mask;
}

}  // namespace

SpeechFile::SpeechFile(std::filesystem::path file, int sampleRate) : file_(std::move(file)) {
    if (!file_.has_filename()) Fail(file_, "no file is named");
    const int descriptor = [this] {
        // No signal may arrive between making the file and registering it for removal.
        const BlockedSignals held;
        const int made = MakeScratchFile(file_.parent_path(), unfinished_);
        if (made >= 0) RemoveWhenEnded(unfinished_.c_str());
        return made;
    }();
    if (descriptor < 0) Fail(file_, std::strerror(errno));
    fchmod(descriptor, 0666 & ~ReadUmask());

    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = 1;
    info.format = (file_.extension() == ".wav" ? SF_FORMAT_WAV : SF_FORMAT_AIFF) | SF_FORMAT_PCM_16;
    sound_ = sf_open_fd(descriptor, SFM_WRITE, &info, SF_TRUE);
    if (!sound_) {
        close(descriptor);
        unlink(unfinished_.c_str());
        RemoveWhenEnded(nullptr);
        Fail(file_, sf_strerror(nullptr));
    }
}

SpeechFile::~SpeechFile() {
    if (sound_) sf_close(sound_);
    if (!unfinished_.empty()) unlink(unfinished_.c_str());
    RemoveWhenEnded(nullptr);
}

void SpeechFile::Write(std::span<const std::int16_t> samples) {
    errno = 0;
    const auto count = static_cast<sf_count_t>(samples.size());
    if (sf_write_short(sound_, samples.data(), count) != count) {
        Fail(file_, errno ? std::strerror(errno) : sf_strerror(sound_));
    }
}

void SpeechFile::Finish() {
    errno = 0;
    const int failed = sf_close(sound_);
    sound_ = nullptr;
    if (failed) Fail(file_, errno ? std::strerror(errno) : sf_error_number(failed));
    if (rename(unfinished_.c_str(), file_.c_str()) == 0) return unfinished_.clear();
    // A confined program can't replace the file that it is to make.
    const bool mayBeWritten = errno == EBUSY || errno == EXDEV || errno == EACCES || errno == EPERM;
    if (!mayBeWritten || !CopyInto(unfinished_.c_str(), file_.c_str())) Fail(file_, std::strerror(errno));
}

}  // namespace sorakaze::speech
