// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A small HTTP/1.0 client: one request a connection, the page ends when the server closes. Every request has
// a form that reports through events, fired by Poll, and one that waits with a time limit. It keeps no
// connection open, decodes no chunks, follows no redirects and speaks no TLS: a URL's scheme doesn't matter.
//
// An object makes one request at a time and is used from one thread at a time. Failures are codes, found in
// ErrorCode: 0 none, -1 timeout, 1 the download's target can't be written, else the socket's code. A status
// such as 404 is no failure: its page arrives like any other. A head is kept in memory until its end
// has come, and a body is kept there whole, both without a bound but the one
// of SetBounds; for large bodies there is the download to a
// file.
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

/// `timeout` is in seconds without a sign of life, 0 or less for no end; `file` is where the body goes, empty
/// for the page. A waiting form must not be called from within an event of its own socket; the events of the
/// others may also close it, begin another request or destroy it, but for those that ask for credentials.
class HTTPSocket : public TCPSocket, public Readable, public Writeable, public _SOAPSocket {
  public:
    HTTPSocket() = default;
    ~HTTPSocket() override = default;

    /// To be called first.
    void Constructor();

    std::int32_t DefaultPort = 0;       ///< for URLs that name none: 80 from Constructor on
    String HTTPProxyAddress;            ///< empty for no proxy
    std::int32_t HTTPProxyPort = 0;     ///< 0 for DefaultPort
    InternetHeadersRef requestHeaders;  ///< of the next requests
    bool Yield = false;                 ///< a wait handles events meanwhile, on the main thread

    /// Events, fired where a handler is installed. The credentials are asked for in all forms: true to send
    /// the request again with the name and password that were set. There is no limit on attempts but the
    /// handler's.
    using Challenge = std::function<bool(const String& realm, const InternetHeadersRef& headers, String& name,
                                         String& password)>;
    Challenge AuthenticationRequired;
    Challenge ProxyAuthenticationRequired;
    /// The others belong to the forms that don't wait.
    std::function<void()> Connected;
    std::function<void(const InternetHeadersRef& headers, std::int32_t status)> HeadersReceived;
    /// `total` is what the server says, 0 if it says nothing. Counts stop at 2 GB.
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
    /// Drops them all, the customary ones as well.
    virtual void ClearRequestHeaders();
    /// Names and values of a form in one text. Raises NilObjectException for an empty reference.
    virtual String EncodeFormData(const DictionaryRef& form);
    std::int32_t ErrorCode() override;
    virtual void Get(const String& url);
    virtual void Get(const String& url, const FolderItemRef& file);
    /// True without an error.
    virtual bool Get(const String& url, const FolderItemRef& file, std::int32_t timeout);
    /// The page, or what there was of it. Where no connection came about, the page before it is still there.
    String Get(const String& url, std::int32_t timeout) override;
    virtual void GetHeaders(const String& url);
    /// The response's headers, empty where none came.
    virtual InternetHeadersRef GetHeaders(const String& url, std::int32_t timeout);
    virtual std::int32_t HTTPStatusCode();
    /// The response's headers, empty where there are none.
    virtual InternetHeadersRef PageHeaders();
    /// The content is what SetPostContent or SetFormData left. It is gone after a request of another method.
    virtual void Post(const String& url);
    virtual void Post(const String& url, const FolderItemRef& file);
    virtual bool Post(const String& url, const FolderItemRef& file, std::int32_t timeout);
    String Post(const String& url, std::int32_t timeout) override;
    virtual void SendRequest(const String& method, const String& url);
    virtual void SendRequest(const String& method, const String& url, const FolderItemRef& file);
    virtual bool SendRequest(const String& method, const String& url, const FolderItemRef& file,
                             std::int32_t timeout);
    virtual String SendRequest(const String& method, const String& url, std::int32_t timeout);
    /// An empty reference drops the content.
    virtual void SetFormData(const DictionaryRef& form);
    void SetPostContent(const String& content, const String& contentType) override;
    /// For the next requests; an empty value removes the header. Values go out as they are: a line end in
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
    void GiveWay(FunctionRef<bool()> nothingHappens, std::chrono::nanoseconds lookAgain);

    // The response.
    void _HandleNewData();
    bool GoesOnBehindHead(std::size_t emptyLineSize);
    void _ParseHeaders(const String& text);
    void _ProcessData(const String& data);
    void _ProcessPage();
    void SetError(std::int32_t code);
    /// Knows whether the connection is still that of its making, or a handler has closed it, begun another
    /// request or ended the socket.
    class ThisConnection {
      public:
        explicit ThisConnection(const HTTPSocket& socket)
            : socket_(socket), life_(socket.threadProtection), number_(socket.ConnectionNumber()) {}
        bool Stands() const { return !life_.expired() && socket_.ConnectionNumber() == number_; }

      private:
        const HTTPSocket& socket_;
        const std::weak_ptr<bool> life_;
        const std::uint64_t number_;
    };
    /// Calls the handler if one is installed; it may replace itself. False if the connection that it was told
    /// of isn't any more.
    template <typename... Parameters, typename... Arguments>
    bool Fire(const std::function<void(Parameters...)>& handler, const Arguments&... arguments) {
        const ThisConnection connection(*this);
        if (const auto call = handler) call(arguments...);
        return connection.Stands();
    }

    // Authentication. Its deviations from what is customary are the class's own: a challenge has one
    // parameter, the realm doesn't enter a digest, and every use of a nonce counts as the first.
    bool AnswersChallenge();
    bool _SetAuthentication(const String& kind);
    static DictionaryRef _ParseAuthenticationParams(const String& text);
    String _CreateAuthenticationData(const String& scheme, const String& name, const String& password,
                                     const DictionaryRef& parameters);
    String DigestAuthentication(const String& name, const String& password, const DictionaryRef& parameters,
                                const String& cnonce);
    static String _CreateNonce();
    static String _EncodeHex(const String& data);

    static constexpr std::int32_t kTimeout = -1;
    static constexpr std::int32_t kFileError = 1;
    std::int32_t mErrorCode = 0;
    bool synchronous = false;  ///< the request at hand is a waiting one
    /// _HandleNewData is at work: one that comes meanwhile returns at once. Ends with the socket, which tells
    /// what goes on behind an event whether it is still there.
    std::shared_ptr<bool> threadProtection = std::make_shared<bool>(false);
    std::int32_t timeoutSeconds = 0;
    String _authenticationKey;        ///< value of one Authorization header
    bool _connectionValid = false;    ///< from Connected to the first Error; a timeout leaves it
    std::int32_t _currentLength = 0;  ///< bytes of the body so far
    FolderItemRef _downloadFile;
    BinaryStreamRef _downloadStream;
    String _httpAction;  ///< the method
    std::int32_t _httpStatusCode = 0;
    http::PageBuffer _pageBuffer;  ///< the body, unless it is downloaded
    bool _pageComplete = false;
    InternetHeadersRef _pageHeaders;  ///< empty until they are parsed
    String _path;                     ///< the request's target
    String _postContent;
    String _postContentType;
    String _processingURL;           ///< as the caller gave it
    String _server;                  ///< with the port, where the URL names one
    std::int32_t _totalLength = 0;   ///< what the response says, 0 where it doesn't
    String _proxyAuthenticationKey;  ///< value of one Proxy-Authorization header
    String _lastServerNonce;         ///< of the last challenge that had one
    DictionaryRef _Nonces;           ///< from nonce to use count; made at first need
    http::HeadSearch _headSearch;
    // NOLINTEND(bugprone-reserved-identifier)
};

}  // namespace sorakaze
