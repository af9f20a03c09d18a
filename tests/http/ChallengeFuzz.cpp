// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as the parameters of a challenge, answered in either scheme.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "http/Credentials.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze;
    const String text(std::string(reinterpret_cast<const char*>(data), size));
    const DictionaryRef parameters = http::ParseAuthenticationParams(text);
    if (!http::BasicCredentials(text, text).Bytes().starts_with("Basic ")) std::abort();
    const std::string key = http::DigestCredentials(text, text, *parameters, 1, "nonce").Bytes();
    if (!key.starts_with("Digest username=\"") || key.find(", nc=00000001, ") == std::string::npos)
        std::abort();
    return 0;
}
