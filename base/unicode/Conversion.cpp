// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/unicode/Conversion.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <cstdint>

namespace sorakaze::unicode {
namespace {

/// ICU's names.
const char* NameOf(Encoding encoding) {
    switch (encoding) {
        case Encoding::ShiftJis:
            return "windows-31j";
        case Encoding::EucJp:
            return "EUC-JP";
        case Encoding::EucKr:
            return "windows-949";
        case Encoding::Gbk:
            return "GBK";
        case Encoding::Gb2312:
            return "GB2312";
        case Encoding::Big5:
            return "Big5";
        case Encoding::Windows1251:
            return "windows-1251";
        case Encoding::Windows1252:
            return "windows-1252";
        case Encoding::Utf16BigEndian:
            return "UTF-16BE";
        case Encoding::Utf16LittleEndian:
            return "UTF-16LE";
    }
    return "";
}

}  // namespace

std::string ToUtf8(std::string_view bytes, Encoding encoding) {
    std::string utf8;
    icu::UnicodeString(bytes.data(), static_cast<std::int32_t>(bytes.size()), NameOf(encoding))
        .toUTF8String(utf8);
    return utf8;
}

bool Encodes(Encoding encoding, char32_t code) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::LocalUConverterPointer converter(ucnv_open(NameOf(encoding), &error));
    if (U_FAILURE(error)) return false;
    ucnv_setFromUCallBack(converter.getAlias(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    const icu::UnicodeString text(static_cast<UChar32>(code));
    char bytes[16];
    ucnv_fromUChars(converter.getAlias(), bytes, sizeof bytes, text.getBuffer(), text.length(), &error);
    return U_SUCCESS(error);
}

}  // namespace sorakaze::unicode
