// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A small HTTP/1.0 client: one request per connection, and the page ends when the server closes. Every
// request has a form that reports by events, which Poll fires, and a form that waits with a time limit. It
// keeps no connection open, decodes no chunks, follows no redirects and has no TLS: a URL's scheme is
// ignored.
//
// An object makes one request at a time and is used from one thread at a time. ErrorCode gives failures: 0
// none, -1 timeout, 1 the download's target can't be written, else the socket's code. A status such as 404 is
// no failure: its page arrives like any other. A head is kept in memory until it is complete, and so is a
// body unless it is downloaded to a file. Only SetBounds limits them.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "app/runtime/BinaryStream.h"
#include "app/runtime/Dictionary.h"
#include "app/runtime/FolderItem.h"
#include "app/runtime/TCPSocket.h"
#include "base/FunctionRef.h"
#include "http/HeadSearch.h"
#include "http/InternetHeaders.h"
#include "http/PageBuffer.h"
#include "http/SocketInterfaces.h"

namespace sorakaze {

/// `timeout` is in seconds without a sign of life; 0 or less is no limit. The body goes to `file`, or to the
/// page if that is empty. A waiting form must not be called within an event of its own socket. The events of
/// the other forms, except those that ask for credentials, may also close the socket, begin another request
/// or destroy the object.
class HTTPSocket : public TCPSocket, public Readable, public Writeable, public _SOAPSocket {
  public:
    HTTPSocket() = default;
    ~HTTPSocket() override = default;

    /// Must be called first.
    void Constructor();

    std::int32_t DefaultPort = 0;       ///< for URLs that name none; Constructor sets 80
    String HTTPProxyAddress;            ///< empty for no proxy
    std::int32_t HTTPProxyPort = 0;     ///< 0 for DefaultPort
    InternetHeadersRef requestHeaders;  ///< for the next requests
    bool Yield = false;                 ///< a wait on the main thread handles events

    /// Events. All forms ask for credentials: a handler returns true to send the request again with the name
    /// and password that it has set. Only the handler limits the attempts.
    using Challenge = std::function<bool(const String& realm, const InternetHeadersRef& headers, String& name,
                                         String& password)>;
    Challenge AuthenticationRequired;
    Challenge ProxyAuthenticationRequired;
    /// Only forms that don't wait fire the others.
    std::function<void()> Connected;
    std::function<void(const InternetHeadersRef& headers, std::int32_t status)> HeadersReceived;
    /// In bytes, at most 2 GB. `total` is what the server claims, 0 if nothing.
    std::function<void(std::int32_t received, std::int32_t total, const String& data)> ReceiveProgress;
    std::function<void(const String& url, std::int32_t status, const InternetHeadersRef& headers,
                       const String& page)>
        PageReceived;
    std::function<void(const String& url, std::int32_t status, const InternetHeadersRef& headers,
                       const FolderItemRef& file)>
        DownloadComplete;
    std::function<void(std::int32_t code)> Error;

    // NOLINTBEGIN(bugprone-reserved-identifier): given names
  protected:
    void Event_Connected() override;
    void Event_DataAvailable() override;
    void Event_Error() override;
    void Event_SendComplete() override {}

  public:
    /// Removes all of them, also those that Constructor sets.
    virtual void ClearRequestHeaders();
    /// The names and values of a form as one text. Raises NilObjectException for an empty reference.
    virtual String EncodeFormData(const DictionaryRef& form);
    std::int32_t ErrorCode() override;
    virtual void Get(const String& url);
    virtual void Get(const String& url, const FolderItemRef& file);
    /// True without an error.
    virtual bool Get(const String& url, const FolderItemRef& file, std::int32_t timeout);
    /// The page, or what has arrived of it. Without a connection it is still the page before.
    String Get(const String& url, std::int32_t timeout) override;
    virtual void GetHeaders(const String& url);
    /// The response's headers; an empty reference if none arrived.
    virtual InternetHeadersRef GetHeaders(const String& url, std::int32_t timeout);
    virtual std::int32_t HTTPStatusCode();
    /// The response's headers; an empty reference if there are none.
    virtual InternetHeadersRef PageHeaders();
    /// Sends the content that SetPostContent or SetFormData has set. A request of another method clears it.
    virtual void Post(const String& url);
    virtual void Post(const String& url, const FolderItemRef& file);
    virtual bool Post(const String& url, const FolderItemRef& file, std::int32_t timeout);
    String Post(const String& url, std::int32_t timeout) override;
    virtual void SendRequest(const String& method, const String& url);
    virtual void SendRequest(const String& method, const String& url, const FolderItemRef& file);
    virtual bool SendRequest(const String& method, const String& url, const FolderItemRef& file,
                             std::int32_t timeout);
    virtual String SendRequest(const String& method, const String& url, std::int32_t timeout);
    /// An empty reference clears the content.
    virtual void SetFormData(const DictionaryRef& form);
    void SetPostContent(const String& content, const String& contentType) override;
    /// For the next requests; an empty value removes the header. Values are sent as they are: a line end in
    /// one begins a new header.
    virtual void SetRequestHeader(const String& name, const String& value);

    InternetHeadersRef GetRequestHeaders() override { return requestHeaders; }

    String Read(std::int32_t n) override { return TCPSocket::Read(n); }
    void Write(const String& data) override { TCPSocket::Write(data); }

  protected:
    // The request.
    void _InitializeRequestHeaders();
    void _ParseURL(const String& url);
    static String _EncodeURLString(const String& text);
    void _DoConnect(String url, String method, FolderItemRef file);
    bool _SetDownloadFile(const FolderItemRef& file);
    void _KillDownloadStream();
    void FailDownload();
    void _SendRequest(const String& method);
    void _ResetVariables();
    void Begin(const String& method, const String& url, const FolderItemRef& file);
    bool Wait(const String& method, const String& url, const FolderItemRef& file, std::int32_t timeout);
    void WaitForPage();
    void LetOthersRun(FunctionRef<bool()> nothingHappens, std::chrono::nanoseconds checkAgain);

    // The response.
    void _HandleNewData();
    bool HandleHead(std::size_t emptyLineSize);
    void _ParseHeaders(const String& text);
    void _ProcessData(const String& data);
    void _ProcessPage();
    void SetError(std::int32_t code);
    /// Whether the connection is still the one that this was made for. A handler may have closed it, begun
    /// another request or destroyed the socket.
    class ConnectionCheck {
      public:
        explicit ConnectionCheck(const HTTPSocket& socket)
            : socket_(socket), life_(socket.threadProtection), number_(socket.ConnectionNumber()) {}
        bool IsCurrent() const { return !life_.expired() && socket_.ConnectionNumber() == number_; }

      private:
        const HTTPSocket& socket_;
        const std::weak_ptr<bool> life_;
        const std::uint64_t number_;
    };
    /// Calls the handler, which may replace itself, if there is one. False if it has ended the connection.
    template <typename... Parameters, typename... Arguments>
    bool Fire(const std::function<void(Parameters...)>& handler, const Arguments&... arguments) {
        const ConnectionCheck connection(*this);
        if (const auto call = handler) call(arguments...);
        return connection.IsCurrent();
    }

    // Authentication. It deliberately differs from the usual: a challenge has one parameter, the realm isn't
    // part of a digest, and every use of a nonce counts as the first.
    bool AnswersChallenge();
    bool _SetAuthentication(const String& kind);
    static DictionaryRef _ParseAuthenticationParams(const String& text);
    String _CreateAuthenticationData(const String& scheme, const String& name, const String& password,
                                     const DictionaryRef& parameters);
    static String _CreateNonce();
    static String _EncodeHex(const String& data);

    static constexpr std::int32_t kTimeout = -1;
    static constexpr std::int32_t kFileError = 1;
    std::int32_t mErrorCode = 0;
    bool synchronous = false;  ///< the request is of a waiting form
    /// True while _HandleNewData runs: a second call returns at once. Destroyed with the socket, which tells
    /// code after an event that the socket is gone.
    std::shared_ptr<bool> threadProtection = std::make_shared<bool>(false);
    std::int32_t timeoutSeconds = 0;
    String _authenticationKey;        ///< value of one Authorization header
    bool _connectionValid = false;    ///< from Connected to the first Error; a timeout doesn't clear it
    std::int32_t _currentLength = 0;  ///< bytes of the body so far
    FolderItemRef _downloadFile;
    BinaryStreamRef _downloadStream;
    String _httpAction;  ///< the method
    std::int32_t _httpStatusCode = 0;
    http::PageBuffer _pageBuffer;  ///< the body, unless it is downloaded
    bool _pageComplete = false;
    InternetHeadersRef _pageHeaders;  ///< an empty reference until they are parsed
    String _path;                     ///< the request's target
    String _postContent;
    String _postContentType;
    String _processingURL;           ///< as the caller gave it
    String _server;                  ///< with the port if the URL names one
    std::int32_t _totalLength = 0;   ///< what the response claims, else 0
    String _proxyAuthenticationKey;  ///< value of one Proxy-Authorization header
    String _lastServerNonce;         ///< of the last challenge with one
    DictionaryRef _Nonces;           ///< from nonce to use count; made when first needed
    http::HeadSearch _headSearch;
    // NOLINTEND(bugprone-reserved-identifier)
};

}  // namespace sorakaze
