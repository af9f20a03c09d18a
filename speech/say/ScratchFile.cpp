// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/ScratchFile.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdlib>

namespace sorakaze::speech {

int MakeScratchFile(const std::filesystem::path& folder, std::string& name) {
    constexpr const char* kPattern = ".say-XXXXXX";
    name = folder / kPattern;
    const int file = mkostemp(name.data(), O_CLOEXEC);
    const char* other = std::getenv("TMPDIR");
    if (file >= 0 || !other || other[0] != '/' || (errno != EACCES && errno != EPERM && errno != EROFS))
        return file;
    name = std::filesystem::path(other) / kPattern;
    return mkostemp(name.data(), O_CLOEXEC);
}

}  // namespace sorakaze::speech
