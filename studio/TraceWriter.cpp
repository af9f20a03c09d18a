// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/TraceWriter.h"

#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>

#include "studio/StudioError.h"

namespace sorakaze::studio {
namespace {

using Json = nlohmann::ordered_json;

struct ToJson {
    Json operator()(const String& text) const { return text.Bytes(); }
    Json operator()(std::int32_t number) const { return number; }
    Json operator()(double number) const { return number; }
};

}  // namespace

TraceWriter::TraceWriter(const std::filesystem::path& file) : file_(file) {
    std::error_code ignored;
    if (std::filesystem::is_fifo(file, ignored)) {
        throw StudioError(kFailed, file.string() + " is a pipe: the trace must be a file.");
    }
    out_.open(file, std::ios::binary);
    if (!out_) throw StudioError(kFailed, file.string() + " can't be written: " + std::strerror(errno) + ".");
}

void TraceWriter::OnShowEvent(const ShowEvent& event) {
    Json line;
    line["ticks"] = event.ticks;
    line["what"] = std::string(NameOf(event.kind));
    for (const auto& [name, value] : event.fields) {
        // `failed` has a `what` of its own, beside the one that names the event.
        const std::string member = line.contains(name) ? "which" : std::string(name);
        line[member] = std::visit(ToJson(), value);
    }
    out_ << line.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
}

void TraceWriter::Finish() {
    out_.close();
    if (!out_) throw StudioError(kFailed, file_.string() + " could not be written whole: is the disk full?");
}

}  // namespace sorakaze::studio
