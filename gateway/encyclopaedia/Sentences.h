// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Splits a text into sentences. Any bytes; any thread.
#pragma once

#include <string_view>

#include "gateway/encyclopaedia/Edition.h"

namespace sorakaze::gateway {

/// Gives whole sentences one by one, each with the blank before it.
class Sentences {
  public:
    /// No sentence ends within `name`: the names of some bands hold an exclamation mark or a full stop.
    Sentences(std::string_view text, std::string_view name, Edition edition)
        : rest_(text), name_(name), edition_(edition) {}

    /// Empty at the end. A last sentence without a full stop is not given.
    std::string_view Next();

  private:
    std::string_view rest_;
    std::string_view name_;
    Edition edition_;
};

}  // namespace sorakaze::gateway
