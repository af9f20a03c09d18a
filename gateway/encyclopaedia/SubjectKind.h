// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Decides whether an article's subject is a musician or a band, from its information box and its categories.
// Pure functions; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gateway/encyclopaedia/Edition.h"

namespace sorakaze::gateway {

struct InformationBox {
    struct Row {
        std::string label;
        std::string value;  ///< one line for each item of a list
    };
    std::vector<Row> rows;
    std::vector<std::string> headings;  ///< rows with a label alone
    std::vector<std::string> names;     ///< below the heading: the name in its own script
    bool isOfWork = false;              ///< of an album, a song, a film, an event
};

enum class SubjectKind { Unknown, Musician, SomethingElse };

/// Unknown if the box shows neither.
SubjectKind SubjectOf(const InformationBox& box);

/// `category` without its namespace: "English rock music groups", "日本の女性歌手".
bool IsMusicianCategory(std::string_view category, Edition edition);

/// Whether a title's words in brackets are a musician's or a band's: "British rapper", "band", "歌手".
bool IsMusicianQualifier(std::string_view qualifier, Edition edition);

/// Of a single person: "1770 births", "1978年生".
bool IsPersonCategory(std::string_view category, Edition edition);

/// From the rows that hold other names of the subject.
std::vector<std::string> OtherNames(const InformationBox& box);

}  // namespace sorakaze::gateway
