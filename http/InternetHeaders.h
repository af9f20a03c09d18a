// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A list of headers: names to values, repeated headers kept. HTTPSocket holds one for its requests and makes
// a new one for each response. Names are the same in any letter case and keep the one in which they came
// first. An object belongs to the thread of its socket.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "app/runtime/Dictionary.h"
#include "app/runtime/Exceptions.h"

namespace sorakaze {

class InternetHeaders;
using InternetHeadersRef = std::shared_ptr<InternetHeaders>;

/// Instances of a name count from 0, in the order of arrival; indexes of entries count from 0 over all
/// headers, in the order in which they were added. Nothing reports a failure: an absent header reads as
/// empty.
class InternetHeaders {
  public:
    virtual ~InternetHeaders() = default;

    /// Every other operation raises NilObjectException before it.
    void Constructor();

    /// Adds one more instance.
    void AppendHeader(const String& name, const String& value);
    /// All instances in one line, ", " between them.
    String CommaSeparatedValues(const String& name) const;
    /// All instances of all headers.
    std::int32_t Count() const;
    /// Removes all instances. They end at the first gap in their numbers, as for NameCount.
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
    /// Replaces one instance, or adds it under just this number, also where that leaves a gap before it.
    void SetHeader(const String& name, const String& value, std::int32_t index);
    /// The text that was parsed, whatever was changed since; without one the headers as lines.
    String Source() const;
    /// The value of an entry; empty behind the last one. Raises OutOfBoundsException for a negative index.
    String Value(std::int32_t index) const;
    String Value(const String& name) const;
    /// The value of an instance; those below 1 are the first.
    String Value(const String& name, std::int32_t index) const;

    // NOLINTBEGIN(bugprone-reserved-identifier): given names

    /// The lines of a mail's head in their customary order, without blind copies.
    String _FormatEmailHeaders() const;
    /// The lines of a request's head, CRLF between them and none at the end.
    String _FormatHTTPHeaders() const;
    /// Replaces all headers by those of a head as it came over the wire. Lines without a colon are skipped.
    void _ParseHeaders(const String& text);

  protected:
    static String _DetermineEOLCharacter(const String& text);

    /// The key of the first instance of a header is its name, that of each further one the name, a colon and
    /// the instance's number. To be changed through Store and Remove.
    DictionaryRef _Headers;
    String _rawHeaders;

    // NOLINTEND(bugprone-reserved-identifier)

  private:
    void Store(const String& key, const String& value);
    void Remove(const String& key);
    bool Holds(const String& key) const { return NotNil(_Headers)->HasKey(key); }

    /// From a name to an instance number below which none but 0 is free, so that the thousandth header of a
    /// name isn't looked for a place in front of all others.
    Dictionary firstFree_;
};

}  // namespace sorakaze
