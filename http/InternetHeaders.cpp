// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "http/InternetHeaders.h"

#include <string>

#include "http/HeadParser.h"

namespace sorakaze {
namespace {

std::string_view NameOf(std::string_view key) {
    return key.substr(0, key.find(':'));
}

/// The key of an instance. The index is wider than an instance number, so that a loop can count past the
/// last.
String KeyOf(const String& name, std::int64_t index) {
    return index == 0 ? name : String(name.Bytes() + ':' + std::to_string(index));
}

/// Lines with CRLF between them.
class Lines {
  public:
    void Add(std::string_view name, const String& value) {
        if (any_) text_ += http::kCrLf;
        any_ = true;
        text_.append(name).append(": ").append(value.Bytes());
    }
    String Text() && { return std::move(text_); }

  private:
    std::string text_;
    bool any_ = false;
};

}  // namespace

void InternetHeaders::Constructor() {
    _Headers = std::make_shared<Dictionary>();
    firstFree_.Clear();
}

void InternetHeaders::Store(const String& key, const String& value) {
    NotNil(_Headers)->SetValue(key, value);
}

void InternetHeaders::Remove(const String& key) {
    NotNil(_Headers)->Remove(key);
    // Simpler than to find out whose number has become free.
    if (firstFree_.Count() > 0) firstFree_.Clear();
}

void InternetHeaders::AppendHeader(const String& name, const String& value) {
    if (!Holds(name)) {
        Store(name, value);
        return;
    }
    const String base(NameOf(name.Bytes()));
    std::int32_t counter = firstFree_.Lookup(base, 1).Integer();
    while (Holds(KeyOf(base, counter))) ++counter;
    Store(KeyOf(base, counter), value);
    firstFree_.SetValue(base, counter + 1);
}

String InternetHeaders::CommaSeparatedValues(const String& name) const {
    const std::int32_t count = NameCount(name);
    std::string values;
    for (std::int32_t i = 0; i < count; ++i) {
        if (i > 0) values += ", ";
        values += Value(name, i).Bytes();
    }
    return values;
}

std::int32_t InternetHeaders::Count() const {
    return NotNil(_Headers)->Count();
}

void InternetHeaders::Delete(const String& name) {
    const std::int32_t count = NameCount(name);
    for (std::int32_t i = 0; i < count; ++i) Remove(KeyOf(name, i));
}

void InternetHeaders::Delete(const String& name, std::int32_t index) {
    if (!Holds(KeyOf(name, index))) return;
    Remove(KeyOf(name, index));
    for (std::int64_t next = std::int64_t{index} + 1; Holds(KeyOf(name, next)); ++next) {
        Store(KeyOf(name, next - 1), _Headers->Lookup(KeyOf(name, next)).Text());
        Remove(KeyOf(name, next));
    }
}

void InternetHeaders::DeleteAllHeaders() {
    NotNil(_Headers)->Clear();
    firstFree_.Clear();
}

String InternetHeaders::Name(std::int32_t index) const {
    return String(NameOf(NotNil(_Headers)->Key(index).Bytes()));
}

std::int32_t InternetHeaders::NameCount(const String& name) const {
    if (!Holds(name)) return 0;
    std::int32_t count = 1;
    while (Holds(KeyOf(name, count))) ++count;
    return count;
}

void InternetHeaders::SetHeader(const String& name, const String& value) {
    if (NameCount(name) >= 2) Delete(name);
    Store(name, value);
}

/// Kept behaviour 60.
void InternetHeaders::SetHeader(const String& name, const String& value, std::int32_t index) {
    const String key = KeyOf(name, index);
    if (Holds(key))
        Store(key, value);
    else
        AppendHeader(key, value);
}

/// Kept behaviour 61.
String InternetHeaders::Source() const {
    return _rawHeaders.IsEmpty() ? _FormatHTTPHeaders() : _rawHeaders;
}

String InternetHeaders::Value(std::int32_t index) const {
    if (index > Count() - 1) return {};
    return _Headers->Lookup(_Headers->Key(index)).Text();
}

String InternetHeaders::Value(const String& name) const {
    return Value(name, 0);
}

String InternetHeaders::Value(const String& name, std::int32_t index) const {
    return NotNil(_Headers)->Lookup(KeyOf(name, index < 1 ? 0 : index)).Text();
}

String InternetHeaders::_DetermineEOLCharacter(const String& text) {
    return String(http::DetermineEOLCharacter(text.Bytes()));
}

String InternetHeaders::_FormatHTTPHeaders() const {
    Lines lines;
    const std::int32_t count = Count();
    for (std::int32_t i = 0; i < count; ++i) lines.Add(Name(i).Bytes(), Value(i));
    return std::move(lines).Text();
}

String InternetHeaders::_FormatEmailHeaders() const {
    Lines lines;
    const auto addPlain = [&](const char* name) {
        if (Holds(name)) lines.Add(name, Value(name));
    };
    addPlain("Return-Path");
    const std::int32_t received = NameCount("Received");
    for (std::int32_t i = 0; i < received; ++i) lines.Add("Received", Value("Received", i));
    for (const char* name : {"Date", "Subject", "From"}) addPlain(name);
    for (const char* name : {"To", "CC"}) {
        if (NameCount(name) > 0) lines.Add(name, CommaSeparatedValues(name));
    }
    // Kept behaviour 63.
    const String placed = ":Date:Subject:From:To:CC:BCC:Received:Return-Path:";
    const std::int32_t count = Count();
    for (std::int32_t i = 0; i < count; ++i) {
        const String name = Name(i);
        if (InStr(placed, ":" + name + ":") == 0) lines.Add(name.Bytes(), Value(i));
    }
    return std::move(lines).Text();
}

void InternetHeaders::_ParseHeaders(const String& text) {
    _rawHeaders = text;
    Constructor();
    for (const http::HeaderField& field : http::ParseHeaderFields(text))
        AppendHeader(field.name, field.value);
}

}  // namespace sorakaze
