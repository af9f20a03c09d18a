// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/LoopbackServer.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/BlockedSignals.h"
#include "gateway/Visitors.h"

namespace sorakaze::gateway {
namespace {

/// The most that haven't been admitted, and of all.
constexpr std::size_t kStrangers = 16;
constexpr unsigned kConnections = 64;
constexpr unsigned kIdleSeconds = 10;
/// While an answer is made nothing moves on its connection. Longer than any answer takes.
constexpr unsigned kAnswerSeconds = 120;
/// From a request's admittance on, for whoever reads its answer slowly.
constexpr std::chrono::minutes kLongestVisit{10};
constexpr std::size_t kHeaderBytes = 32 * 1024;
constexpr std::size_t kFormBytes = 256 * 1024;
constexpr std::size_t kStackBytes = 1024 * 1024;

/// One request from its first line to its answer.
struct Exchange {
    ServerRequest request;
    MHD_PostProcessor* form = nullptr;
    std::string* lastValue = nullptr;
    std::size_t formBytes = 0;
    bool admitted = false;

    Exchange() = default;
    ~Exchange() {
        if (form) MHD_destroy_post_processor(form);
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;
};

MHD_Result Send(MHD_Connection* connection, const ServerAnswer& answer) {
    MHD_Response* response = MHD_create_response_from_buffer(
        answer.body.size(), const_cast<char*>(answer.body.data()), MHD_RESPMEM_MUST_COPY);
    if (!response) return MHD_NO;
    const auto add = [&](const char* name, const std::string& value) {
        if (!value.empty()) MHD_add_response_header(response, name, value.c_str());
    };
    if (!answer.body.empty()) add(MHD_HTTP_HEADER_CONTENT_TYPE, answer.contentType);
    add(MHD_HTTP_HEADER_LOCATION, answer.location);
    add(MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    const MHD_Result queued = MHD_queue_response(connection, static_cast<unsigned>(answer.status), response);
    MHD_destroy_response(response);
    return queued;
}

MHD_Result SendStatus(MHD_Connection* connection, int status) {
    ServerAnswer bare;
    bare.status = status;
    return Send(connection, bare);
}

MHD_Result TakeField(void* closure, MHD_ValueKind, const char* name, const char*, const char*, const char*,
                     const char* data, std::uint64_t offset, std::size_t size) {
    auto& exchange = *static_cast<Exchange*>(closure);
    if (offset == 0 || !exchange.lastValue) {
        exchange.lastValue = &exchange.request.fields.emplace(name ? name : "", "")->second;
    }
    exchange.lastValue->append(data, size);
    return MHD_YES;
}

int SocketOf(MHD_Connection* connection) {
    const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    return info ? info->connect_fd : -1;
}

MHD_Result TakeArgument(void* closure, MHD_ValueKind, const char* name, const char* value) {
    static_cast<Exchange*>(closure)->request.fields.emplace(name, value ? value : "");
    return MHD_YES;
}

}  // namespace

struct LoopbackServer::Impl {
    int socket = -1;
    std::uint16_t port = 0;
    Admits admits;
    Answers answers;
    std::optional<Visitors> visitors;  ///< from Start on
    MHD_Daemon* daemon = nullptr;

    MHD_Result Begin(MHD_Connection* connection, Exchange& exchange, const char* method) {
        exchange.request.method = method;
        const char* host = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_HOST);
        exchange.request.host = host ? host : "";
        exchange.admitted = admits(exchange.request);
        if (!exchange.admitted) return SendStatus(connection, 404);
        visitors->IsGuest(SocketOf(connection));
        MHD_get_connection_values(connection, MHD_GET_ARGUMENT_KIND, &TakeArgument, &exchange);
        // Bodies of other kinds than a form's are read and dropped.
        exchange.form = MHD_create_post_processor(connection, 4096, &TakeField, &exchange);
        MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT, kAnswerSeconds);
        return MHD_YES;
    }

    ServerAnswer Answer(const ServerRequest& request) const {
        try {
            return answers(request);
        } catch (...) {
            ServerAnswer failed;
            failed.status = 500;
            return failed;
        }
    }

    /// Called when a request's headers are in, for each piece of its body, and when it is whole.
    static MHD_Result Handle(void* closure, MHD_Connection* connection, const char*, const char* method,
                             const char*, const char* data, std::size_t* size, void** state) {
        auto& self = *static_cast<Impl*>(closure);
        auto* exchange = static_cast<Exchange*>(*state);
        if (!exchange) return MHD_NO;
        if (!exchange->admitted) return self.Begin(connection, *exchange, method);
        if (*size > 0) {
            exchange->formBytes += *size;
            if (exchange->formBytes > kFormBytes) return MHD_NO;
            if (exchange->form) MHD_post_process(exchange->form, data, *size);
            *size = 0;
            return MHD_YES;
        }
        if (exchange->form) MHD_destroy_post_processor(std::exchange(exchange->form, nullptr));
        return Send(connection, self.Answer(exchange->request));
    }

    static void* TakeTarget(void*, const char* target, MHD_Connection*) {
        auto* exchange = new Exchange;
        exchange->request.target = target;
        return exchange;
    }

    static void Notice(void* closure, MHD_Connection* connection, void**,
                       MHD_ConnectionNotificationCode what) {
        Visitors& visitors = *static_cast<Impl*>(closure)->visitors;
        if (what == MHD_CONNECTION_NOTIFY_STARTED) {
            visitors.Came(SocketOf(connection));
        } else {
            visitors.Left(SocketOf(connection));
        }
    }

    static void Complete(void* closure, MHD_Connection* connection, void** state,
                         MHD_RequestTerminationCode) {
        delete static_cast<Exchange*>(std::exchange(*state, nullptr));
        static_cast<Impl*>(closure)->visitors->IsStranger(SocketOf(connection));
        MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT, kIdleSeconds);
    }
};

LoopbackServer::LoopbackServer() : impl_(std::make_unique<Impl>()) {
    const auto fail = [](const char* what) { throw std::system_error(errno, std::generic_category(), what); };
    impl_->socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (impl_->socket < 0) fail("socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(impl_->socket, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::listen(impl_->socket, SOMAXCONN) != 0 ||
        ::getsockname(impl_->socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        const int error = errno;
        ::close(impl_->socket);
        throw std::system_error(error, std::generic_category(), "127.0.0.1");
    }
    impl_->port = ntohs(address.sin_port);
}

LoopbackServer::~LoopbackServer() {
    Stop();
    if (impl_->socket >= 0) ::close(impl_->socket);
}

std::uint16_t LoopbackServer::Port() const {
    return impl_->port;
}

void LoopbackServer::Start(Admits admits, Answers answers, std::chrono::milliseconds patience) {
    impl_->visitors.emplace(Visitors::Bounds{kStrangers, patience, kLongestVisit});
    impl_->admits = std::move(admits);
    impl_->answers = std::move(answers);
    // The server's threads take none.
    const BlockedSignals held;
    impl_->daemon = MHD_start_daemon(
        MHD_USE_POLL_INTERNAL_THREAD | MHD_USE_THREAD_PER_CONNECTION | MHD_USE_ITC, 0, nullptr, nullptr,
        &Impl::Handle, impl_.get(), MHD_OPTION_LISTEN_SOCKET, impl_->socket, MHD_OPTION_CONNECTION_LIMIT,
        kConnections, MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
        kHeaderBytes, MHD_OPTION_THREAD_STACK_SIZE, kStackBytes, MHD_OPTION_URI_LOG_CALLBACK,
        &Impl::TakeTarget, nullptr, MHD_OPTION_NOTIFY_COMPLETED, &Impl::Complete, impl_.get(),
        MHD_OPTION_NOTIFY_CONNECTION, &Impl::Notice, impl_.get(), MHD_OPTION_END);
    if (!impl_->daemon) throw std::system_error(errno, std::generic_category(), "the loopback server");
    impl_->socket = -1;  // the daemon's from now on
}

void LoopbackServer::Stop() {
    if (impl_->daemon) MHD_stop_daemon(std::exchange(impl_->daemon, nullptr));
}

}  // namespace sorakaze::gateway
