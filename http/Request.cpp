// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How a request is sent.
#include <utility>

#include "app/runtime/TextStreams.h"
#include "http/HTTPSocket.h"
#include "http/HeadParser.h"
#include "http/Url.h"

namespace sorakaze {

void HTTPSocket::_InitializeRequestHeaders() {
    requestHeaders = std::make_shared<InternetHeaders>();
    requestHeaders->Constructor();
    requestHeaders->SetHeader("Accept", "*/*");
    requestHeaders->SetHeader("Accept-Language", "en");
}

void HTTPSocket::_ParseURL(const String& url) {
    const http::UrlParts parts = http::ParseURL(url);
    _server = parts.server;
    _path = parts.path;
    Address = parts.address;
    Port = parts.port == 0 ? DefaultPort : parts.port;
}

/// By value: `file` may be _downloadFile, which the preparation of the download clears.
void HTTPSocket::_DoConnect(String url, String method, FolderItemRef file) {
    mErrorCode = 0;
    _ParseURL(url);
    _processingURL = std::move(url);
    if (!_SetDownloadFile(file)) return;
    if (!HTTPProxyAddress.IsEmpty()) {
        Address = HTTPProxyAddress;
        Port = HTTPProxyPort == 0 ? DefaultPort : HTTPProxyPort;
    }
    _httpAction = std::move(method);
    Close();
    Purge();
    Connect();
}

bool HTTPSocket::_SetDownloadFile(const FolderItemRef& file) {
    _KillDownloadStream();
    if (!file) return true;
    const bool isFolder = file->Exists() && file->Directory();
    const auto created = isFolder ? nullptr : file->CreateTextFile();
    if (created) created->Close();
    BinaryStreamRef stream = created ? file->OpenAsBinaryFile(true) : nullptr;
    if (!stream) {
        FailDownload();
        return false;
    }
    _downloadStream = std::move(stream);
    _downloadFile = file;
    return true;
}

void HTTPSocket::_KillDownloadStream() {
    _downloadFile = nullptr;
    if (_downloadStream) _downloadStream->Close();
    _downloadStream = nullptr;
}

/// The target can't be written: the connection ends too, and no longer counts as one for the next error.
void HTTPSocket::FailDownload() {
    Close();
    _connectionValid = false;
    _KillDownloadStream();
    SetError(kFileError);
}

void HTTPSocket::Event_Connected() {
    _connectionValid = true;
    _ResetVariables();
    if (!synchronous && !Fire(Connected)) return;
    if (_httpAction.IsEmpty()) _httpAction = "GET";
    _SendRequest(_httpAction);
}

/// Not before there is a connection. Kept behaviour 69.
void HTTPSocket::_ResetVariables() {
    _pageBuffer.Clear();
    _pageHeaders = nullptr;
    _httpStatusCode = 0;
    _totalLength = 0;
    _currentLength = 0;
    _pageComplete = false;
}

void HTTPSocket::_SendRequest(const String& method) {
    if (!requestHeaders) _InitializeRequestHeaders();
    requestHeaders->SetHeader("Host", _server);
    const String key = std::exchange(_authenticationKey, {});
    const String proxyKey = std::exchange(_proxyAuthenticationKey, {});
    if (!key.IsEmpty()) SetRequestHeader("Authorization", key);
    if (!proxyKey.IsEmpty()) SetRequestHeader("Proxy-Authorization", proxyKey);
    // Kept behaviour 70.
    if (method == "POST") {
        requestHeaders->SetHeader("Content-type", _postContentType);
        requestHeaders->SetHeader("Content-length", Format(LenB(_postContent), "0"));
    } else {
        SetPostContent({}, {});
        requestHeaders->Delete("Content-type");
        requestHeaders->Delete("Content-length");
    }
    if (!HTTPProxyAddress.IsEmpty()) _path = _processingURL;

    const String lineEnd{http::kCrLf};
    String request = method + " " + _path + " HTTP/1.0" + lineEnd;
    request += requestHeaders->_FormatHTTPHeaders();
    request += lineEnd + lineEnd;
    request += _postContent;
    if (!key.IsEmpty()) requestHeaders->Delete("Authorization");
    if (!proxyKey.IsEmpty()) requestHeaders->Delete("Proxy-Authorization");
    Write(request);
}

}  // namespace sorakaze
