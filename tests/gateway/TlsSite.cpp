// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/gateway/TlsSite.h"

#include <arpa/inet.h>
#include <microhttpd.h>

#include <cstring>
#include <mutex>
#include <stdexcept>

namespace sorakaze::test {

struct TlsSite::Impl {
    Answers answers;
    MHD_Daemon* daemon = nullptr;
    std::mutex mutex;  ///< guards what follows, and the answering
    std::vector<std::string> requests;
    std::string userAgent;

    static void* TakeTarget(void*, const char* target, MHD_Connection*) { return new std::string(target); }
    static void Complete(void*, MHD_Connection*, void** state, MHD_RequestTerminationCode) {
        delete static_cast<std::string*>(*state);
    }
    static ssize_t Blanks(void*, std::uint64_t, char* buffer, std::size_t size) {
        std::memset(buffer, ' ', size);
        return static_cast<ssize_t>(size);
    }
    static MHD_Result Handle(void* closure, MHD_Connection* connection, const char*, const char*, const char*,
                             const char*, std::size_t*, void** state) {
        auto& self = *static_cast<Impl*>(closure);
        const std::lock_guard lock(self.mutex);
        self.requests.push_back(*static_cast<std::string*>(*state));
        const char* agent = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, "User-Agent");
        self.userAgent = agent ? agent : "";
        const Answer answer = self.answers(self.requests.back());
        MHD_Response* response =
            answer.endless
                ? MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, 65536, &Blanks, nullptr, nullptr)
                : MHD_create_response_from_buffer(answer.body.size(), const_cast<char*>(answer.body.data()),
                                                  MHD_RESPMEM_MUST_COPY);
        if (const auto colon = answer.header.find(": "); colon != std::string::npos) {
            MHD_add_response_header(response, answer.header.substr(0, colon).c_str(),
                                    answer.header.c_str() + colon + 2);
        }
        const MHD_Result queued =
            MHD_queue_response(connection, static_cast<unsigned>(answer.status), response);
        MHD_destroy_response(response);
        return queued;
    }
};

TlsSite::TlsSite(const Certificate& certificate, Answers answers) : impl_(std::make_unique<Impl>()) {
    impl_->answers = std::move(answers);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    impl_->daemon = MHD_start_daemon(
        MHD_USE_POLL_INTERNAL_THREAD | MHD_USE_TLS, 0, nullptr, nullptr, &Impl::Handle, impl_.get(),
        MHD_OPTION_SOCK_ADDR, &address, MHD_OPTION_HTTPS_MEM_CERT, certificate.certificate.c_str(),
        MHD_OPTION_HTTPS_MEM_KEY, certificate.key.c_str(), MHD_OPTION_URI_LOG_CALLBACK, &Impl::TakeTarget,
        nullptr, MHD_OPTION_NOTIFY_COMPLETED, &Impl::Complete, nullptr, MHD_OPTION_END);
    if (!impl_->daemon) throw std::runtime_error("no TLS site");
}

TlsSite::~TlsSite() {
    MHD_stop_daemon(impl_->daemon);
}

std::string TlsSite::Address() const {
    return "https://localhost:" +
           std::to_string(MHD_get_daemon_info(impl_->daemon, MHD_DAEMON_INFO_BIND_PORT)->port);
}

std::vector<std::string> TlsSite::Requests() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->requests;
}

std::string TlsSite::LastUserAgent() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->userAgent;
}

}  // namespace sorakaze::test
