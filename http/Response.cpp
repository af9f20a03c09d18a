// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A response from its first byte to the end of the connection.
#include <algorithm>
#include <limits>
#include <utility>

#include "http/HTTPSocket.h"
#include "http/LineEnd.h"

namespace sorakaze {
namespace {

/// Sets the flag for as long as it lives, or the flag does.
class Protection {
  public:
    explicit Protection(const std::shared_ptr<bool>& flag) : flag_(flag) { *flag = true; }
    ~Protection() {
        if (const auto flag = flag_.lock()) *flag = false;
    }
    Protection(const Protection&) = delete;
    Protection& operator=(const Protection&) = delete;

  private:
    const std::weak_ptr<bool> flag_;
};

/// Calls it at the scope's end, however that comes.
template <typename Call>
class AtEnd {
  public:
    explicit AtEnd(Call call) : call_(std::move(call)) {}
    ~AtEnd() { call_(); }
    AtEnd(const AtEnd&) = delete;
    AtEnd& operator=(const AtEnd&) = delete;

  private:
    const Call call_;
};

/// Of bytes, for the socket: no more than it counts.
std::int32_t Count(std::size_t size) {
    return static_cast<std::int32_t>(std::min<std::size_t>(size, std::numeric_limits<std::int32_t>::max()));
}

constexpr std::int32_t kUnauthorized = 401;
constexpr std::int32_t kProxyUnauthorized = 407;

}  // namespace

void HTTPSocket::Event_DataAvailable() {
    _HandleNewData();
}

void HTTPSocket::_HandleNewData() {
    if (*threadProtection) return;
    const Protection protection(threadProtection);
    if (!_pageHeaders) {
        const auto end = _headSearch.FindEnd(LookaheadView(), ReadPosition());
        if (!end) return;  // kept behaviour 66
        _ParseHeaders(TCPSocket::Read(Count(end->headSize)));
        if (!GoesOnBehindHead(2 * end->lineEndSize)) return;
    }
    _ProcessData(ReadAll());
}

/// Asks and tells the owner what the head calls for. False if the connection isn't there any more.
bool HTTPSocket::GoesOnBehindHead(std::size_t emptyLineSize) {
    const ThisConnection connection(*this);
    // Also where a handler throws, the empty line is no part of the body.
    const AtEnd dropEmptyLine([&] {
        if (connection.Stands()) TCPSocket::Read(Count(emptyLineSize));
    });
    if (AnswersChallenge()) {
        _DoConnect(_processingURL, _httpAction, _downloadFile);
        return false;
    }
    const InternetHeadersRef headers = _pageHeaders;
    return synchronous || Fire(HeadersReceived, headers, _httpStatusCode);
}

bool HTTPSocket::AnswersChallenge() {
    if (_httpStatusCode == kUnauthorized) return _SetAuthentication("WWW");
    return _httpStatusCode == kProxyUnauthorized && _SetAuthentication("Proxy");
}

void HTTPSocket::_ParseHeaders(const String& text) {
    const std::string_view head = text.Bytes();
    const String statusLine(head.substr(0, head.find(http::DetermineEOLCharacter(head))));
    _pageHeaders = std::make_shared<InternetHeaders>();
    _pageHeaders->Constructor();
    _httpStatusCode = ToInt32(Val(NthField(statusLine, " ", 2)));
    _pageHeaders->_ParseHeaders(text);
    if (_pageHeaders->NameCount("Content-length") > 0)
        _totalLength = ToInt32(Val(_pageHeaders->Value("Content-length")));
}

/// Kept behaviour 65.
void HTTPSocket::_ProcessData(const String& data) {
    if (_httpAction == "HEAD") return;
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    _currentLength = static_cast<std::int32_t>(std::min(kMost, std::int64_t{_currentLength} + LenB(data)));
    if (!_downloadStream) {
        _pageBuffer.Append(data);
    } else if (!_downloadStream->Write(data)) {
        // The disk is full, say. What is missing in the file must not pass for a whole one.
        FailDownload();
        return;
    }
    if (!synchronous && !Fire(ReceiveProgress, _currentLength, _totalLength, data)) return;
    const bool challenged = _httpStatusCode == kUnauthorized || _httpStatusCode == kProxyUnauthorized;
    if (challenged && !IsConnected()) _ProcessPage();
}

void HTTPSocket::Event_Error() {
    const bool wasConnected = std::exchange(_connectionValid, false);
    if (!wasConnected)
        SetError(LastErrorCode());
    else if (!LookaheadView().empty())
        _HandleNewData();
    else
        _ProcessPage();
}

void HTTPSocket::_ProcessPage() {
    if (_pageComplete) return;
    _pageComplete = true;
    const bool downloaded = _downloadStream != nullptr;
    const FolderItemRef file = _downloadFile;
    _KillDownloadStream();
    if (synchronous || _httpAction == "HEAD") return;
    // A handler may begin the next request: it gets copies.
    const String url = _processingURL;
    const std::int32_t status = _httpStatusCode;
    const InternetHeadersRef headers = _pageHeaders;
    if (downloaded)
        Fire(DownloadComplete, url, status, headers, file);
    else
        Fire(PageReceived, url, status, headers, _pageBuffer.Text());
}

void HTTPSocket::SetError(std::int32_t code) {
    mErrorCode = code;
    if (!synchronous) Fire(Error, code);
}

}  // namespace sorakaze
