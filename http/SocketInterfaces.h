// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The interfaces of HTTPSocket, for users that needn't know the class.
#pragma once

#include <cstdint>

#include "app/runtime/String.h"
#include "http/InternetHeaders.h"

namespace sorakaze {

/// Where bytes can be read from.
class Readable {
  public:
    virtual ~Readable() = default;
    /// Removes and returns `n` bytes, or all if there are fewer.
    virtual String Read(std::int32_t n) = 0;
};

/// Where bytes can be written to.
class Writeable {
  public:
    virtual ~Writeable() = default;
    virtual void Write(const String& data) = 0;
};

/// What a caller of services over HTTP needs of a socket.
class _SOAPSocket {  // NOLINT(bugprone-reserved-identifier): the interface's given name
  public:
    virtual ~_SOAPSocket() = default;
    virtual std::int32_t ErrorCode() = 0;
    virtual String Get(const String& url, std::int32_t timeout) = 0;
    virtual InternetHeadersRef GetRequestHeaders() = 0;
    virtual String Post(const String& url, std::int32_t timeout) = 0;
    virtual void SetPostContent(const String& content, const String& contentType) = 0;
};

}  // namespace sorakaze
