// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Takes from an article's first paragraph what an announcer can say, and the names of its subject. Pure
// functions of any bytes; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gateway/encyclopaedia/Edition.h"
#include "gateway/encyclopaedia/ParagraphText.h"  // marks of bold text

namespace sorakaze::gateway {

/// The names that the paragraph gives to its subject before its predicate: all bold text, and spellings in
/// brackets that are in another script or introduced ("formerly X"). Bold text after the predicate is as
/// often a member's name, and so is what else is in brackets.
std::vector<std::string> NamesIn(std::string_view paragraph, Edition edition);

/// What the announcer says after the name `title`. For "James Marshall "Jimi" Hendrix (born ...) was an
/// American guitarist.[1] He ..." this is " was an American guitarist. He ...". Whole sentences: in English
/// at most two and some 400 characters; in Japanese at most 200 characters with the name, blanks not counted.
/// Empty if the paragraph doesn't begin with the name of a subject.
std::string Summary(std::string_view paragraph, std::string_view title, Edition edition);

}  // namespace sorakaze::gateway
