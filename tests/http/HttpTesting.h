// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A socket whose inner life a test sees, and which can live without a network: what a server would do is done
// to it.
#pragma once

#include <string>
#include <string_view>

#include "http/HTTPSocket.h"

namespace sorakaze::test {

/// Long enough for any machine, for what must not run out.
inline constexpr std::int32_t kLongSeconds = 60;

class Client : public HTTPSocket {
  public:
    Client() { Constructor(); }

    using HTTPSocket::_CreateAuthenticationData;
    using HTTPSocket::_CreateNonce;
    using HTTPSocket::_EncodeHex;
    using HTTPSocket::_ParseAuthenticationParams;
    using HTTPSocket::DigestAuthentication;

    /// The server accepts the connection of a request in a waiting form or the other...
    void Open(const String& method, bool waits) {
        _httpAction = method;
        synchronous = waits;
        Event_Connected();
    }
    /// ...sends...
    void Arrive(std::string_view bytes) {
        Receive(bytes);
        Event_DataAvailable();
    }
    /// ...and closes.
    void End() { Event_Error(); }

    /// The next request's credentials, and the proxy's.
    std::string Keys() const { return _authenticationKey.Bytes() + "/" + _proxyAuthenticationKey.Bytes(); }
    bool HasHead() const { return _pageHeaders != nullptr; }
    bool IsComplete() const { return _pageComplete; }
    std::string Page() const { return _pageBuffer.Text().Bytes(); }
    std::int32_t PageLength() { return _pageBuffer.Length(); }
    /// Status, told length, headers and page in one text, to be compared.
    std::string Outcome() {
        return Str(_httpStatusCode).Bytes() + "/" + Str(_totalLength).Bytes() +
               (_pageComplete ? "/" : "...") +
               (_pageHeaders ? "[" + _pageHeaders->_FormatHTTPHeaders().Bytes() + "]" : "-") + Page();
    }

    /// Notes every event that isn't an authentication's; a progress only where no head came before it.
    void NoteEvents() {
        Connected = [this] { events += "connected "; };
        HeadersReceived = [this](const InternetHeadersRef&, std::int32_t status) {
            events += "headers:" + std::to_string(status) + " ";
        };
        ReceiveProgress = [this](std::int32_t received, std::int32_t total, const String&) {
            if (events.find("headers") == std::string::npos) events += "stray ";
            last = std::to_string(received) + "/" + std::to_string(total) + " ";
        };
        PageReceived = [this](const String&, std::int32_t, const InternetHeadersRef&, const String& page) {
            events += last + "page:" + page.Bytes() + " ";
        };
        DownloadComplete = [this](const String&, std::int32_t, const InternetHeadersRef&,
                                  const FolderItemRef& file) {
            events += last + "file:" + file->Name().Bytes() + " ";
        };
        Error = [this](std::int32_t code) { events += "error:" + std::to_string(code) + " "; };
    }
    std::string events;
    std::string last;  ///< the last progress
};

}  // namespace sorakaze::test
