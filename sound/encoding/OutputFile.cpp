// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/encoding/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <system_error>
#include <utility>

#include "sound/encoding/SoundFileWriter.h"

namespace sorakaze::sound {
namespace {

/// What a person can do about an error number.
std::string Advice(int error, const std::filesystem::path& file) {
    const std::string folder = file.parent_path().string();
    switch (error) {
        case ENOENT:
        case ENOTDIR:
            return "there is no folder " + folder + ". Make it, or choose another place.";
        case EACCES:
        case EPERM:
        case EROFS:
            return "the folder " + folder +
                   " can't be written. Change its permissions, or choose another place.";
        case ENOSPC:
        case EDQUOT:
            return "no space is left there. Free some, or choose another place.";
        case EFBIG:
            return "it would grow larger than files may be there. Choose another place, or a compressed "
                   "format.";
        case ENAMETOOLONG:
            return "its name is too long. Choose a shorter one.";
        case EISDIR:
            return "a folder of that name stands there. Choose another name.";
        case EEXIST:
            return "something that is no file stands there. Choose another name.";
        default:
            return std::generic_category().message(error) + ". Choose another place.";
    }
}

/// Where `file` is a link, the file that it leads to: it is that one which shall be replaced.
std::filesystem::path Resolve(const std::filesystem::path& file) {
    std::error_code error;
    auto absolute = std::filesystem::absolute(file, error);
    if (error) absolute = file;
    if (std::filesystem::is_symlink(absolute, error)) {
        const auto led = std::filesystem::weakly_canonical(absolute, error);
        if (!error) return led;
    }
    return absolute;
}

std::string UnfinishedPrefix() {
    return ".unfinished-" + std::to_string(getpid()) + "-";
}

/// In the same folder, so that the renaming stays within one file system; hidden, and never the name of
/// anything else.
std::filesystem::path Beside(const std::filesystem::path& file) {
    static std::atomic<unsigned> count{0};
    return file.parent_path() / (UnfinishedPrefix() + std::to_string(count.fetch_add(1)) + ".part");
}

}  // namespace

void SoundFileWriter::RemoveUnfinished(const std::filesystem::path& folder) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (entry->path().filename().string().starts_with(UnfinishedPrefix())) {
            std::filesystem::remove(entry->path(), ignored);
        }
    }
}

OutputFile::OutputFile(const std::filesystem::path& file) : target_(Resolve(file)) {
    struct stat status {};
    if (stat(target_.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) Fail(EISDIR);
        if (!S_ISREG(status.st_mode)) Fail(EEXIST);
    } else if (errno != ENOENT) {
        Fail(errno);
    }
    do {
        temporary_ = Beside(target_);
        descriptor_ = open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor_ < 0 && errno == EEXIST);
    if (descriptor_ < 0) Fail(errno);
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::Fail(int error) const {
    throw SoundFileError("Can't write the sound file " + target_.string() + ": " + Advice(error, target_));
}

void OutputFile::Write(const void* data, std::size_t bytes) {
    const char* from = static_cast<const char*>(data);
    while (bytes > 0) {
        const ssize_t written = write(descriptor_, from, bytes);
        if (written < 0) {
            if (errno == EINTR) continue;
            Fail(errno);
        }
        from += written;
        bytes -= static_cast<std::size_t>(written);
    }
}

void OutputFile::Seek(std::int64_t position) {
    if (lseek(descriptor_, position, SEEK_SET) < 0) Fail(errno);
}

std::int64_t OutputFile::Position() const {
    return lseek(descriptor_, 0, SEEK_CUR);
}

std::int64_t OutputFile::Size() const {
    struct stat status {};
    return fstat(descriptor_, &status) == 0 ? status.st_size : -1;
}

void OutputFile::Publish() {
    const int descriptor = std::exchange(descriptor_, -1);
    // Some network file systems report a full disk only here.
    if (close(descriptor) < 0 && errno != EINTR) Fail(errno);
    if (rename(temporary_.c_str(), target_.c_str()) < 0) Fail(errno);
    temporary_.clear();
}

}  // namespace sorakaze::sound
