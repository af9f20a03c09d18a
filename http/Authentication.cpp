// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Answers to the challenges of servers and proxies.
#include "app/runtime/Digests.h"
#include "app/runtime/Exceptions.h"
#include "app/runtime/MemoryBlock.h"
#include "app/runtime/Random.h"
#include "http/HTTPSocket.h"

namespace sorakaze {
namespace {

String Quoted(const String& text) {
    return "\"" + text + "\"";
}

}  // namespace

bool HTTPSocket::_SetAuthentication(const String& kind) {
    const bool forProxy = kind == "Proxy";
    const String challenge = _pageHeaders->Value(kind + "-Authenticate");
    const String scheme = Left(challenge, InStr(challenge, " ") - 1);
    const DictionaryRef parameters = _ParseAuthenticationParams(Mid(challenge, Len(scheme) + 2));
    parameters->SetValue("method", _httpAction);
    parameters->SetValue("uri", _path);
    if (parameters->HasKey("nonce"))
        _lastServerNonce = parameters->Lookup("nonce").Text();
    else
        parameters->SetValue("nonce", _lastServerNonce);

    String name;
    String password;
    const Challenge ask = forProxy ? ProxyAuthenticationRequired : AuthenticationRequired;
    if (!ask || !ask(parameters->Lookup("realm").Text(), InternetHeadersRef(_pageHeaders), name, password))
        return false;
    // Kept behaviour 78.
    const String key = _CreateAuthenticationData(scheme, name, password, parameters);
    if (key.IsEmpty()) return false;
    (forProxy ? _proxyAuthenticationKey : _authenticationKey) = key;
    return true;
}

/// A parameter a line, each a name, "=" and a value in quotes. Kept behaviours 72 and 73.
DictionaryRef HTTPSocket::_ParseAuthenticationParams(const String& text) {
    auto parameters = std::make_shared<Dictionary>();
    for (const String& piece : Split(text, "\r\n")) {
        const String key = Left(piece, InStr(piece, "=") - 1);
        const std::int32_t quote = Len(key) + 3;
        parameters->SetValue(key, Mid(piece, quote, Len(piece) - quote));
    }
    return parameters;
}

String HTTPSocket::_CreateAuthenticationData(const String& scheme, const String& name, const String& password,
                                             const DictionaryRef& parameters) {
    // Kept behaviour 77.
    if (scheme == "Basic") return "Basic " + EncodeBase64(name + ":" + password, 76);
    if (scheme == "Digest") return DigestAuthentication(name, password, NotNil(parameters), _CreateNonce());
    return {};
}

String HTTPSocket::DigestAuthentication(const String& name, const String& password,
                                        const DictionaryRef& parameters, const String& cnonce) {
    const auto parameter = [&](const char* key, const char* fallback = "") {
        return parameters->Lookup(key, String(fallback)).Text();
    };
    const String nonce = parameter("nonce");
    if (!_Nonces) _Nonces = std::make_shared<Dictionary>();
    // Kept behaviour 74.
    _Nonces->SetValue(nonce, _Nonces->Lookup(nonce, 0).Integer());
    const String count = Format(_Nonces->Lookup(nonce).Integer() + 1, "00000000");

    // Kept behaviour 75.
    const String who = _EncodeHex(MD5(name + ":" + parameter("realmn") + ":" + password));
    const String what = _EncodeHex(MD5(parameter("method", "GET") + ":" + parameter("uri", "/")));
    const String response = _EncodeHex(MD5(who + ":" + nonce + ":" + count + ":" + cnonce + ":auth:" + what));

    String value = "Digest username=" + Quoted(name) + ", realm=" + Quoted(parameter("realm")) +
                   ", nonce=" + Quoted(nonce) + ", uri=" + Quoted(parameter("uri")) +
                   ", qop=auth, nc=" + count + ", cnonce=" + Quoted(cnonce) +
                   ", response=" + Quoted(response) + ", ";
    // Kept behaviour 76.
    if (parameters->HasKey("opaque")) value += "opaque=" + Quoted(parameter("oqaque"));
    return value;
}

String HTTPSocket::_CreateNonce() {
    constexpr int kLength = 25;
    // One for all sockets, made at the first use.
    static Random random;
    String nonce;
    for (int i = 0; i < kLength; ++i) {
        const std::int32_t drawn = random.InRange(0, 61);
        nonce += Encodings::UTF8.Chr(drawn + (drawn < 10 ? '0' : drawn < 36 ? 'A' - 10 : 'a' - 36));
    }
    return nonce;
}

String HTTPSocket::_EncodeHex(const String& data) {
    const MemoryBlock bytes(data);
    String digits;
    for (std::int32_t i = 0; i < bytes.Size(); ++i) digits += Right("00" + Hex(bytes.Byte(i)), 2);
    return Lowercase(digits);
}

}  // namespace sorakaze
