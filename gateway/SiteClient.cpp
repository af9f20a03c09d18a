// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/SiteClient.h"

#include <curl/curl.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <new>
#include <set>
#include <utility>

namespace sorakaze::gateway {
namespace {

constexpr int kRedirects = 3;
constexpr std::chrono::seconds kShortestPause{60};
constexpr std::chrono::seconds kLongestPause{3600};
/// A site that can't be reached isn't tried again before.
constexpr std::chrono::seconds kUnreachable{60};

struct EndsMulti {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
struct EndsEasy {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct EndsUrl {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

/// "https://host:443" of an address; empty for one that can't be read.
std::string Origin(const std::string& address) {
    const std::unique_ptr<CURLU, EndsUrl> url(curl_url());
    if (!url || curl_url_set(url.get(), CURLUPART_URL, address.c_str(), 0) != CURLUE_OK) return {};
    std::string origin;
    for (const CURLUPart part : {CURLUPART_SCHEME, CURLUPART_HOST, CURLUPART_PORT}) {
        char* text = nullptr;
        if (curl_url_get(url.get(), part, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) return {};
        origin += text;
        origin += ' ';
        curl_free(text);
    }
    return origin;
}

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

struct SiteClient::Shared {
    Shared(SiteLimits theLimits, Clock theClock)
        : limits(std::move(theLimits)),
          clock(std::move(theClock)),
          requests(limits.requestsPerMinute, clock) {}

    const SiteLimits limits;
    const Clock clock;
    RequestLimit requests;
    std::mutex mutex;  ///< guards the three below; `sessions` hold only live handles
    bool stopped = false;
    std::set<CURLM*> sessions;
    std::map<std::string, std::chrono::steady_clock::time_point> unreachable;  ///< sites, until then

    bool Stopped() {
        const std::lock_guard lock(mutex);
        return stopped;
    }

    bool IsReachable(const std::string& site) {
        const std::lock_guard lock(mutex);
        const auto found = unreachable.find(site);
        return found == unreachable.end() || clock() >= found->second;
    }

    void NoteUnreachable(const std::string& site) {
        const std::lock_guard lock(mutex);
        if (!stopped) unreachable[site] = clock() + kUnreachable;
    }
};

struct SiteClient::Session::Impl {
    Shared& shared;
    std::chrono::steady_clock::time_point deadline;
    std::unique_ptr<CURLM, EndsMulti> multi{curl_multi_init()};
    std::unique_ptr<CURL, EndsEasy> easy{curl_easy_init()};

    std::chrono::milliseconds Left() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(deadline -
                                                                     std::chrono::steady_clock::now());
    }

    void SetUp() {
        const auto set = [&](CURLoption option, auto value) { curl_easy_setopt(easy.get(), option, value); };
        set(CURLOPT_NOSIGNAL, 1L);
        // A name look-up that hangs is left to itself instead of being waited for.
        set(CURLOPT_QUICK_EXIT, 1L);
        set(CURLOPT_PROTOCOLS_STR, "https");
        set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
        set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
        const std::string agent = "Sorakaze/" SORAKAZE_VERSION " (unattended radio; at most " +
                                  std::to_string(shared.limits.requestsPerMinute) + " requests a minute)";
        set(CURLOPT_USERAGENT, agent.c_str());
        set(CURLOPT_WRITEFUNCTION, &Collect);
        if (!shared.limits.certificates.empty()) {
            set(CURLOPT_CAINFO, shared.limits.certificates.c_str());
            set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
        }
    }

    /// True when the answer has come whole.
    bool Perform() {
        if (curl_multi_add_handle(multi.get(), easy.get()) != CURLM_OK) return false;
        int running = 1;
        while (curl_multi_perform(multi.get(), &running) == CURLM_OK && running > 0) {
            const auto left = Left();
            if (left.count() <= 0 || shared.Stopped()) break;
            curl_multi_poll(multi.get(), nullptr, 0, static_cast<int>(left.count()), nullptr);
        }
        int others = 0;
        const CURLMsg* message = curl_multi_info_read(multi.get(), &others);
        const bool whole = message && message->msg == CURLMSG_DONE && message->data.result == CURLE_OK;
        curl_multi_remove_handle(multi.get(), easy.get());
        return whole;
    }

    void PauseIfAsked(long status) {
        if (status != 429 && status != 503) return;
        curl_off_t seconds = 0;
        curl_easy_getinfo(easy.get(), CURLINFO_RETRY_AFTER, &seconds);
        shared.requests.Pause(std::clamp(std::chrono::seconds(seconds), kShortestPause, kLongestPause));
    }
};

SiteClient::SiteClient(SiteLimits limits, Clock clock)
    : shared_(std::make_unique<Shared>(std::move(limits), std::move(clock))) {}

SiteClient::~SiteClient() = default;

void SiteClient::Stop() {
    const std::lock_guard lock(shared_->mutex);
    shared_->stopped = true;
    for (CURLM* session : shared_->sessions) curl_multi_wakeup(session);
}

SiteClient::Session::Session(SiteClient& client)
    : impl_(new Impl{*client.shared_, std::chrono::steady_clock::now() + client.shared_->limits.totalTime}) {
    if (!impl_->multi || !impl_->easy) throw std::bad_alloc();
    impl_->SetUp();
    const std::lock_guard lock(impl_->shared.mutex);
    impl_->shared.sessions.insert(impl_->multi.get());
}

SiteClient::Session::~Session() {
    const std::lock_guard lock(impl_->shared.mutex);
    impl_->shared.sessions.erase(impl_->multi.get());
}

std::optional<std::string> SiteClient::Session::Get(const std::string& site, const std::string& path,
                                                    std::size_t longest) {
    CURL* easy = impl_->easy.get();
    std::string address = site + path;
    const std::string origin = Origin(site);
    if (!impl_->shared.IsReachable(site)) return {};
    for (int redirect = 0; redirect <= kRedirects; ++redirect) {
        const auto left = impl_->Left();
        if (left.count() <= 0 || impl_->shared.Stopped() || !impl_->shared.requests.Take()) return {};
        Body body{{}, std::min(longest, impl_->shared.limits.answerSize)};
        curl_easy_setopt(easy, CURLOPT_URL, address.c_str());
        curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(left.count()));
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, &body);
        const bool whole = impl_->Perform();
        long status = 0;
        curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
        if (status == 0 || (!whole && impl_->Left().count() <= 0)) impl_->shared.NoteUnreachable(site);
        if (!whole) return {};
        if (status == 200) return std::move(body.bytes);
        impl_->PauseIfAsked(status);
        const char* elsewhere = nullptr;
        curl_easy_getinfo(easy, CURLINFO_REDIRECT_URL, &elsewhere);
        if (!elsewhere || Origin(elsewhere) != origin) return {};
        address = elsewhere;
    }
    return {};
}

}  // namespace sorakaze::gateway
