// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string>

#include "http/InternetHeaders.h"

namespace sorakaze {
namespace {

struct Headers : InternetHeaders {
    Headers() { Constructor(); }
    explicit Headers(const String& text) : Headers() { _ParseHeaders(text); }

    /// Key=value of all entries.
    std::string Entries() const {
        std::string entries;
        for (std::int32_t i = 0; i < Count(); ++i)
            entries += _Headers->Key(i).Bytes() + "=" + Value(i).Bytes() + "|";
        return entries;
    }
};

TEST(InternetHeaders, Parse) {
    const struct {
        const char* name;
        std::string text;
        std::string entries;
    } cases[] = {
        {"nothing", "", ""},
        {"status line", "HTTP/1.0 200 OK\r\nA: 1\r\nB:2", "A=1|B=2|"},
        {"status line with a colon", "HTTP/1.0 200 a:b\r\nA: 1", "HTTP/1.0 200 a=b|A=1|"},
        {"LF", "x\nA: 1\nB: 2\n", "A=1|B=2|"},
        {"CR", "x\rA: 1\rB: 2", "A=1|B=2|"},
        {"LF within CRLF", "A: 1\nB: 2\r\nC: 3", "A=1\nB: 2|C=3|"},
        {"no line end", "A: 1 B: 2", "A=1 B: 2|"},
        {"folded", "A: 1\r\n 2\r\n\t3\r\nB: 4", "A=1 2 3|B=4|"},
        {"folded twice", "A: 1\r\n  2\r\n \t3", "A=1  2 \t3|"},
        {"repeated in any case", "Via: a\r\nvia: b\r\nX: 1\r\nVIA: c", "Via=a|via:1=b|X=1|VIA:2=c|"},
        {"no name", ": a\r\n:b", "=a|:1=b|"},
        {"blanks", "A : \t 1 \r\nB:", "A =1 |B=|"},
        {"a NUL", std::string("A: 1\0\r\nB\0: 2", 12), std::string("A=1\0|B\0=2|", 10)},
        {"bytes that aren't text", "\xFF: \xC3\r\n\xFE: \x80", "\xFF=\xC3|\xFE=\x80|"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const Headers headers(String(test.text));
        EXPECT_EQ(headers.Entries(), test.entries);
        EXPECT_EQ(headers.Source().Bytes(), test.text);
    }
}

TEST(InternetHeaders, InstancesAreCountedChangedAndRemoved) {
    Headers headers("Received: a\r\nX: 1\r\nreceived: b\r\nRECEIVED: c");
    const auto entries = [&headers](auto change) {
        change(headers);
        return headers.Entries();
    };
    EXPECT_EQ(headers.NameCount("none"), 0);
    EXPECT_EQ(headers.NameCount("x"), 1);
    EXPECT_EQ(headers.CommaSeparatedValues("ReceiveD"), "a, b, c");
    EXPECT_EQ(headers.Value("received", -3).Bytes() + headers.Value("received", 2).Bytes(), "ac");
    EXPECT_EQ(headers.Value("received", 3).Bytes() + headers.Value(4).Bytes(), "");
    EXPECT_EQ(headers.Name(3), "received");
    EXPECT_THROW(headers.Name(4), OutOfBoundsException);

    EXPECT_EQ(entries([](auto& h) { h.Delete("Received", 3); }), "Received=a|X=1|received:1=b|RECEIVED:2=c|");
    EXPECT_EQ(entries([](auto& h) { h.Delete("Received", 1); }), "Received=a|X=1|Received:1=c|");
    EXPECT_EQ(entries([](auto& h) { h.Delete("Received", 0); }), "X=1|Received=c|");
    EXPECT_EQ(entries([](auto& h) { h.AppendHeader("received", "d"); }), "X=1|Received=c|received:1=d|");
    EXPECT_EQ(entries([](auto& h) { h.SetHeader("Received", "e", 1); }), "X=1|Received=c|received:1=e|");
    EXPECT_EQ(entries([](auto& h) { h.SetHeader("received", "f"); }), "X=1|received=f|");
    // Behind a gap nothing is counted, nor removed; the gap is filled before what is behind it.
    EXPECT_EQ(entries([](auto& h) { h.SetHeader("x", "9", 3); }), "X=1|received=f|x:3=9|");
    EXPECT_EQ(headers.NameCount("X"), 1);
    EXPECT_EQ(headers.Value("X", 3), "9");
    EXPECT_EQ(entries([](auto& h) {
                  for (const char* value : {"2", "3", "4"}) h.AppendHeader("X", value);
              }),
              "X=1|received=f|x:3=9|X:1=2|X:2=3|X:4=4|");
    EXPECT_EQ(entries([](auto& h) { h.Delete("X:2"); }), "X=1|received=f|x:3=9|X:1=2|X:4=4|");
    EXPECT_EQ(entries([](auto& h) { h.AppendHeader("X", "5"); }), "X=1|received=f|x:3=9|X:1=2|X:4=4|X:2=5|");
    EXPECT_EQ(entries([](auto& h) { h.Delete("X", 3), h.Delete("X"); }), "received=f|");

    const std::string parsed = headers.Source().Bytes();
    EXPECT_EQ(entries([](auto& h) { h.DeleteAllHeaders(); }), "");
    EXPECT_EQ(headers.Source().Bytes(), parsed);
    EXPECT_EQ(headers.Value("received"), "");
    EXPECT_THROW(InternetHeaders().Count(), NilObjectException);
}

TEST(InternetHeaders, Format) {
    Headers headers;
    const char* const lines[][2] = {
        {"X", "1"},      {"CC", "c"},       {"bcc", "secret"},     {"To", "a"},           {"Received", "2"},
        {"from", "me"},  {"to", "b"},       {"Received", "1"},     {"Return-Path", "<>"}, {"X", "2"},
        {"Subject", ""}, {"Date", "today"}, {"Content-type", "t"}, {"", "nameless"}};
    for (const auto& line : lines) headers.AppendHeader(line[0], line[1]);
    EXPECT_EQ(headers._FormatEmailHeaders().Bytes(),
              "Return-Path: <>\r\nReceived: 2\r\nReceived: 1\r\nDate: today\r\nSubject: \r\nFrom: me\r\n"
              "To: a, b\r\nCC: c\r\nX: 1\r\nX: 2\r\nContent-type: t\r\n: nameless");
    EXPECT_EQ(headers._FormatHTTPHeaders().Bytes().substr(0, 30), "X: 1\r\nCC: c\r\nbcc: secret\r\nTo: ");
    EXPECT_EQ(headers.Source().Bytes(), headers._FormatHTTPHeaders().Bytes());
    EXPECT_EQ(Headers()._FormatEmailHeaders().Bytes(), "");
}

/// Anything quadratic would be seen as a test without end.
TEST(InternetHeaders, HundredThousandLines) {
    std::string same;
    std::string different;
    for (int i = 0; i < 100'000; ++i) {
        same += "Set-Cookie: a\r\n";
        different += "Name" + std::to_string(i) + ": a\r\n";
    }
    Headers headers{String(same)};
    EXPECT_EQ(headers.NameCount("set-cookie"), 100'000);
    EXPECT_EQ(LenB(headers._FormatHTTPHeaders()), LenB(same) - 2);
    headers.Delete("Set-Cookie", 0);
    headers.SetHeader("Set-Cookie", "b");
    EXPECT_EQ(headers.Entries(), "Set-Cookie=b|");
    EXPECT_EQ(LenB(Headers(String(different))._FormatEmailHeaders()), LenB(different) - 2);
}

}  // namespace
}  // namespace sorakaze
