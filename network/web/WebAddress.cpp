// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/web/WebAddress.h"

#include <curl/curl.h>

#include <memory>

namespace sorakaze::web {
namespace {

struct UrlCleanup {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using Url = std::unique_ptr<CURLU, UrlCleanup>;

bool Set(const Url& url, const std::string& address) {
    return url && curl_url_set(url.get(), CURLUPART_URL, address.c_str(), 0) == CURLUE_OK;
}

std::string Get(const Url& url, CURLUPart part, unsigned flags = 0) {
    char* text = nullptr;
    if (curl_url_get(url.get(), part, &text, flags) != CURLUE_OK) return {};
    std::string copy(text);
    curl_free(text);
    return copy;
}

}  // namespace

AddressParts ParseAddress(const std::string& address) {
    const Url url(curl_url());
    if (!Set(url, address)) return {};
    return {Get(url, CURLUPART_SCHEME), Get(url, CURLUPART_HOST),
            Get(url, CURLUPART_PORT, CURLU_DEFAULT_PORT)};
}

std::string Resolve(const std::string& base, const std::string& reference) {
    const Url url(curl_url());
    if (reference.empty() || (!base.empty() && !Set(url, base)) || !Set(url, reference)) return {};
    return Get(url, CURLUPART_URL);
}

}  // namespace sorakaze::web
