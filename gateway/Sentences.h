// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A text into its sentences. Any bytes.
#pragma once

#include <string_view>

#include "gateway/Edition.h"

namespace sorakaze::gateway {

/// Whole sentences one by one, each with the blank before it.
class Sentences {
  public:
    /// No sentence ends within `name`: there are bands with an exclamation mark, or a full stop.
    Sentences(std::string_view text, std::string_view name, Edition edition)
        : rest_(text), name_(name), edition_(edition) {}

    /// Empty at the end, and for what no full stop follows.
    std::string_view Next();

  private:
    std::string_view rest_;
    std::string_view name_;
    Edition edition_;
};

}  // namespace sorakaze::gateway
