// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// XML that arrives piece by piece, told as elements and their texts. The one place that includes the XML
// library. Files in the wild are sloppy: bare ampersands and control characters are taken for text, and bytes
// that fit no encoding are passed on as they are. A file that declares entities, nests deeper than anyone's
// playlist or makes the library ask for much memory is hostile, and isn't read any further.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace sorakaze::player {

/// What an XmlStream calls. The views are valid during the call.
class XmlVisitor {
  public:
    virtual ~XmlVisitor() = default;
    /// `name` without a namespace prefix; `base` is the value of xml:base, empty where there is none.
    virtual void Begin(std::string_view name, std::string_view base) = 0;
    /// One text can come in several pieces.
    virtual void Text(std::string_view text) = 0;
    virtual void End() = 0;
};

class XmlStream {
  public:
    explicit XmlStream(XmlVisitor& visitor);
    ~XmlStream();
    XmlStream(const XmlStream&) = delete;
    XmlStream& operator=(const XmlStream&) = delete;

    /// False when the file isn't read any further.
    bool Read(std::string_view piece);

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::player
