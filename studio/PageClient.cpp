// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/PageClient.h"

#include <utility>

namespace sorakaze::studio {
namespace {

constexpr std::chrono::seconds kConnectTime{5};
constexpr std::chrono::seconds kTotalTime{30};

web::ClientOptions Options() {
    web::ClientOptions options;
    options.scheme = "http";
    options.redirects = 5;
    options.usesProxyOnLoopback = false;
    options.connectTime = kConnectTime;
    return options;
}

std::string BodyOf(web::Answer&& answer) {
    switch (answer.end) {
        case web::Answer::End::TimedOut:
            throw PageTimeout("it doesn't answer");
        case web::Answer::End::Cancelled:
            throw PageError("the show has ended");
        case web::Answer::End::Failed:
            throw PageError(answer.failure);
        case web::Answer::End::Whole:
            break;
    }
    if (answer.status != 200) throw PageError("it answers with status " + std::to_string(answer.status));
    return std::move(answer.body);
}

}  // namespace

PageClient::PageClient(std::stop_token cancelled) : client_(Options(), std::move(cancelled)) {}

std::string PageClient::Post(const std::string& address, const std::string& form, std::size_t mostBytes) {
    return BodyOf(client_.Post(address, form, {mostBytes, kTotalTime}));
}

std::string PageClient::Get(const std::string& address, std::size_t mostBytes) {
    return BodyOf(client_.Get(address, {mostBytes, kTotalTime}));
}

}  // namespace sorakaze::studio
