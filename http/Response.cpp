// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How a response is taken in, from its first byte to the end of the connection.
#include <algorithm>
#include <limits>
#include <memory>

#include "base/ScopeExit.h"
#include "http/HTTPSocket.h"
#include "http/HeadParser.h"

namespace sorakaze {
namespace {

/// A number of bytes, at most as many as the socket counts.
std::int32_t ByteCount(std::size_t size) {
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
    *threadProtection = true;
    // The socket, and the flag with it, may be gone by the end.
    const ScopeExit unprotect([flag = std::weak_ptr(threadProtection)] {
        if (const auto kept = flag.lock()) *kept = false;
    });
    if (!_pageHeaders) {
        const auto end = _headSearch.FindEnd(LookaheadView(), ReadPosition());
        if (!end) return;  // kept behaviour 66
        _ParseHeaders(TCPSocket::Read(ByteCount(end->headSize)));
        if (!HandleHead(2 * end->lineEndSize)) return;
    }
    _ProcessData(ReadAll());
}

/// Asks the owner for credentials or reports the head to it. False if the connection isn't there any more.
bool HTTPSocket::HandleHead(std::size_t emptyLineSize) {
    const ConnectionCheck connection(*this);
    // The empty line is no part of the body, even if a handler throws.
    const ScopeExit dropEmptyLine([&] {
        if (connection.IsCurrent()) TCPSocket::Read(ByteCount(emptyLineSize));
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
    _pageHeaders = std::make_shared<InternetHeaders>();
    _pageHeaders->Constructor();
    _httpStatusCode = http::ParseStatus(text.Bytes());
    _pageHeaders->_ParseHeaders(text);
    if (_pageHeaders->NameCount("Content-length") > 0)
        _totalLength = ToInt32(Val(_pageHeaders->Value("Content-length")));
}

/// Kept behaviour 65.
void HTTPSocket::_ProcessData(const String& data) {
    if (_httpAction == "HEAD") return;
    constexpr std::int64_t kMaximum = std::numeric_limits<std::int32_t>::max();
    _currentLength = static_cast<std::int32_t>(std::min(kMaximum, std::int64_t{_currentLength} + LenB(data)));
    if (!_downloadStream) {
        _pageBuffer.Append(data);
    } else if (!_downloadStream->Write(data)) {
        // For instance, the disk is full. An incomplete file must not look like a whole one.
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
    // Copies, since a handler may begin the next request.
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
