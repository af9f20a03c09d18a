// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/servers/Servers.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <iterator>
#include <stdexcept>
#include <thread>

namespace sorakaze::test {
namespace {

namespace fs = std::filesystem;

/// A port that nobody listens on now; with a port 0 if nobody listens there.
int Probe(int port) {
    // From another address than the server's: a socket that connects to a free port of its own address can
    // meet itself.
    sockaddr_in from{AF_INET, 0, {htonl(INADDR_LOOPBACK + (port != 0 ? 1 : 0))}, {}};
    const sockaddr_in to{AF_INET, htons(static_cast<uint16_t>(port)), {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t size = sizeof from;
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bind(probe, reinterpret_cast<const sockaddr*>(&from), size);
    getsockname(probe, reinterpret_cast<sockaddr*>(&from), &size);
    const bool there = port == 0 || connect(probe, reinterpret_cast<const sockaddr*>(&to), size) == 0;
    close(probe);
    return there ? ntohs(from.sin_port) : 0;
}

std::string ReadAll(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator(stream), {}};
}

}  // namespace

Server::Server() {
    // Apache reads it as nobody.
    umask(S_IWGRP | S_IWOTH);
    fs::create_directory(folder_.Path() / "documents");
    fs::permissions(folder_.Path(), fs::perms::group_exec | fs::perms::others_exec, fs::perm_options::add);
}

void Server::Start(const std::function<std::vector<std::string>(const std::string& port)>& prepare,
                   Program::User user) {
    // The port may be taken between being found and being used.
    for (int attempt = 0; attempt < 5; ++attempt) {
        port_ = Probe(0);
        program_ = std::make_unique<Program>(prepare(std::to_string(port_)), folder_.Path() / "log",
                                             Program::Errors::WithOutput, user);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!program_->Ended() && std::chrono::steady_clock::now() < end) {
            if (Probe(port_) != 0 && !program_->Ended()) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    throw std::runtime_error("no server; `scripts/setup test` fetches its program: " + Log());
}

std::string Server::Log() const {
    return ReadAll(folder_.Path() / "log") + ReadAll(folder_.Path() / "state/errors");
}

Nginx::Nginx() {
    const std::string unpacked = SORAKAZE_UNPACKED_DIR "/nginx/usr/sbin/nginx";
    folder_.Write("users", "ann:{PLAIN}open sesame\n");
    std::string temporary;
    for (const std::string kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
        temporary += kind + "_temp_path " + path_ + "/" + kind + ";\n";
    Start([&](const std::string& port) {
        // One process, which dies with us.
        const auto file = folder_.Write(
            "nginx.conf", "daemon off; master_process off; error_log stderr; pid " + path_ +
                              "/pid;\nevents {}\nhttp {\naccess_log off; sendfile on;\n" + temporary +
                              "server {\nlisten 127.0.0.1:" + port + ";\nroot " + path_ +
                              "/documents;\nlocation /old { return 301 http://127.0.0.1:" + port +
                              "/page; }\nlocation /broken { return 503 sorry; }\n"
                              "location /private { auth_basic \"The Studio\"; auth_basic_user_file " +
                              path_ + "/users; }\n}\n}\n");
        return std::vector<std::string>{access(unpacked.c_str(), X_OK) == 0 ? unpacked : "/usr/sbin/nginx",
                                        "-p",
                                        path_,
                                        "-c",
                                        file,
                                        "-e",
                                        "stderr"};
    });
}

Apache::Apache() {
    // The MD5 of ann:Studio:open sesame
    folder_.Write("users", "ann:Studio:269a6b999040708632f55d14bf2af283\n");
    const std::string state = path_ + "/state";
    fs::create_directory(state);
    if (geteuid() == 0 && chown(state.c_str(), Program::kNobody, Program::kNobody) != 0)
        throw std::runtime_error("can't give " + state + " away");
    std::string modules;
    for (const std::string module :
         {"mpm_event", "authn_core", "authz_core", "authz_user", "authn_file", "auth_digest"})
        modules += "LoadModule " + module + "_module /usr/lib/apache2/modules/mod_" + module + ".so\n";
    Start(
        [&](const std::string& port) {
            const auto file = folder_.Write(
                "apache.conf", modules + "ServerName 127.0.0.1\nListen 127.0.0.1:" + port + "\nServerRoot " +
                                   path_ + "\nDefaultRuntimeDir " + state + "\nPidFile " + state +
                                   "/pid\nMutex file:" + state + "\nErrorLog " + state +
                                   "/errors\nLogLevel auth_digest:debug\nDocumentRoot " + path_ +
                                   "/documents\n<Location /digest>\nAuthType Digest\nAuthName Studio\n"
                                   "AuthUserFile " +
                                   path_ + "/users\nRequire valid-user\n</Location>\n");
            // -X: one process, which dies with us.
            return std::vector<std::string>{"/usr/sbin/apache2", "-X", "-f", file};
        },
        Program::User::Nobody);
}

Tinyproxy::Tinyproxy(const std::string& line) {
    Start([&](const std::string& port) {
        const auto file = folder_.Write("tinyproxy.conf", "Listen 127.0.0.1\nPort " + port +
                                                              "\nTimeout 60\nLogLevel Info\n" + line + "\n");
        return std::vector<std::string>{"tinyproxy", "-d", "-c", file};
    });
}

PythonServer::PythonServer() {
    const std::string program = R"(
import http.server, sys
class Handler(http.server.BaseHTTPRequestHandler):
    def answer(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        self.send_response(200)
        self.end_headers()
        self.wfile.write(body)
    do_GET = do_HEAD = do_POST = answer
http.server.ThreadingHTTPServer(("127.0.0.1", int(sys.argv[1])), Handler).serve_forever()
)";
    Start([&](const std::string& port) {
        return std::vector<std::string>{"python3", "-I", "-c", program, port};
    });
}

}  // namespace sorakaze::test
