// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Web servers and a proxy that nobody here wrote, each with a configuration of the test's own, in a folder
// that goes with it, on a loopback port that was free. Making one throws, with what to do, where its program
// is missing or doesn't come up.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Program.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {

/// Bytes of every value, the same for the same length.
std::string Noise(std::size_t length);

class Server {
  public:
    std::string Url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }
    int Port() const { return port_; }
    std::filesystem::path Documents() const { return folder_.Path() / "documents"; }
    /// What it has logged so far.
    std::string Log() const;

  protected:
    Server();
    /// The file of a program, from the first of the places where it is.
    static std::string Find(const std::string& name, std::vector<std::filesystem::path> places);
    /// Runs the line that `prepare` gives for a port, and waits until that port answers.
    void Start(const std::function<std::vector<std::string>(int port)>& prepare,
               Program::User user = Program::User::Own);

    TemporaryFolder folder_;

  private:
    bool ComesUp();

    int port_ = 0;
    std::unique_ptr<Program> program_;
};

/// Serves what is in Documents(). /old and /away are redirects to /page, /broken is a 503. What is below
/// /private is for the user ann with the password "open sesame", by Basic.
class Nginx : public Server {
  public:
    Nginx();
};

/// Serves what is in Documents(). What is below /digest is for the same user, by Digest in the realm Studio.
class Apache : public Server {
  public:
    Apache();
};

/// A proxy, for the user dj with the password "vinyl" only where `guarded`.
class Tinyproxy : public Server {
  public:
    enum class Guard { None, Basic };
    explicit Tinyproxy(Guard guard);
};

/// Python's own server, in HTTP/1.0. What is told about every request: its line, its headers, its body.
/// /unmeasured is Noise(300000) without a length.
class PythonServer : public Server {
  public:
    PythonServer();
};

}  // namespace sorakaze::test
