// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as the parameters of a challenge, answered in either scheme.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tests/http/HttpTesting.h"
#include "tests/support/TestRuntime.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze;
    static auto* const runtime = new test::TestRuntime();
    const String text(std::string(reinterpret_cast<const char*>(data), size));
    const DictionaryRef parameters = test::Client::_ParseAuthenticationParams(text);
    test::Client client;
    if (!runtime || client._CreateAuthenticationData("Basic", text, text, parameters).IsEmpty()) std::abort();
    const std::string key = client._CreateAuthenticationData("Digest", text, text, parameters).Bytes();
    if (!key.starts_with("Digest username=\"") || key.find(", nc=00000001, ") == std::string::npos)
        std::abort();
    return 0;
}
