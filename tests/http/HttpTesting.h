// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A socket that shows its state to a test, and that needs no network: a test does to it what a server would
// do.
#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "http/HTTPSocket.h"

namespace sorakaze::test {

/// A time limit that must not be reached on any machine.
inline constexpr std::int32_t kLongSeconds = 60;

class Client : public HTTPSocket {
  public:
    Client() { Constructor(); }

    using HTTPSocket::_CreateAuthenticationData;
    using HTTPSocket::_CreateNonce;

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
    /// Status, claimed length, headers and page in one text, for comparison.
    std::string Outcome() {
        return Str(_httpStatusCode).Bytes() + "/" + Str(_totalLength).Bytes() +
               (_pageComplete ? "/" : "...") +
               (_pageHeaders ? "[" + _pageHeaders->_FormatHTTPHeaders().Bytes() + "]" : "-") + Page();
    }

    /// Records every event; a progress only if no head came before it.
    void RecordEvents() {
        Connected = [this] { Record(0, "connected "); };
        HeadersReceived = [this](auto&&, std::int32_t status) { Record(1, "headers:" + Spaced(status)); };
        ReceiveProgress = [this](std::int32_t received, std::int32_t total, auto&&) {
            last = std::to_string(received) + "/" + Spaced(total);
            Record(2, events.find("headers") == std::string::npos ? "stray " : "");
        };
        PageReceived = [this](auto&&, auto&&, auto&&, const String& page) {
            Record(3, last + "page:" + page.Bytes() + " ");
        };
        DownloadComplete = [this](auto&&, auto&&, auto&&, const FolderItemRef& file) {
            Record(4, last + "file:" + file->Name().Bytes() + " ");
        };
        Error = [this](std::int32_t code) { Record(5, "error:" + Spaced(code)); };
    }
    /// Records the challenges and answers that many.
    void Answer(int challenges, const String& name, const String& password) {
        left = challenges;
        const auto answer = [=, this](const char* who) {
            return [=, this](const String& realm, auto&&, String& askedName, String& askedPassword) {
                events += who + realm.Bytes() + " ";
                askedName = name;
                askedPassword = password;
                return left-- > 0;
            };
        };
        AuthenticationRequired = answer("server:");
        ProxyAuthenticationRequired = answer("proxy:");
    }
    std::string events;
    std::string last;           ///< the last progress
    int left = 0;               ///< challenges to be answered
    int actsIn = 0;             ///< the event in which, instead of recording it,
    std::function<void()> act;  ///< this is done once. It may end the client

  private:
    static std::string Spaced(std::int32_t number) { return std::to_string(number) + " "; }
    void Record(int event, const std::string& text) {
        if (!act || event != actsIn) {
            events += text;
        } else {
            events.clear();
            std::exchange(act, {})();
        }
    }
};

/// Counts what arrives from a server. Not for events that destroy it.
struct WatchedClient : Client {
    WatchedClient() { Yield = true; }
    void Event_Connected() override {
        ++attempts;
        HTTPSocket::Event_Connected();
    }
    void Event_DataAvailable() override {
        HTTPSocket::Event_DataAvailable();
        ++pieces;
    }
    /// On a server's thread: waits until that many pieces of the response were taken up, or the wait for it
    /// is over.
    void UntilPieces(int count) const {
        while (pieces < count && !gone) std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    std::atomic<int> pieces{0};    ///< of responses; any thread
    std::atomic<int> attempts{0};  ///< connections that came about
    std::atomic<bool> gone{false};
};

}  // namespace sorakaze::test
