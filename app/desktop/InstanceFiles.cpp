// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desktop/InstanceFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <cerrno>
#include <cstdio>
#include <string>

namespace sorakaze::desktop {
namespace {

/// A folder that is this user's and that nobody else may enter or write.
bool IsPrivate(const QByteArray& folder) {
    struct stat found = {};
    return lstat(folder.constData(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == geteuid() &&
           (found.st_mode & 077) == 0 && access(folder.constData(), W_OK | X_OK) == 0;
}

/// The socket's path has to fit into a socket address.
std::optional<InstancePaths> PathsIn(const QByteArray& folder, const QByteArray& name) {
    const QByteArray stem = folder + "/sorakaze-" + name;
    const InstancePaths paths{QFile::decodeName(stem + ".lock"), QFile::decodeName(stem + ".socket")};
    if (QFile::encodeName(paths.socket).size() >= qsizetype(sizeof(sockaddr_un::sun_path)))
        return std::nullopt;
    return paths;
}

QByteArray NameOf(const std::filesystem::path& folder) {
    std::error_code failed;
    std::filesystem::path path = std::filesystem::canonical(folder, failed);
    if (failed) path = std::filesystem::absolute(folder, failed).lexically_normal();
    const std::string& bytes = path.native();
    const QByteArrayView view(bytes.data(), qsizetype(bytes.size()));
    return QCryptographicHash::hash(view.toByteArray(), QCryptographicHash::Sha256).toHex().left(32);
}

}  // namespace

std::optional<InstancePaths> PathsOf(const std::filesystem::path& folder) {
    const QByteArray name = NameOf(folder);
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (runtime.startsWith('/') && IsPrivate(runtime)) {
        if (auto paths = PathsIn(runtime, name)) return paths;
    }
    // Nobody else can create the one in the home. Among the temporary files somebody may have taken the name.
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    QDir().mkpath(cache);
    for (const QByteArray& own :
         {QFile::encodeName(cache) + "/sorakaze",
          QFile::encodeName(QDir::tempPath()) + "/sorakaze-" + QByteArray::number(qulonglong(geteuid()))}) {
        mkdir(own.constData(), 0700);
        if (!IsPrivate(own)) continue;
        if (auto paths = PathsIn(own, name)) return paths;
    }
    std::fputs("Sorakaze: no folder is this user's alone, so a second start isn't noticed\n", stderr);
    return std::nullopt;
}

FileLock::~FileLock() {
    if (file_ >= 0) close(file_);
}

FileLock::Outcome FileLock::Try(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    const int file = open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0) return Outcome::Impossible;
    if (flock(file, LOCK_EX | LOCK_NB) != 0) {
        const bool held = errno == EWOULDBLOCK;
        close(file);
        return held ? Outcome::HeldByAnother : Outcome::Impossible;
    }
    // The sticky bit keeps cleaners of runtime and temporary folders from removing the file.
    fchmod(file, 0600 | S_ISVTX);
    file_ = file;
    return Outcome::Taken;
}

}  // namespace sorakaze::desktop
