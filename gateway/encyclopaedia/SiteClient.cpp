// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/SiteClient.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <stop_token>
#include <utility>

#include "network/web/WebAddress.h"
#include "network/web/WebClient.h"

namespace sorakaze::gateway {
namespace {

constexpr int kMostRedirects = 3;
constexpr std::chrono::seconds kShortestPause{60};
constexpr std::chrono::seconds kLongestPause{3600};
/// How long a site that couldn't be reached is not asked again.
constexpr std::chrono::seconds kUnreachable{60};

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
    options.userAgent = "Sorakaze/" SORAKAZE_VERSION " (unattended radio; at most " +
                        std::to_string(limits.requestsPerMinute) + " requests a minute)";
    options.certificates = limits.certificates;
    return options;
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

    void NoteUnreachable(const std::string& site, const std::string& failure) {
        const std::lock_guard lock(mutex);
        unreachable[site] = {clock() + kUnreachable, failure};
    }

    void PauseIfAsked(const web::Answer& answer) {
        if (answer.status != kTooManyRequests && answer.status != kUnavailable) return;
        requests.Pause(std::clamp(answer.retryAfter, kShortestPause, kLongestPause));
    }
};

struct SiteClient::Session::Impl {
    explicit Impl(Shared& ofClient)
        : shared(ofClient),
          deadline(std::chrono::steady_clock::now() + shared.limits.totalTime),
          web(WebOptions(shared.limits), shared.stop.get_token()) {}

    std::chrono::milliseconds Left() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(deadline -
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
        if (answer.status == 0 || answer.end == End::TimedOut) shared.NoteUnreachable(site, failure);
        return std::nullopt;
    }

    Shared& shared;
    const std::chrono::steady_clock::time_point deadline;
    web::Client web;
    std::string failure;
};

SiteClient::SiteClient(SiteLimits limits, Clock clock)
    : shared_(std::make_unique<Shared>(std::move(limits), std::move(clock))) {}

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
        const auto left = impl_->Left();
        if (shared.stop.stop_requested()) return {};
        if (left.count() <= 0) return impl_->Fail(site, "did not answer in time");
        if (!shared.requests.Take()) return impl_->Fail(site, "is not asked more often for now");
        web::Answer answer = impl_->web.Get(address, {std::min(mostBytes, shared.limits.answerSize), left});
        if (answer.end != web::Answer::End::Whole) return impl_->FailUnanswered(site, answer);
        if (answer.status == 200) return std::move(answer.body);
        shared.PauseIfAsked(answer);
        if (answer.redirect.empty() || !IsSameSite(answer.redirect, site))
            return impl_->Fail(site, "answered with the status " + std::to_string(answer.status));
        address = answer.redirect;
    }
    return impl_->Fail(site, "redirects without end");
}

}  // namespace sorakaze::gateway
