// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/TraceWriter.h"

#include <cerrno>
#include <cstring>
#include <string>

#include "show/EventLine.h"
#include "studio/StudioError.h"

namespace sorakaze::studio {
TraceWriter::TraceWriter(const std::filesystem::path& file) : file_(file) {
    std::error_code ignored;
    if (std::filesystem::is_fifo(file, ignored)) {
        throw StudioError(kFailed, file.string() + " is a pipe: the trace must be a file.");
    }
    out_.open(file, std::ios::binary);
    if (!out_) throw StudioError(kFailed, file.string() + " can't be written: " + std::strerror(errno) + ".");
}

void TraceWriter::OnShowEvent(const ShowEvent& event) {
    out_ << EventLine(event) << std::endl;
}

void TraceWriter::Finish() {
    out_.close();
    if (!out_) throw StudioError(kFailed, file_.string() + " could not be written whole: is the disk full?");
}

}  // namespace sorakaze::studio
