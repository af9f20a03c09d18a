// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Parses a server's challenge and makes the header values that answer it. Pure functions; any thread.
#pragma once

#include <cstdint>

#include "app/runtime/Dictionary.h"

namespace sorakaze::http {

/// A challenge's parameters, one to a line: a name, "=" and a value in quotes. A challenge in a header has no
/// line end, so it gives one parameter, whose value is all that follows.
DictionaryRef ParseAuthenticationParams(const String& text);

/// The value "Basic ...". Base64 of more than 76 characters is broken into lines.
String BasicCredentials(const String& name, const String& password);

/// The value "Digest ..." for the request that the parameters "method" and "uri" name. `use` counts the
/// requests with the parameter "nonce", from 1; `cnonce` is the client's own.
String DigestCredentials(const String& name, const String& password, const Dictionary& parameters,
                         std::int32_t use, const String& cnonce);

/// Lower-case hexadecimal digits of the bytes.
String EncodeHex(const String& data);

}  // namespace sorakaze::http
