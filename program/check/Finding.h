// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace sorakaze::check {

enum class Severity { Warning, Error };

/// Bytes of a line, the end excluded.
struct Span {
    std::size_t begin = 0;
    std::size_t end = 0;

    bool operator==(const Span&) const = default;
};

struct Fix {
    Span span;  ///< of the finding's line
    std::string text;
    bool certain = false;  ///< there is nothing else that the writer can have meant
};

struct Finding {
    std::size_t line = 0;  ///< from 1; 0 for the file as a whole
    Span span;
    Severity severity = Severity::Error;
    std::string code;     ///< a word for programs: "unknown-key"
    std::string message;  ///< for people, without a full stop; holds foreign bytes
    std::optional<Fix> fix;
};

/// A file of nothing but faults is told of up to here.
inline constexpr std::size_t kMostFindings = 1000;

/// Collects what is found.
class Findings {
  public:
    /// Refers to the new finding, or to one that is dropped if there are too many.
    Finding& Add(Severity severity, std::size_t line, Span span, std::string code, std::string message);
    Finding& Error(std::size_t line, Span span, std::string code, std::string message) {
        return Add(Severity::Error, line, span, std::move(code), std::move(message));
    }
    Finding& Warn(std::size_t line, Span span, std::string code, std::string message) {
        return Add(Severity::Warning, line, span, std::move(code), std::move(message));
    }
    /// What is added from now on is dropped.
    bool IsFull() const { return all_.size() >= kMostFindings; }
    /// In the order of the lines. If there are too many, the last one says so.
    std::vector<Finding> Take();

  private:
    std::vector<Finding> all_;
    Finding dropped_;
};

/// The text in double quotes.
std::string Quoted(std::string_view text);
/// "; did you mean "say"?"
std::string DidYouMean(std::string_view text);

}  // namespace sorakaze::check
