// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "app/runtime/String.h"
#include "show/Deployment.h"

namespace sorakaze {

/// The only script of the page, run when it is loaded.
inline constexpr const char* kVoicePageScript =
    "document.forms[0].target = 'sub'; document.forms[0].submit();";

/// Where the page posts its form.
std::string VoiceAddress(const Deployment& deployment);

/// The page that sends `text` to the voice service the moment it is loaded, in UTF-8 with lines that end in a
/// carriage return. Neither text is escaped; `text` holds no double quote.
String VoicePage(const Deployment& deployment, const String& voice, const String& text);

}  // namespace sorakaze
