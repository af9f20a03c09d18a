// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// From an article's first paragraph to what an announcer can say.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gateway/Edition.h"
#include "gateway/ParagraphText.h"  // the marks of bold that paragraphs hold

namespace sorakaze::gateway {

/// What the paragraph calls its subject before it says what that is: all that is bold, and what the first
/// brackets hold, which is where the spelling in other scripts stands. What is bold later is as often a
/// member's name.
std::vector<std::string> NamesIn(std::string_view paragraph, Edition edition);

/// What follows the name `title` in the announcer's words: " was an American guitarist. He ..." of a
/// paragraph that begins "James Marshall "Jimi" Hendrix (born ...) was an American guitarist.[1] He ...":
/// whole sentences, in English two and some 400 characters at most, in Japanese as many as make 200
/// characters with the name, blanks not counted. Empty if the paragraph isn't about a subject of some name.
std::string Told(std::string_view paragraph, std::string_view title, Edition edition);

}  // namespace sorakaze::gateway
