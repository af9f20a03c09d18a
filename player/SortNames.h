// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Sort tags hold names as a catalogue has them, "Mitchell, Joni" and "Beatles, The". These functions turn
// them into what is said. Pure; clean text.
#pragma once

#include <string>

namespace sorakaze::player {

/// A name with its article in front again, "The Beatles"; any other name as it is.
std::string WithArticleInFront(const std::string& name);

/// The sort spelling `sort` of the artist `name` as it is said. A person's name is said in the order that
/// `name` has: of 松任谷由実 "Matsutoya, Yumi" is "Matsutoya Yumi", of Виктор Цой "Tsoi, Viktor" is "Viktor
/// Tsoi". Several people are turned one by one; groups such as "Earth, Wind & Fire" stay.
std::string SpokenSortName(const std::string& sort, const std::string& name);

}  // namespace sorakaze::player
