// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Answers to the challenges of servers and proxies.
#include "app/runtime/Exceptions.h"
#include "app/runtime/Random.h"
#include "http/Credentials.h"
#include "http/HTTPSocket.h"

namespace sorakaze {

bool HTTPSocket::_SetAuthentication(const String& kind) {
    const bool isProxy = kind == "Proxy";
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
    const Challenge ask = isProxy ? ProxyAuthenticationRequired : AuthenticationRequired;
    if (!ask || !ask(parameters->Lookup("realm").Text(), InternetHeadersRef(_pageHeaders), name, password))
        return false;
    // Kept behaviour 78.
    const String key = _CreateAuthenticationData(scheme, name, password, parameters);
    if (key.IsEmpty()) return false;
    (isProxy ? _proxyAuthenticationKey : _authenticationKey) = key;
    return true;
}

DictionaryRef HTTPSocket::_ParseAuthenticationParams(const String& text) {
    return http::ParseAuthenticationParams(text);
}

String HTTPSocket::_CreateAuthenticationData(const String& scheme, const String& name, const String& password,
                                             const DictionaryRef& parameters) {
    if (scheme == "Basic") return http::BasicCredentials(name, password);
    if (scheme != "Digest") return {};
    const String nonce = NotNil(parameters)->Lookup("nonce", String()).Text();
    if (!_Nonces) _Nonces = std::make_shared<Dictionary>();
    // Kept behaviour 74.
    const std::int32_t uses = _Nonces->Lookup(nonce, 0).Integer();
    _Nonces->SetValue(nonce, uses);
    return http::DigestCredentials(name, password, *parameters, uses + 1, _CreateNonce());
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
    return http::EncodeHex(data);
}

}  // namespace sorakaze
