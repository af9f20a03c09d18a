// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/SiteClient.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <stop_token>
#include <utility>

#include "base/Ascii.h"
#include "gateway/encyclopaedia/SiteApi.h"
#include "network/web/WebAddress.h"
#include "network/web/WebClient.h"

namespace sorakaze::gateway {
namespace {

constexpr int kMostRedirects = 3;
/// Of a busy site that names none.
constexpr std::chrono::seconds kUsualPause{60};
constexpr std::chrono::seconds kLongestPause{3600};
/// A busy site is asked again within a search after a pause of at most...
constexpr std::chrono::seconds kShortPause{5};
/// How long a search may wait for its turns. With the time of its requests this is less than its client
/// waits.
constexpr std::chrono::seconds kPatience{12};
/// How long a site that couldn't be reached is not asked again.
constexpr std::chrono::seconds kUnreachable{60};

constexpr std::chrono::hours kRefused{1};
/// An error of the interface is shorter.
constexpr std::size_t kLongestError = 64u << 10;

constexpr int kForbidden = 403;
constexpr int kTooManyRequests = 429;
constexpr int kUnavailable = 503;

bool IsSameSite(const std::string& one, const std::string& other) {
    const auto parts = web::ParseAddress(one), otherParts = web::ParseAddress(other);
    return parts.scheme == otherParts.scheme && parts.host == otherParts.host &&
           parts.port == otherParts.port;
}

web::ClientOptions WebOptions(const SiteLimits& limits) {
    web::ClientOptions options;
    options.scheme = "https";
    options.userAgent = "Sorakaze/" SORAKAZE_VERSION;
    if (!limits.contact.empty())
        options.userAgent += " (" + limits.contact + ") " + web::LibraryNameAndVersion();
    options.acceptsGzip = true;
    options.certificates = limits.certificates;
    return options;
}

bool IsJsonObject(std::string_view body) {
    const std::size_t first = body.find_first_not_of(" \t\r\n");
    return first != body.npos && body[first] == '{';
}

/// The code of the error that arrived with status 200; empty without one. Printable.
std::string ErrorOf(const std::string& header, const std::string& body) {
    constexpr std::size_t kLongestCode = 40;
    std::string code = header.empty() && body.size() <= kLongestError ? ReadError(body) : header;
    std::erase_if(code,
                  [](char c) { return !ascii::IsLetter(c) && !ascii::IsDigit(c) && c != '-' && c != '_'; });
    return code.substr(0, kLongestCode);
}

bool IsBusy(const web::Answer& answer, std::string_view errorCode) {
    if (answer.status == kTooManyRequests || answer.status == kUnavailable) return true;
    return errorCode == "ratelimited" || errorCode == "maxlag" || errorCode == "readonly" ||
           errorCode == "cirrussearch-too-busy-error";
}

}  // namespace

struct SiteClient::Shared {
    Shared(SiteLimits theLimits, Clock theClock, Sleep sleep)
        : limits(std::move(theLimits)),
          clock(std::move(theClock)),
          requests(limits.requestsPerMinute, clock, std::move(sleep)) {}

    const SiteLimits limits;
    const Clock clock;
    RequestLimit requests;
    std::stop_source stop;
    struct Unreachable {
        std::chrono::steady_clock::time_point until;
        std::string failure;
    };
    std::mutex mutex;                                ///< guards what follows
    std::map<std::string, Unreachable> unreachable;  ///< sites

    /// Why the site is not to be asked yet; empty if it is.
    std::string FailureOf(const std::string& site) {
        const std::lock_guard lock(mutex);
        const auto found = unreachable.find(site);
        return found == unreachable.end() || clock() >= found->second.until ? "" : found->second.failure;
    }

    /// The site is not asked for so long.
    void NoteUnreachable(const std::string& site, const std::string& failure, std::chrono::seconds time) {
        const std::lock_guard lock(mutex);
        unreachable[site] = {clock() + time, failure};
    }
};

struct SiteClient::Session::Impl {
    explicit Impl(Shared& ofClient)
        : shared(ofClient),
          deadline(std::chrono::steady_clock::now() + shared.limits.totalTime + kPatience),
          web(WebOptions(shared.limits), shared.stop.get_token()) {}

    std::chrono::milliseconds Left() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(deadline - patience -
                                                                     std::chrono::steady_clock::now());
    }

    /// Nullopt, because of `why`: "en.example.org could not be reached".
    std::nullopt_t Fail(const std::string& site, const std::string& why) {
        failure = web::ParseAddress(site).host + " " + why;
        return std::nullopt;
    }

    std::nullopt_t FailUnanswered(const std::string& site, const web::Answer& answer) {
        using End = web::Answer::End;
        if (answer.end == End::Cancelled) return std::nullopt;
        Fail(site, answer.end == End::TimedOut ? "did not answer in time"
                   : answer.status == 0        ? "could not be reached"
                                               : "sent an answer that could not be read");
        if (answer.status == 0 || answer.end == End::TimedOut)
            shared.NoteUnreachable(site, failure, kUnreachable);
        return std::nullopt;
    }

    /// Of an answer that is none: `why` is "the status 500" or so.
    std::nullopt_t FailRefused(const std::string& site, const web::Answer& answer, const std::string& why) {
        if (answer.status != kForbidden) return Fail(site, "answered with " + why);
        Fail(site, "refuses our requests and is not asked for an hour");
        if (shared.limits.contact.empty()) failure += ": name a \"contact\" in deployment.json";
        shared.NoteUnreachable(site, failure, kRefused);
        return std::nullopt;
    }

    /// Honours the pause that a busy site asks for. True if the request may be sent again.
    bool PauseForBusy(const web::Answer& answer) {
        const auto asked = answer.retryAfter.count() > 0 ? answer.retryAfter : kUsualPause;
        shared.requests.Pause(std::min(asked, kLongestPause));
        return asked <= kShortPause && !std::exchange(hasTriedAgain, true);
    }

    Shared& shared;
    const std::chrono::steady_clock::time_point deadline;
    web::Client web;
    std::string failure;
    std::chrono::nanoseconds patience{kPatience};
    bool hasTriedAgain = false;
};

SiteClient::SiteClient(SiteLimits limits, Clock clock, Sleep sleep)
    : shared_(std::make_unique<Shared>(std::move(limits), std::move(clock), std::move(sleep))) {}

SiteClient::~SiteClient() = default;

void SiteClient::Stop() {
    shared_->stop.request_stop();
}

SiteClient::Session::Session(SiteClient& client) : impl_(std::make_unique<Impl>(*client.shared_)) {}

SiteClient::Session::~Session() = default;

const std::string& SiteClient::Session::Failure() const {
    return impl_->failure;
}

std::optional<std::string> SiteClient::Session::Get(const std::string& site, const std::string& path,
                                                    std::size_t mostBytes) {
    Shared& shared = impl_->shared;
    impl_->failure = shared.FailureOf(site);
    if (!impl_->failure.empty()) return {};
    std::string address = site + path;
    for (int redirect = 0; redirect <= kMostRedirects; ++redirect) {
        const bool mayAsk = shared.requests.Take(impl_->patience, shared.stop.get_token());
        if (shared.stop.stop_requested()) return {};
        if (!mayAsk) return impl_->Fail(site, "is not asked more often for now");
        const auto left = impl_->Left();
        if (left.count() <= 0) return impl_->Fail(site, "did not answer in time");
        web::Answer answer = impl_->web.Get(address, {std::min(mostBytes, shared.limits.answerSize), left});
        if (answer.end != web::Answer::End::Whole) return impl_->FailUnanswered(site, answer);
        std::string error;
        if (answer.status == 200) {
            if (!IsJsonObject(answer.body)) return impl_->Fail(site, "sent an answer that could not be read");
            error = ErrorOf(impl_->web.Header("MediaWiki-API-Error"), answer.body);
            if (error.empty() || IsNoSuchArticle(error)) return std::move(answer.body);
        }
        if (IsBusy(answer, error) && impl_->PauseForBusy(answer)) continue;
        if (answer.redirect.empty() || !IsSameSite(answer.redirect, site)) {
            return impl_->FailRefused(
                site, answer,
                error.empty() ? "the status " + std::to_string(answer.status) : "the error " + error);
        }
        address = answer.redirect;
    }
    return impl_->Fail(site, "redirects without end");
}

}  // namespace sorakaze::gateway
