// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The public operations: requests in all their forms, their headers and content.
#include "http/HTTPSocket.h"

#include "app/runtime/Exceptions.h"
#include "http/Url.h"

namespace sorakaze {

void HTTPSocket::Constructor() {
    _InitializeRequestHeaders();
    DefaultPort = 80;
}

std::int32_t HTTPSocket::ErrorCode() {
    return mErrorCode;
}

std::int32_t HTTPSocket::HTTPStatusCode() {
    return _httpStatusCode;
}

InternetHeadersRef HTTPSocket::PageHeaders() {
    return _pageHeaders && _pageHeaders->Count() > 0 ? _pageHeaders : nullptr;
}

void HTTPSocket::Get(const String& url) {
    Begin("GET", url, nullptr);
}

void HTTPSocket::Get(const String& url, const FolderItemRef& file) {
    Begin("GET", url, file);
}

bool HTTPSocket::Get(const String& url, const FolderItemRef& file, std::int32_t timeout) {
    return Wait("GET", url, file, timeout);
}

String HTTPSocket::Get(const String& url, std::int32_t timeout) {
    Wait("GET", url, nullptr, timeout);
    return _pageBuffer.Text();
}

void HTTPSocket::GetHeaders(const String& url) {
    Begin("HEAD", url, nullptr);
}

InternetHeadersRef HTTPSocket::GetHeaders(const String& url, std::int32_t timeout) {
    Wait("HEAD", url, nullptr, timeout);
    return _pageHeaders;
}

void HTTPSocket::Post(const String& url) {
    Begin("POST", url, nullptr);
}

void HTTPSocket::Post(const String& url, const FolderItemRef& file) {
    Begin("POST", url, file);
}

bool HTTPSocket::Post(const String& url, const FolderItemRef& file, std::int32_t timeout) {
    return Wait("POST", url, file, timeout);
}

String HTTPSocket::Post(const String& url, std::int32_t timeout) {
    Wait("POST", url, nullptr, timeout);
    return _pageBuffer.Text();
}

void HTTPSocket::SendRequest(const String& method, const String& url) {
    Begin(method, url, nullptr);
}

void HTTPSocket::SendRequest(const String& method, const String& url, const FolderItemRef& file) {
    Begin(method, url, file);
}

bool HTTPSocket::SendRequest(const String& method, const String& url, const FolderItemRef& file,
                             std::int32_t timeout) {
    return Wait(method, url, file, timeout);
}

String HTTPSocket::SendRequest(const String& method, const String& url, std::int32_t timeout) {
    Wait(method, url, nullptr, timeout);
    return _pageBuffer.Text();
}

void HTTPSocket::Begin(const String& method, const String& url, const FolderItemRef& file) {
    synchronous = false;
    _DoConnect(url, method, file);
}

bool HTTPSocket::Wait(const String& method, const String& url, const FolderItemRef& file,
                      std::int32_t timeout) {
    timeoutSeconds = timeout;
    synchronous = true;
    _DoConnect(url, method, file);
    WaitForPage();
    return mErrorCode == 0;
}

void HTTPSocket::ClearRequestHeaders() {
    NotNil(requestHeaders)->DeleteAllHeaders();
}

void HTTPSocket::SetRequestHeader(const String& name, const String& value) {
    if (!requestHeaders) _InitializeRequestHeaders();
    if (value.IsEmpty())
        requestHeaders->Delete(name);
    else
        requestHeaders->SetHeader(name, value);
}

void HTTPSocket::SetPostContent(const String& content, const String& contentType) {
    _postContent = content;
    _postContentType = contentType;
}

void HTTPSocket::SetFormData(const DictionaryRef& form) {
    if (form)
        SetPostContent(EncodeFormData(form), "application/x-www-form-urlencoded");
    else
        SetPostContent({}, {});
}

String HTTPSocket::EncodeFormData(const DictionaryRef& form) {
    String encoded;
    const std::int32_t count = NotNil(form)->Count();
    for (std::int32_t i = 0; i < count; ++i) {
        const String key = form->Key(i);
        if (i > 0) encoded += "&";
        encoded += _EncodeURLString(key);
        encoded += "=";
        encoded += _EncodeURLString(form->Lookup(key).Text());
    }
    return encoded;
}

String HTTPSocket::_EncodeURLString(const String& text) {
    return http::EncodeURLString(text);
}

}  // namespace sorakaze
