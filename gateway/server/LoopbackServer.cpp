// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/server/LoopbackServer.h"

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
#include "gateway/server/ConnectionWatch.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kMostWaiting = 16;  ///< connections without an admitted request
constexpr unsigned kMostConnections = 64;
constexpr unsigned kIdleSeconds = 10;
/// Idle time while an answer is made: longer than any answer takes.
constexpr unsigned kAnswerSeconds = 120;
/// From a request's admission on, for a client that reads its answer slowly.
constexpr std::chrono::minutes kAdmittedTime{10};
constexpr std::size_t kHeaderBytes = 32 * 1024;
constexpr std::size_t kFormBytes = 256 * 1024;
constexpr std::size_t kStackBytes = 1024 * 1024;

/// One request from its first line to its answer.
struct PendingRequest {
    ServiceRequest request;
    MHD_PostProcessor* form = nullptr;
    std::string* lastValue = nullptr;
    std::size_t formBytes = 0;
    bool admitted = false;

    PendingRequest() = default;
    ~PendingRequest() {
        if (form) MHD_destroy_post_processor(form);
    }
    PendingRequest(const PendingRequest&) = delete;
    PendingRequest& operator=(const PendingRequest&) = delete;
};

MHD_Result Send(MHD_Connection* connection, const ServiceAnswer& answer) {
    MHD_Response* response = MHD_create_response_from_buffer(
        answer.body.size(), const_cast<char*>(answer.body.data()), MHD_RESPMEM_MUST_COPY);
    if (!response) return MHD_NO;
    const auto add = [&](const char* name, const std::string& value) {
        if (!value.empty()) MHD_add_response_header(response, name, value.c_str());
    };
    if (!answer.body.empty()) add(MHD_HTTP_HEADER_CONTENT_TYPE, answer.contentType);
    add(MHD_HTTP_HEADER_LOCATION, answer.location);
    add("Failure", answer.failure);
    for (const auto& [name, value] : answer.headers) add(name.c_str(), value);
    add(MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    const MHD_Result queued = MHD_queue_response(connection, static_cast<unsigned>(answer.status), response);
    MHD_destroy_response(response);
    return queued;
}

MHD_Result SendStatus(MHD_Connection* connection, int status) {
    ServiceAnswer answer;
    answer.status = status;
    return Send(connection, answer);
}

MHD_Result TakeField(void* closure, MHD_ValueKind, const char* name, const char*, const char*, const char*,
                     const char* data, std::uint64_t offset, std::size_t size) {
    auto& pending = *static_cast<PendingRequest*>(closure);
    if (offset == 0 || !pending.lastValue) {
        pending.lastValue = &pending.request.fields.emplace(name ? name : "", "")->second;
    }
    pending.lastValue->append(data, size);
    return MHD_YES;
}

int SocketOf(MHD_Connection* connection) {
    const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    return info ? info->connect_fd : -1;
}

MHD_Result TakeArgument(void* closure, MHD_ValueKind, const char* name, const char* value) {
    static_cast<PendingRequest*>(closure)->request.fields.emplace(name, value ? value : "");
    return MHD_YES;
}

}  // namespace

struct LoopbackServer::Impl {
    int socket = -1;
    std::uint16_t port = 0;
    AdmitFunction admit;
    AnswerFunction answer;
    std::optional<ConnectionWatch> watch;  ///< from Start on
    MHD_Daemon* daemon = nullptr;

    MHD_Result Begin(MHD_Connection* connection, PendingRequest& pending, const char* method) {
        pending.request.method = method;
        const char* host = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_HOST);
        pending.request.host = host ? host : "";
        pending.admitted = admit(pending.request);
        if (!pending.admitted) return SendStatus(connection, 404);
        watch->RequestAdmitted(SocketOf(connection));
        MHD_get_connection_values(connection, MHD_GET_ARGUMENT_KIND, &TakeArgument, &pending);
        // A body that is no form's is read and dropped.
        pending.form = MHD_create_post_processor(connection, 4096, &TakeField, &pending);
        MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT, kAnswerSeconds);
        return MHD_YES;
    }

    ServiceAnswer Answer(const ServiceRequest& request) const {
        try {
            return answer(request);
        } catch (...) {
            ServiceAnswer failed;
            failed.status = 500;
            return failed;
        }
    }

    /// Called when a request's headers are in, for each piece of its body, and when it is whole.
    static MHD_Result Handle(void* closure, MHD_Connection* connection, const char*, const char* method,
                             const char*, const char* data, std::size_t* size, void** state) {
        auto& self = *static_cast<Impl*>(closure);
        auto* pending = static_cast<PendingRequest*>(*state);
        if (!pending) return MHD_NO;
        if (!pending->admitted) return self.Begin(connection, *pending, method);
        if (*size > 0) {
            pending->formBytes += *size;
            if (pending->formBytes > kFormBytes) return MHD_NO;
            if (pending->form) MHD_post_process(pending->form, data, *size);
            *size = 0;
            return MHD_YES;
        }
        if (pending->form) MHD_destroy_post_processor(std::exchange(pending->form, nullptr));
        return Send(connection, self.Answer(pending->request));
    }

    static void* TakeTarget(void*, const char* target, MHD_Connection*) {
        auto* pending = new PendingRequest;
        pending->request.target = target;
        return pending;
    }

    static void Notice(void* closure, MHD_Connection* connection, void**,
                       MHD_ConnectionNotificationCode what) {
        ConnectionWatch& watch = *static_cast<Impl*>(closure)->watch;
        if (what == MHD_CONNECTION_NOTIFY_STARTED) {
            watch.Opened(SocketOf(connection));
        } else {
            watch.Closed(SocketOf(connection));
        }
    }

    static void Complete(void* closure, MHD_Connection* connection, void** state,
                         MHD_RequestTerminationCode) {
        delete static_cast<PendingRequest*>(std::exchange(*state, nullptr));
        static_cast<Impl*>(closure)->watch->RequestAnswered(SocketOf(connection));
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

void LoopbackServer::Start(AdmitFunction admit, AnswerFunction answer,
                           std::chrono::milliseconds admissionTime) {
    impl_->watch.emplace(ConnectionWatch::Bounds{kMostWaiting, admissionTime, kAdmittedTime});
    impl_->admit = std::move(admit);
    impl_->answer = std::move(answer);
    // The server's threads inherit it.
    const BlockedSignals held;
    impl_->daemon = MHD_start_daemon(
        MHD_USE_POLL_INTERNAL_THREAD | MHD_USE_THREAD_PER_CONNECTION | MHD_USE_ITC, 0, nullptr, nullptr,
        &Impl::Handle, impl_.get(), MHD_OPTION_LISTEN_SOCKET, impl_->socket, MHD_OPTION_CONNECTION_LIMIT,
        kMostConnections, MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
        kHeaderBytes, MHD_OPTION_THREAD_STACK_SIZE, kStackBytes, MHD_OPTION_URI_LOG_CALLBACK,
        &Impl::TakeTarget, nullptr, MHD_OPTION_NOTIFY_COMPLETED, &Impl::Complete, impl_.get(),
        MHD_OPTION_NOTIFY_CONNECTION, &Impl::Notice, impl_.get(), MHD_OPTION_END);
    if (!impl_->daemon) throw std::system_error(errno, std::generic_category(), "the loopback server");
    impl_->socket = -1;  // the daemon owns it from now on
}

void LoopbackServer::Stop() {
    if (impl_->daemon) MHD_stop_daemon(std::exchange(impl_->daemon, nullptr));
}

}  // namespace sorakaze::gateway
