// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The exceptions of the runtime. The logic lets them pass; one that leaves a thread or an event handler is
// told to the user with its class and message, and the application lives on.
#pragma once

#include <stdexcept>
#include <string>

namespace sorakaze {

class RuntimeException : public std::runtime_error {
  public:
    /// `meaning` tells in plain words what it means for the user.
    RuntimeException(const char* className, const std::string& message, const char* meaning)
        : std::runtime_error(message), className_(className), meaning_(meaning) {}
    const char* ClassName() const { return className_; }
    std::string Message() const { return what(); }
    const char* Meaning() const { return meaning_; }

  private:
    const char* className_;
    const char* meaning_;
};

/// An empty reference was used.
class NilObjectException : public RuntimeException {
  public:
    explicit NilObjectException(const std::string& message = "An empty reference was used.")
        : RuntimeException("NilObjectException", message,
                           "Something that the show needs is missing. What was under way ends here.") {}
};

class OutOfBoundsException : public RuntimeException {
  public:
    explicit OutOfBoundsException(const std::string& message)
        : RuntimeException("OutOfBoundsException", message,
                           "A block has the variants 0 to 10. The rest of the program file was not read.") {}
};

/// Run was called on a thread that runs.
class ThreadAlreadyRunningException : public RuntimeException {
  public:
    ThreadAlreadyRunningException()
        : RuntimeException(
              "ThreadAlreadyRunningException", "The thread runs already.",
              "The last show has not ended yet. Stop this one, wait a moment and start it again.") {}
};

/// A pattern that can't be compiled.
class RegExException : public RuntimeException {
  public:
    explicit RegExException(const std::string& message)
        : RuntimeException("RegExException", message, "A text could not be searched.") {}
};

/// Gives the reference back, or raises NilObjectException for an empty one.
template <typename Reference>
const Reference& NotNil(const Reference& reference) {
    if (!reference) throw NilObjectException();
    return reference;
}

}  // namespace sorakaze
