// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Real web servers and a proxy, each with a configuration and a temporary folder of its own, on a free port
// of the loopback interface. The constructor throws, and says what to do, if the program is missing or
// doesn't start.
#pragma once

#include <sys/stat.h>

#include <regex>
#include <stdexcept>
#include <thread>

#include "tests/app/runtime/sockets/Peer.h"
#include "tests/support/Program.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {

class Server {
  public:
    std::string Url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }
    int Port() const { return port_; }
    /// Writes a document to be served.
    std::filesystem::path Serve(const std::string& path, const std::string& bytes) const {
        return folder_.Write("documents/" + path, bytes);
    }
    std::string Log(const char* name = "log") const { return ReadBytes(folder_.Path() / name); }

  protected:
    /// Runs a program in its folder and waits until its port answers. PORT is replaced by the port in the
    /// file "configuration" and in the command line. Everyone may write to "state".
    Server(const std::string& configuration, const std::vector<std::string>& line,
           Program::User user = Program::User::Own) {
        namespace fs = std::filesystem;
        // Apache reads all of it as nobody.
        umask(S_IWGRP | S_IWOTH);
        fs::permissions(folder_.Path(), fs::perms::group_exec | fs::perms::others_exec,
                        fs::perm_options::add);
        for (const char* name : {"documents", "state"}) fs::create_directory(folder_.Path() / name);
        fs::permissions(folder_.Path() / "state", fs::perms::all);
        // Another program may take the port before this one does.
        for (int attempt = 0; attempt < 5; ++attempt) {
            port_ = Listener().Port();
            const auto withPort = [port = std::to_string(port_)](const std::string& text) {
                return std::regex_replace(text, std::regex("PORT"), port);
            };
            folder_.Write("configuration", withPort(configuration));
            const std::string paths = "PATH=" SORAKAZE_UNPACKED_DIR "/nginx/usr/sbin:/usr/sbin:";
            std::vector<std::string> words{"/usr/bin/env", "-C", folder_.Path(), paths + getenv("PATH")};
            for (const auto& word : line) words.push_back(withPort(word));
            program_.emplace(words, folder_.Path() / "log", Program::Errors::WithOutput, user);
            const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
            while (!program_->Ended() && std::chrono::steady_clock::now() < end) {
                if (PeerEnd(Place("127.0.0.1", port_)).descriptor >= 0 && !program_->Ended()) return;
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        }
        throw std::runtime_error("no server; `scripts/setup test` fetches its program: " + Log());
    }

    TemporaryFolder folder_;

  private:
    int port_ = 0;
    std::optional<Program> program_;
};

/// Serves documents. /old is a redirect to /page, /broken is a 503. What is below /private is for the user
/// ann with the password "open sesame", by Basic. One process, which dies with us.
struct Nginx : Server {
    Nginx()
        : Server(R"(daemon off; master_process off; error_log stderr; pid state/pid;
events {}
http {
    access_log off; sendfile on;
    client_body_temp_path state; proxy_temp_path state; fastcgi_temp_path state;
    uwsgi_temp_path state; scgi_temp_path state;
    server {
        listen 127.0.0.1:PORT;
        root documents;
        location /old { return 301 http://127.0.0.1:PORT/page; }
        location /broken { return 503 sorry; }
        location /private { auth_basic "The Studio"; auth_basic_user_file users; }
    }
})",
                 {"nginx", "-p", ".", "-c", "configuration", "-e", "stderr"}) {
        folder_.Write("users", "ann:{PLAIN}open sesame\n");
    }
};

/// Serves documents. What is below /digest is for the same user, by Digest in the realm Studio. One process,
/// too. Its complaints are in "state/errors".
struct Apache : Server {
    Apache()
        : Server(R"(
LoadModule mpm_event_module /usr/lib/apache2/modules/mod_mpm_event.so
LoadModule authn_core_module /usr/lib/apache2/modules/mod_authn_core.so
LoadModule authz_core_module /usr/lib/apache2/modules/mod_authz_core.so
LoadModule authz_user_module /usr/lib/apache2/modules/mod_authz_user.so
LoadModule authn_file_module /usr/lib/apache2/modules/mod_authn_file.so
LoadModule auth_digest_module /usr/lib/apache2/modules/mod_auth_digest.so
ServerName 127.0.0.1
Listen 127.0.0.1:PORT
DefaultRuntimeDir state
PidFile state/pid
Mutex file:state
ErrorLog state/errors
LogLevel auth_digest:debug
DocumentRoot documents
<Location /digest>
    AuthType Digest
    AuthName Studio
    AuthUserFile users
    Require valid-user
</Location>)",
                 {"apache2", "-X", "-d", ".", "-f", "configuration"}, Program::User::Nobody) {
        // The MD5 of ann:Studio:open sesame
        folder_.Write("users", "ann:Studio:269a6b999040708632f55d14bf2af283\n");
    }
};

/// A proxy, with the line "BasicAuth dj vinyl" for that user only.
struct Tinyproxy : Server {
    explicit Tinyproxy(const std::string& line = "")
        : Server("Listen 127.0.0.1\nPort PORT\nTimeout 60\nLogLevel Info\n" + line + "\n",
                 {"tinyproxy", "-d", "-c", "configuration"}) {}
};

}  // namespace sorakaze::test
