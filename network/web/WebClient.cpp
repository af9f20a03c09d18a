// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/web/WebClient.h"

#include <curl/curl.h>

#include <algorithm>
#include <functional>
#include <new>
#include <utility>

namespace sorakaze::web {
namespace {

using Clock = std::chrono::steady_clock;

struct MultiCleanup {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
struct EasyCleanup {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};

struct Body {
    std::string bytes;
    std::size_t limit;
};

std::size_t Collect(char* data, std::size_t, std::size_t size, void* closure) {
    auto& body = *static_cast<Body*>(closure);
    if (size > body.limit - body.bytes.size()) return CURL_WRITEFUNC_ERROR;
    body.bytes.append(data, size);
    return size;
}

}  // namespace

struct Client::Impl {
    Impl(const ClientOptions& options, std::stop_token stop) : cancelled(std::move(stop)) {
        if (!multi || !easy) throw std::bad_alloc();
        Set(CURLOPT_NOSIGNAL, 1L);
        // A name look-up that hangs is abandoned: nobody waits for it.
        Set(CURLOPT_QUICK_EXIT, 1L);
        Set(CURLOPT_PROTOCOLS_STR, options.scheme.c_str());
        Set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
        Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
        if (!options.userAgent.empty()) Set(CURLOPT_USERAGENT, options.userAgent.c_str());
        if (options.acceptsGzip) Set(CURLOPT_ACCEPT_ENCODING, "gzip");
        if (!options.usesProxyOnLoopback) Set(CURLOPT_NOPROXY, "127.0.0.1,localhost,::1");
        Set(CURLOPT_FOLLOWLOCATION, options.redirects > 0 ? 1L : 0L);
        Set(CURLOPT_MAXREDIRS, options.redirects);
        if (options.connectTime.count() > 0) {
            Set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options.connectTime.count()));
        }
        if (!options.certificates.empty()) {
            Set(CURLOPT_CAINFO, options.certificates.c_str());
            Set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
        }
        Set(CURLOPT_WRITEFUNCTION, &Collect);
    }

    template <typename Value>
    void Set(CURLoption option, Value value) {
        curl_easy_setopt(easy.get(), option, value);
    }

    Answer Perform(const std::string& address, const RequestBounds& bounds) {
        Body body{{}, bounds.bodyBytes};
        Set(CURLOPT_URL, address.c_str());
        Set(CURLOPT_TIMEOUT_MS, static_cast<long>(bounds.totalTime.count()));
        Set(CURLOPT_WRITEDATA, &body);
        Answer answer;
        if (const CURLMcode failure = curl_multi_add_handle(multi.get(), easy.get()); failure != CURLM_OK) {
            answer.end = Answer::End::Failed;
            answer.failure = curl_multi_strerror(failure);
            return answer;
        }
        Drive(Clock::now() + bounds.totalTime, answer);
        curl_multi_remove_handle(multi.get(), easy.get());
        if (answer.end == Answer::End::Cancelled) return answer;
        answer.body = std::move(body.bytes);
        curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &answer.status);
        const char* redirect = nullptr;
        curl_easy_getinfo(easy.get(), CURLINFO_REDIRECT_URL, &redirect);
        if (redirect) answer.redirect = redirect;
        curl_off_t retryAfter = 0;
        curl_easy_getinfo(easy.get(), CURLINFO_RETRY_AFTER, &retryAfter);
        answer.retryAfter = std::chrono::seconds(retryAfter);
        return answer;
    }

    /// Sets how the request ended.
    void Drive(Clock::time_point deadline, Answer& answer) {
        int running = 1;
        CURLMcode driven = CURLM_OK;
        while (!cancelled.stop_requested() &&
               (driven = curl_multi_perform(multi.get(), &running)) == CURLM_OK && running > 0) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            if (left.count() <= 0) break;
            curl_multi_poll(multi.get(), nullptr, 0, static_cast<int>(left.count()), nullptr);
        }
        int others = 0;
        const CURLMsg* message = curl_multi_info_read(multi.get(), &others);
        if (driven != CURLM_OK) {
            answer.end = Answer::End::Failed;
            answer.failure = curl_multi_strerror(driven);
        } else if (!message || message->msg != CURLMSG_DONE) {
            answer.end = cancelled.stop_requested() ? Answer::End::Cancelled : Answer::End::TimedOut;
        } else if (message->data.result == CURLE_OPERATION_TIMEDOUT) {
            answer.end = Answer::End::TimedOut;
        } else if (message->data.result != CURLE_OK) {
            answer.end = Answer::End::Failed;
            answer.failure = curl_easy_strerror(message->data.result);
        } else {
            answer.end = Answer::End::Whole;
        }
    }

    const std::stop_token cancelled;
    std::unique_ptr<CURLM, MultiCleanup> multi{curl_multi_init()};
    std::unique_ptr<CURL, EasyCleanup> easy{curl_easy_init()};
    /// Last: it is gone before the handle that it wakes.
    std::stop_callback<std::function<void()>> wake{cancelled, [this] { curl_multi_wakeup(multi.get()); }};
};

std::string LibraryNameAndVersion() {
    return std::string("libcurl/") + curl_version_info(CURLVERSION_NOW)->version;
}

Client::Client(const ClientOptions& options, std::stop_token cancelled)
    : impl_(std::make_unique<Impl>(options, std::move(cancelled))) {}

Client::~Client() = default;

Answer Client::Get(const std::string& address, const RequestBounds& bounds) {
    impl_->Set(CURLOPT_HTTPGET, 1L);
    return impl_->Perform(address, bounds);
}

std::string Client::Header(const char* name) const {
    curl_header* header = nullptr;
    const auto found = curl_easy_header(impl_->easy.get(), name, 0, CURLH_HEADER, -1, &header);
    return found == CURLHE_OK ? header->value : "";
}

Answer Client::Post(const std::string& address, const std::string& form, const RequestBounds& bounds) {
    impl_->Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(form.size()));
    impl_->Set(CURLOPT_COPYPOSTFIELDS, form.c_str());
    return impl_->Perform(address, bounds);
}

}  // namespace sorakaze::web
