// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/XmlStream.h"

#include <expat.h>
#include <malloc.h>
#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "player/XmlRepair.h"

namespace sorakaze::player {

namespace {

constexpr int kDeepest = 100;
/// The memory limit of the XML library, which keeps whole tags and every element name.
constexpr std::size_t kMostMemory = std::size_t{4} << 20;
constexpr std::size_t kPiece = std::size_t{64} << 10;

/// The library's memory for the stream that is being read on this thread: its memory functions have no
/// context.
thread_local std::size_t* taken = nullptr;

void* Grown(void* had, std::size_t size) {
    const std::size_t before = had != nullptr ? malloc_usable_size(had) : 0;
    if (taken != nullptr && *taken - std::min(*taken, before) + size > kMostMemory) return nullptr;
    void* block = std::realloc(had, size);
    if (block != nullptr && taken != nullptr) *taken += malloc_usable_size(block) - std::min(*taken, before);
    return block;
}

void* Taken(std::size_t size) {
    return Grown(nullptr, size);
}

void GiveBack(void* block) {
    if (block != nullptr && taken != nullptr) *taken -= std::min(*taken, malloc_usable_size(block));
    std::free(block);
}

/// The library reads every file as Latin-1, as which it accepts any bytes. This converts its UTF-8 back to
/// the bytes of the file.
std::string BytesOf(std::string_view utf8) {
    std::string bytes;
    bytes.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        if ((lead == 0xC2 || lead == 0xC3) && i + 1 < utf8.size()) {
            bytes += static_cast<char>((lead & 3U) << 6U | (static_cast<unsigned char>(utf8[++i]) & 0x3FU));
        } else {
            bytes += utf8[i];
        }
    }
    return bytes;
}

std::size_t Characters(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::count_if(utf8.begin(), utf8.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string_view LocalName(std::string_view name) {
    const auto colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

}  // namespace

struct XmlStream::Impl {
    enum class Encoding { Unknown, AsItIs, Utf16 };

    XmlVisitor& visitor;
    std::size_t memory = 0;
    XML_Parser parser = nullptr;
    Encoding encoding = Encoding::Unknown;
    bool isLatin1 = false;  ///< says the file
    std::string beginning;  ///< until the encoding is known
    XmlRepair repair;
    int depth = 0;

    explicit Impl(XmlVisitor& owner) : visitor(owner) {}
    ~Impl() {
        taken = &memory;
        XML_ParserFree(parser);
        taken = nullptr;
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// False until there are bytes enough to tell. Blanks before the declaration are common, and no XML.
    bool FindEncoding() {
        using namespace std::string_view_literals;
        if (beginning.size() < 4) return false;
        if (beginning.starts_with("\xEF\xBB\xBF")) beginning.erase(0, 3);
        for (const std::string_view mark : {"\xFF\xFE"sv, "\xFE\xFF"sv, "<\0"sv, "\0<"sv}) {
            if (beginning.starts_with(mark)) encoding = Encoding::Utf16;
        }
        if (encoding == Encoding::Utf16) return true;
        beginning.erase(0, std::min(beginning.find_first_not_of(" \t\r\n"), beginning.size()));
        if (beginning.empty()) return false;
        encoding = Encoding::AsItIs;
        return true;
    }

    void Open() {
        const XML_Memory_Handling_Suite functions = {Taken, Grown, GiveBack};
        parser =
            XML_ParserCreate_MM(encoding == Encoding::Utf16 ? nullptr : "ISO-8859-1", &functions, nullptr);
        if (parser == nullptr) return;
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, OnBegin, OnEnd);
        XML_SetCharacterDataHandler(parser, OnText);
        XML_SetXmlDeclHandler(parser, OnDeclaration);
        XML_SetEntityDeclHandler(parser, OnEntity);
    }

    bool Parse(std::string_view bytes) {
        while (!bytes.empty()) {
            const std::string_view piece = bytes.substr(0, kPiece);
            bytes.remove_prefix(piece.size());
            if (XML_Parse(parser, piece.data(), static_cast<int>(piece.size()), XML_FALSE) != XML_STATUS_OK)
                return false;
        }
        return true;
    }

    bool Read(std::string_view piece) {
        if (encoding == Encoding::Unknown) {
            beginning += piece;
            if (!FindEncoding()) return beginning.size() < kPiece;
            Open();
            const std::string first = std::exchange(beginning, {});
            return parser != nullptr && ReadKnown(first);
        }
        return parser != nullptr && ReadKnown(piece);
    }

    bool ReadKnown(std::string_view piece) {
        return encoding == Encoding::Utf16 ? Parse(piece) : Parse(repair.Next(piece));
    }

    static Impl& Of(void* self) { return *static_cast<Impl*>(self); }

    static void XMLCALL OnBegin(void* self, const char* name, const char** attributes) {
        Impl& impl = Of(self);
        if (++impl.depth > kDeepest) {
            XML_StopParser(impl.parser, XML_FALSE);
            return;
        }
        std::string base;
        for (; *attributes != nullptr; attributes += 2) {
            if (std::strcmp(attributes[0], "xml:base") == 0) base = attributes[1];
        }
        const bool asItIs = impl.encoding == Encoding::AsItIs && !impl.isLatin1;
        impl.visitor.Begin(LocalName(name), asItIs ? BytesOf(base) : base);
    }

    static void XMLCALL OnEnd(void* self, const char*) {
        --Of(self).depth;
        Of(self).visitor.End();
    }

    static void XMLCALL OnText(void* self, const char* text, int size) {
        Impl& impl = Of(self);
        const std::string_view utf8(text, static_cast<std::size_t>(size));
        if (std::none_of(utf8.begin(), utf8.end(), [](char c) { return (c & 0x80) != 0; })) {
            impl.visitor.Text(utf8);
            return;
        }
        // A character reference takes more bytes in the file than its character.
        const bool asItIs =
            impl.encoding == Encoding::AsItIs && !impl.isLatin1 &&
            static_cast<std::size_t>(XML_GetCurrentByteCount(impl.parser)) == Characters(utf8);
        impl.visitor.Text(asItIs ? BytesOf(utf8) : std::string(utf8));
    }

    static void XMLCALL OnDeclaration(void* self, const char*, const char* name, int) {
        Of(self).isLatin1 = name != nullptr && strcasecmp(name, "ISO-8859-1") == 0;
    }

    static void XMLCALL OnEntity(void* self, const char*, int, const char*, int, const char*, const char*,
                                 const char*, const char*) {
        XML_StopParser(Of(self).parser, XML_FALSE);
    }
};

XmlStream::XmlStream(XmlVisitor& visitor) : impl_(std::make_unique<Impl>(visitor)) {}

XmlStream::~XmlStream() = default;

bool XmlStream::Read(std::string_view piece) {
    taken = &impl_->memory;
    const bool more = impl_->Read(piece);
    taken = nullptr;
    return more;
}

}  // namespace sorakaze::player
