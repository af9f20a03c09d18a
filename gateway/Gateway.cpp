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

#include "gateway/Encyclopaedia.h"
#include "gateway/LoopbackServer.h"
#include "gateway/VoiceService.h"

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
                         options.requestsPerMinute}),
          address("127.0.0.1:" + std::to_string(server.Port())),
          prefix('/' + RandomToken()) {
        server.Start([this](const ServerRequest& request) { return Admits(request); },
                     [this](const ServerRequest& request) { return Answer(request); });
    }

    ~Impl() {
        voice.Stop();
        encyclopaedia.Stop();
        server.Stop();
    }

    /// What stands behind the token.
    std::string_view Behind(const ServerRequest& request) const {
        return std::string_view(request.target).substr(prefix.size());
    }

    /// The header's check is against pages from elsewhere whose host's name has been made to mean this
    /// machine.
    bool Admits(const ServerRequest& request) const {
        if (request.host != address || !request.target.starts_with(prefix + '/')) return false;
        const bool reads = request.method == "GET" || request.method == "HEAD";
        return reads || (request.method == "POST" && Behind(request).starts_with(kVoicePath));
    }

    ServerAnswer Answer(const ServerRequest& request) {
        const std::string_view target = Behind(request);
        if (target.starts_with(kVoicePath)) return Speak(request, target);
        ServerAnswer answer;
        if (const auto search = ParseSearch(target)) {
            if (const auto found = encyclopaedia.Find(*search)) {
                answer.status = 302;
                answer.location = "http://" + address + prefix + ArticleTarget(*found);
            }
        } else if (const auto article = ParseArticleAddress(target)) {
            if (auto page = encyclopaedia.Page(*article)) {
                answer = {200, "text/html; charset=utf-8", std::move(*page), {}};
            }
        }
        return answer;
    }

    ServerAnswer Speak(const ServerRequest& request, std::string_view target) {
        const std::string_view path = target.substr(0, target.find('?'));
        VoiceAnswer spoken = voice.Answer({request.method, std::string(path), request.fields});
        return {spoken.status, std::move(spoken.contentType), std::move(spoken.body), {}};
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
