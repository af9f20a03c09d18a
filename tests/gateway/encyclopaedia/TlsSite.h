// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A web site on loopback over TLS, whose answers a test gives, and an authority for its certificate. It
// refuses clients without the application's name.
#pragma once

#include <arpa/inet.h>
#include <microhttpd.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

#include "tests/gateway/server/Loopback.h"  // no proxy
#include "tests/support/Program.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {

/// PEM.
struct Certificate {
    std::string certificate, key;
};

/// Signs the certificates of hosts. A client can be told to trust it.
class Authority {
  public:
    Authority() {
        Run("openssl req -x509 $new -subj /CN=Authority -keyout authority.key -out authority.pem");
    }
    /// With negative `days` it has expired.
    Certificate Issue(const std::string& host, int days = 1) const {
        Run("openssl req $new -subj /CN=$1 -addext subjectAltName=DNS:$1 -keyout key -out request\n"
            "openssl x509 -req -in request -CA authority.pem -CAkey authority.key -copy_extensions copy "
            "-days $2 -out certificate",
            host, days);
        return {ReadBytes(folder_ / "certificate"), ReadBytes(folder_ / "key")};
    }
    std::filesystem::path File() const { return folder_ / "authority.pem"; }

  private:
    void Run(const std::string& commands, const std::string& host = "", int days = 1) const {
        Program({"/bin/sh", "-ec",
                 "cd \"$0\"\nnew='-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes'\n" + commands,
                 folder_.Path(), host, std::to_string(days)},
                folder_ / "log")
            .Wait();
    }

    const TemporaryFolder folder_;
};

class TlsSite {
  public:
    struct Answer {
        int status = 200;
        std::string body;
        std::string location = {};  ///< of a redirect; empty: none
        bool endless = false;
        std::map<std::string, std::string> headers = {};
    };
    /// Called with "/path?query" on the site's thread.
    using Answers = std::function<Answer(const std::string&)>;

    TlsSite(const Certificate& certificate, Answers answers) : answers_(std::move(answers)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        daemon_ = MHD_start_daemon(MHD_USE_POLL_INTERNAL_THREAD | MHD_USE_TLS, 0, nullptr, nullptr, &Handle,
                                   this, MHD_OPTION_SOCK_ADDR, &address, MHD_OPTION_HTTPS_MEM_CERT,
                                   certificate.certificate.c_str(), MHD_OPTION_HTTPS_MEM_KEY,
                                   certificate.key.c_str(), MHD_OPTION_URI_LOG_CALLBACK, &TakeTarget, this,
                                   MHD_OPTION_END);
        if (!daemon_) throw std::runtime_error("no TLS site; `scripts/setup test` fetches openssl");
    }
    ~TlsSite() { MHD_stop_daemon(daemon_); }
    TlsSite(const TlsSite&) = delete;
    TlsSite& operator=(const TlsSite&) = delete;

    std::string Address(const std::string& scheme = "https", const std::string& host = "localhost") const {
        const auto port = MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_BIND_PORT)->port;
        return scheme + "://" + host + ":" + std::to_string(port);
    }

    std::atomic<int> requests{0};  ///< so far
    std::string agent;             ///< of the last request; to be read between requests

  private:
    static void* TakeTarget(void* site, const char* target, MHD_Connection*) {
        static_cast<TlsSite*>(site)->target_ = target;
        return nullptr;
    }
    static ssize_t Blanks(void*, std::uint64_t, char* buffer, std::size_t size) {
        std::memset(buffer, ' ', size);
        return static_cast<ssize_t>(size);
    }
    static MHD_Result Handle(void* site, MHD_Connection* connection, const char*, const char*, const char*,
                             const char*, std::size_t*, void**) {
        auto& self = *static_cast<TlsSite*>(site);
        ++self.requests;
        const char* agent = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, "User-Agent");
        const bool isNamed = agent && std::string_view(agent).starts_with("Sorakaze/");
        self.agent = agent ? agent : "";
        const Answer answer = isNamed ? self.answers_(self.target_) : Answer{403, ""};
        MHD_Response* response =
            answer.endless
                ? MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, 65536, &Blanks, nullptr, nullptr)
                : MHD_create_response_from_buffer(answer.body.size(), const_cast<char*>(answer.body.data()),
                                                  MHD_RESPMEM_MUST_COPY);
        for (const auto& [name, value] : answer.headers)
            MHD_add_response_header(response, name.c_str(), value.c_str());
        if (!answer.location.empty()) MHD_add_response_header(response, "Location", answer.location.c_str());
        const MHD_Result queued =
            MHD_queue_response(connection, static_cast<unsigned>(answer.status), response);
        MHD_destroy_response(response);
        return queued;
    }

    const Answers answers_;
    std::string target_;  ///< of the request that is answered; the site's thread
    MHD_Daemon* daemon_;
};

}  // namespace sorakaze::test
