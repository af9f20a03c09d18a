// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/PageClient.h"

#include <curl/curl.h>

#include <new>
#include <utility>

namespace sorakaze::studio {
namespace {

constexpr long kConnectingSeconds = 5;
constexpr long kWholeSeconds = 30;
constexpr int kLookMilliseconds = 1000;

struct Body {
    std::string bytes;
    std::size_t largest;
};

std::size_t Collect(char* data, std::size_t, std::size_t size, void* closure) {
    auto& body = *static_cast<Body*>(closure);
    if (size > body.largest - body.bytes.size()) return CURL_WRITEFUNC_ERROR;
    body.bytes.append(data, size);
    return size;
}

}  // namespace

struct PageClient::Handles {
    Handles() {
        if (!multi || !easy) throw std::bad_alloc();
        const auto set = [&](CURLoption option, auto value) { curl_easy_setopt(easy, option, value); };
        set(CURLOPT_NOSIGNAL, 1L);
        // A name look-up that hangs is left to itself instead of being waited for.
        set(CURLOPT_QUICK_EXIT, 1L);
        set(CURLOPT_PROTOCOLS_STR, "http");
        set(CURLOPT_NOPROXY, "127.0.0.1,localhost,::1");
        set(CURLOPT_FOLLOWLOCATION, 1L);
        set(CURLOPT_MAXREDIRS, 5L);
        set(CURLOPT_CONNECTTIMEOUT, kConnectingSeconds);
        set(CURLOPT_TIMEOUT, kWholeSeconds);
        set(CURLOPT_WRITEFUNCTION, &Collect);
    }
    ~Handles() {
        curl_easy_cleanup(easy);
        curl_multi_cleanup(multi);
    }
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;

    CURLM* multi = curl_multi_init();
    CURL* easy = curl_easy_init();
};

PageClient::PageClient(std::stop_token cancelled)
    : cancelled_(cancelled),
      handles_(std::make_unique<Handles>()),
      wake_(std::move(cancelled), [this] { curl_multi_wakeup(handles_->multi); }) {}

PageClient::~PageClient() = default;

std::string PageClient::Post(const std::string& address, const std::string& form, std::size_t largest) {
    curl_easy_setopt(handles_->easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(form.size()));
    curl_easy_setopt(handles_->easy, CURLOPT_COPYPOSTFIELDS, form.c_str());
    return Perform(address, largest);
}

std::string PageClient::Get(const std::string& address, std::size_t largest) {
    curl_easy_setopt(handles_->easy, CURLOPT_HTTPGET, 1L);
    return Perform(address, largest);
}

std::string PageClient::Perform(const std::string& address, std::size_t largest) {
    CURLM* multi = handles_->multi;
    CURL* easy = handles_->easy;
    Body body{{}, largest};
    curl_easy_setopt(easy, CURLOPT_URL, address.c_str());
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &body);
    curl_multi_add_handle(multi, easy);
    int running = 1;
    while (!cancelled_.stop_requested() && curl_multi_perform(multi, &running) == CURLM_OK && running > 0) {
        curl_multi_poll(multi, nullptr, 0, kLookMilliseconds, nullptr);
    }
    int others = 0;
    const CURLMsg* message = curl_multi_info_read(multi, &others);
    const CURLcode result =
        message && message->msg == CURLMSG_DONE ? message->data.result : CURLE_ABORTED_BY_CALLBACK;
    curl_multi_remove_handle(multi, easy);
    if (result == CURLE_OPERATION_TIMEDOUT) throw PageTimeout("it doesn't answer");
    if (result != CURLE_OK) throw PageError(curl_easy_strerror(result));
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    if (status != 200) throw PageError("it answers with status " + std::to_string(status));
    return std::move(body.bytes);
}

}  // namespace sorakaze::studio
