// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Web servers and a proxy that nobody here wrote, each with a configuration of the test's own, in a folder
// that goes with it, on a loopback port that was free. Making one throws, with what to do, where its program
// is missing or doesn't come up.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Program.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {

class Server {
  public:
    std::string Url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }
    int Port() const { return port_; }
    /// A document to be served.
    std::filesystem::path Serve(const std::string& path, const std::string& bytes) const {
        return folder_.Write("documents/" + path, bytes);
    }
    /// What it has logged so far.
    std::string Log() const;

  protected:
    Server();
    /// Runs the line that `prepare` gives for a port, and waits until that port answers.
    void Start(const std::function<std::vector<std::string>(const std::string& port)>& prepare,
               Program::User user = Program::User::Own);

    TemporaryFolder folder_;
    const std::string path_ = folder_.Path();

  private:
    int port_ = 0;
    std::unique_ptr<Program> program_;
};

/// Serves documents. /old is a redirect to /page, /broken is a 503. What is below /private is for the user
/// ann with the password "open sesame", by Basic.
struct Nginx : Server {
    Nginx();
};

/// Serves documents. What is below /digest is for the same user, by Digest in the realm Studio.
struct Apache : Server {
    Apache();
};

/// A proxy, with the line "BasicAuth dj vinyl" for that user only.
struct Tinyproxy : Server {
    explicit Tinyproxy(const std::string& line = "");
};

/// Python's own server, in HTTP/1.0. It sends back what is posted, without a length.
struct PythonServer : Server {
    PythonServer();
};

}  // namespace sorakaze::test
