// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/check/Finding.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace sorakaze::check {

Finding& Findings::Add(Severity severity, std::size_t line, Span span, std::string code,
                       std::string message) {
    Finding finding{line, span, severity, std::move(code), std::move(message), {}};
    if (IsFull()) return dropped_ = std::move(finding);
    return all_.emplace_back(std::move(finding));
}

std::vector<Finding> Findings::Take() {
    std::stable_sort(all_.begin(), all_.end(), [](const Finding& a, const Finding& b) {
        return std::tuple(a.line, a.span.begin) < std::tuple(b.line, b.span.begin);
    });
    if (IsFull()) {
        const std::size_t line = all_.back().line;
        all_.push_back(
            {line, {}, Severity::Error, "too-many", "these are too many; what else there is isn't told", {}});
    }
    return std::exchange(all_, {});
}

std::string Quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

std::string DidYouMean(std::string_view text) {
    return "; did you mean " + Quoted(text) + "?";
}

}  // namespace sorakaze::check
