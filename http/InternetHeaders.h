// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A list of headers, in which a name can occur several times. HTTPSocket has one for its requests and makes a
// new one for each response. Names are compared without letter case and keep the case that they were added
// with. An object belongs to the thread of its socket.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "app/runtime/Dictionary.h"
#include "app/runtime/Exceptions.h"

namespace sorakaze {

class InternetHeaders;
using InternetHeadersRef = std::shared_ptr<InternetHeaders>;

/// Instances of a name are numbered from 0 in order of arrival. Entries are numbered from 0 over all headers,
/// in the order in which they were added. No operation reports a failure: an absent header reads as empty.
class InternetHeaders {
  public:
    virtual ~InternetHeaders() = default;

    /// Every other operation raises NilObjectException before it.
    void Constructor();

    /// Adds one more instance.
    void AppendHeader(const String& name, const String& value);
    /// All instances, with ", " between them.
    String CommaSeparatedValues(const String& name) const;
    /// All instances of all headers.
    std::int32_t Count() const;
    /// Removes all instances up to the first gap in their numbers, as NameCount counts them.
    void Delete(const String& name);
    /// Removes one instance and closes the gap.
    void Delete(const String& name, std::int32_t index);
    /// Source still gives the text that was parsed.
    void DeleteAllHeaders();
    /// The name of an entry. Raises OutOfBoundsException.
    String Name(std::int32_t index) const;
    /// Number of instances up to the first gap in their numbers.
    std::int32_t NameCount(const String& name) const;
    /// Leaves one instance, with this value.
    void SetHeader(const String& name, const String& value);
    /// Replaces one instance, or adds it with just this number, even if that leaves a gap before it.
    void SetHeader(const String& name, const String& value, std::int32_t index);
    /// The text that was parsed, without later changes. The headers as lines if none was parsed.
    String Source() const;
    /// The value of an entry; empty after the last one. Raises OutOfBoundsException for a negative index.
    String Value(std::int32_t index) const;
    String Value(const String& name) const;
    /// The value of an instance. A number below 1 means the first.
    String Value(const String& name, std::int32_t index) const;

    // NOLINTBEGIN(bugprone-reserved-identifier): given names

    /// The headers as a mail has them, in the usual order and without blind copies.
    String _FormatEmailHeaders() const;
    /// The headers as a request has them: lines with CRLF between them and none at the end.
    String _FormatHTTPHeaders() const;
    /// Replaces all headers by those of a received head (http::ParseHeaderFields).
    void _ParseHeaders(const String& text);

  protected:
    static String _DetermineEOLCharacter(const String& text);

    /// The first instance's key is its name. The key of each further one is the name, a colon and the
    /// instance's number. Changed by Store and Remove only.
    DictionaryRef _Headers;
    String _rawHeaders;

    // NOLINTEND(bugprone-reserved-identifier)

  private:
    void Store(const String& key, const String& value);
    void Remove(const String& key);
    bool Holds(const String& key) const { return NotNil(_Headers)->HasKey(key); }

    /// From a name to an instance number below which at most 0 is free. Without it, finding a number for the
    /// thousandth header of a name would try all those before.
    Dictionary firstFree_;
};

}  // namespace sorakaze
