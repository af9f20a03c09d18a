// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/Gateway.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <string_view>
#include <system_error>
#include <utility>

#include "gateway/encyclopaedia/Encyclopaedia.h"
#include "gateway/server/LoopbackServer.h"
#include "gateway/voice/VoiceService.h"

namespace sorakaze::gateway {
namespace {

/// 128 bits, as hexadecimal digits.
std::string RandomToken() {
    std::array<std::uint8_t, 16> bits{};
    if (::getrandom(bits.data(), bits.size(), 0) != static_cast<ssize_t>(bits.size())) {
        throw std::system_error(errno, std::generic_category(), "getrandom");
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string token;
    for (const std::uint8_t byte : bits) token += {kDigits[byte >> 4], kDigits[byte & 15]};
    return token;
}

constexpr std::string_view kVoicePath = "/voice_neo/";

}  // namespace

struct Gateway::Impl {
    explicit Impl(Options options)
        : voice(std::move(options.resources), std::move(options.temporaryFolder)),
          encyclopaedia(std::move(options.englishSite), std::move(options.japaneseSite),
                        {std::move(options.certificates), options.totalTime, options.articleSize,
                         options.requestsPerMinute, std::move(options.contact)}),
          address("127.0.0.1:" + std::to_string(server.Port())),
          prefix('/' + RandomToken()) {
        server.Start([this](const ServiceRequest& request) { return Admits(request); },
                     [this](const ServiceRequest& request) { return Answer(request); });
    }

    ~Impl() {
        voice.Stop();
        encyclopaedia.Stop();
        server.Stop();
    }

    std::string_view TargetAfterToken(const ServiceRequest& request) const {
        return std::string_view(request.target).substr(prefix.size());
    }

    /// The host is checked because a page from elsewhere may have had its own host's name resolved to this
    /// machine.
    bool Admits(const ServiceRequest& request) const {
        if (request.host != address || !request.target.starts_with(prefix + '/')) return false;
        const bool reads = request.method == "GET" || request.method == "HEAD";
        return reads || (request.method == "POST" && TargetAfterToken(request).starts_with(kVoicePath));
    }

    ServiceAnswer Answer(ServiceRequest request) {
        request.target = TargetAfterToken(request);
        ServiceAnswer answer =
            request.target.starts_with(kVoicePath) ? voice.Answer(request) : encyclopaedia.Answer(request);
        if (!answer.location.empty()) answer.location.insert(0, "http://" + address + prefix);
        return answer;
    }

    VoiceService voice;
    Encyclopaedia encyclopaedia;
    LoopbackServer server;
    const std::string address;
    const std::string prefix;
};

Gateway::Gateway(Options options) : impl_(std::make_unique<Impl>(std::move(options))) {}

Gateway::~Gateway() = default;

std::string Gateway::Host() const {
    return impl_->address + impl_->prefix;
}

}  // namespace sorakaze::gateway
