// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/sound/RegularFile.h"

#include <fcntl.h>

namespace sorakaze::sound {

std::optional<RegularFile> OpenRegularFile(const std::filesystem::path& file) {
    // Looked at first, as opening a device can have effects; and again after the open, as the name may have
    // changed hands in between. O_NONBLOCK keeps a fifo without a writer from holding the caller.
    RegularFile opened{};
    const auto isRegular = [&] { return S_ISREG(opened.status.st_mode) && opened.status.st_size > 0; };
    if (::stat(file.c_str(), &opened.status) != 0 || !isRegular()) return std::nullopt;
    opened.descriptor =
        process::Descriptor(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!opened.descriptor || ::fstat(opened.descriptor.Get(), &opened.status) != 0 || !isRegular())
        return std::nullopt;
    return opened;
}

}  // namespace sorakaze::sound
