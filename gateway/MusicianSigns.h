// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// By what an article shows that its subject is a musician or a band.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gateway/Edition.h"

namespace sorakaze::gateway {

/// An article's information box as far as it tells what the subject is.
struct InformationBox {
    struct Row {
        std::string label;
        std::string value;  ///< one line for each item of a list
    };
    std::vector<Row> rows;
    std::vector<std::string> headings;  ///< rows that are a label alone
    bool isOfWork = false;              ///< an album, a song, a film, an event
};

enum class BoxSays { Nothing, Musician, SomethingElse };

BoxSays Judge(const InformationBox& box);

/// `category` without its namespace: "English rock music groups", "日本の女性歌手".
bool IsOfMusicians(std::string_view category, Edition edition);

/// The rows that hold other names of the subject.
std::vector<std::string> NamesIn(const InformationBox& box);

}  // namespace sorakaze::gateway
