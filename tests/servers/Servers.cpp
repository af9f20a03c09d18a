// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/servers/Servers.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace sorakaze::test {
namespace {

namespace fs = std::filesystem;

/// A port that nobody listens on now.
int FreePort() {
    sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t length = sizeof(address);
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bind(probe, reinterpret_cast<const sockaddr*>(&address), length);
    getsockname(probe, reinterpret_cast<sockaddr*>(&address), &length);
    close(probe);
    return ntohs(address.sin_port);
}

bool Answers(int port) {
    // From another address than the server's: a socket that connects to a free port of its own address can
    // meet itself.
    const sockaddr_in from{AF_INET, 0, {htonl(INADDR_LOOPBACK + 1)}, {}};
    const sockaddr_in to{AF_INET, htons(static_cast<uint16_t>(port)), {htonl(INADDR_LOOPBACK)}, {}};
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool there = bind(probe, reinterpret_cast<const sockaddr*>(&from), sizeof(from)) == 0 &&
                       connect(probe, reinterpret_cast<const sockaddr*>(&to), sizeof(to)) == 0;
    close(probe);
    return there;
}

std::string ReadAll(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator(stream), {}};
}

std::string Quoted(const fs::path& path) {
    return "\"" + path.string() + "\"";
}

}  // namespace

std::string Noise(std::size_t length) {
    std::string bytes(length, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

Server::Server() {
    // Apache reads it as nobody.
    umask(S_IWGRP | S_IWOTH);
    fs::create_directory(Documents());
    fs::permissions(folder_.Path(), fs::perms::group_exec | fs::perms::others_exec, fs::perm_options::add);
}

std::string Server::Find(const std::string& name, std::vector<fs::path> places) {
    for (const auto& place : places)
        if (access(place.c_str(), X_OK) == 0) return place;
    throw std::runtime_error(name + " is missing. `scripts/setup test` fetches it.");
}

bool Server::ComesUp() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!program_->Ended() && std::chrono::steady_clock::now() < end) {
        if (Answers(port_)) return !program_->Ended();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return false;
}

void Server::Start(const std::function<std::vector<std::string>(int port)>& prepare, Program::User user) {
    // The port may be taken between being found and being used.
    for (int attempt = 0; attempt < 5; ++attempt) {
        port_ = FreePort();
        program_ = std::make_unique<Program>(prepare(port_), folder_.Path() / "log",
                                             Program::Errors::WithOutput, user);
        if (ComesUp()) return;
    }
    throw std::runtime_error("the server doesn't come up: " + Log());
}

std::string Server::Log() const {
    return ReadAll(folder_.Path() / "log") + ReadAll(folder_.Path() / "state" / "errors");
}

Nginx::Nginx() {
    const std::string program =
        Find("nginx", {SORAKAZE_UNPACKED_DIR "/nginx/usr/sbin/nginx", "/usr/sbin/nginx", "/usr/bin/nginx"});
    folder_.Write("users", "ann:{PLAIN}open sesame\n");
    Start([&](int port) {
        std::string temporary;
        for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
            temporary += std::string(kind) + "_temp_path " + Quoted(folder_.Path() / kind) + ";\n";
        const std::string page = "http://127.0.0.1:" + std::to_string(port) + "/page";
        // One process, which dies with us.
        const auto file = folder_.Write(
            "nginx.conf",
            "daemon off; master_process off; error_log stderr; pid " + Quoted(folder_.Path() / "pid") +
                ";\nevents {}\nhttp {\naccess_log off; sendfile on;\n" + temporary +
                "server {\nlisten 127.0.0.1:" + std::to_string(port) + ";\nroot " + Quoted(Documents()) +
                ";\nlocation /old { return 301 " + page + "; }\nlocation /away { return 302 " + page +
                "; }\nlocation /broken { return 503 sorry; }\n"
                "location /private { auth_basic \"The Studio\"; auth_basic_user_file " +
                Quoted(folder_.Path() / "users") + "; }\n}\n}\n");
        return std::vector<std::string>{program, "-p", folder_.Path(), "-c", file, "-e", "stderr"};
    });
}

Apache::Apache() {
    const std::string program = Find("Apache", {"/usr/sbin/apache2"});
    // The MD5 of ann:Studio:open sesame
    folder_.Write("users", "ann:Studio:269a6b999040708632f55d14bf2af283\n");
    Start(
        [&](int port) {
            std::string configuration;
            for (const char* module :
                 {"mpm_event", "authn_core", "authz_core", "authz_user", "authn_file", "auth_digest"})
                configuration += std::string("LoadModule ") + module +
                                 "_module /usr/lib/apache2/modules/mod_" + module + ".so\n";
            const std::string folder = Quoted(folder_.Path());
            const auto state = folder_.Path() / "state";
            fs::create_directory(state);
            if (geteuid() == 0 && chown(state.c_str(), Program::kNobody, Program::kNobody) != 0)
                throw std::runtime_error("can't give " + state.string() + " away");
            const auto file = folder_.Write(
                "apache.conf", configuration +
                                   "ServerName 127.0.0.1\nListen 127.0.0.1:" + std::to_string(port) +
                                   "\nServerRoot " + folder + "\nDefaultRuntimeDir " + Quoted(state) +
                                   "\nPidFile " + Quoted(state / "pid") + "\nMutex file:" + state.string() +
                                   "\nErrorLog " + Quoted(state / "errors") +
                                   "\nLogLevel auth_digest:debug\nDocumentRoot " + Quoted(Documents()) +
                                   "\n<Location /digest>\nAuthType Digest\nAuthName Studio\nAuthUserFile " +
                                   Quoted(folder_.Path() / "users") + "\nRequire valid-user\n</Location>\n");
            // -X: one process, which dies with us.
            return std::vector<std::string>{program, "-X", "-f", file};
        },
        Program::User::Nobody);
}

Tinyproxy::Tinyproxy(Guard guard) {
    const std::string program = Find("tinyproxy", {"/usr/bin/tinyproxy"});
    Start([&](int port) {
        const auto file =
            folder_.Write("tinyproxy.conf", "Listen 127.0.0.1\nPort " + std::to_string(port) +
                                                "\nTimeout 60\nMaxClients 20\nLogLevel Info\n" +
                                                (guard == Guard::Basic ? "BasicAuth dj vinyl\n" : ""));
        return std::vector<std::string>{program, "-d", "-c", file};
    });
}

PythonServer::PythonServer() {
    const std::string program = Find("python3", {"/usr/bin/python3"});
    folder_.Write("unmeasured", Noise(300000));
    Start([&](int port) {
        return std::vector<std::string>{program, "-I", SORAKAZE_SERVERS_DIR "/echo_server.py",
                                        std::to_string(port), folder_.Path() / "unmeasured"};
    });
}

}  // namespace sorakaze::test
