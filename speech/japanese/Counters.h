// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How a number is read together with the counter after it: 一本 is いっぽん, 二人 is ふたり. Pure functions;
// readings are hiragana.
#pragma once

#include <string>
#include <string_view>

namespace sorakaze::japanese {

/// The reading of a counter after a number where the dictionary, which doesn't see the number, may have
/// another (月 is がつ); empty if it isn't in the table.
std::u32string_view CounterReading(std::u32string_view counter);

/// After a month, 一日 is the first and not one day.
enum class AfterMonth { Yes, No };

/// The reading of a number and its counter. `reading` is the dictionary's for the counter.
std::u32string ReadCounted(std::u32string_view number, std::u32string_view counter,
                           std::u32string_view reading, AfterMonth afterMonth = AfterMonth::No);

}  // namespace sorakaze::japanese
