// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A page of HTML as a tree. The parsing is a library's; what is here bounds what a page can make it do.
#pragma once

#include <gumbo.h>

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <span>
#include <string_view>

namespace sorakaze::gateway {

class HtmlTree {
  public:
    /// A page that is longer or has more elements than pages do, or that takes more memory or time than its
    /// length explains, is an empty tree, and so is one that nests deeper than 256 elements: who walks a tree
    /// may do so by recursion. Takes a third of a second at most, and little stack. `html` must live as long
    /// as the tree.
    explicit HtmlTree(std::string_view html);
    ~HtmlTree();
    HtmlTree(const HtmlTree&) = delete;
    HtmlTree& operator=(const HtmlTree&) = delete;

    /// The element "html"; null in an empty tree.
    const GumboNode* Root() const { return root_; }

  private:
    class Arena;
    std::unique_ptr<Arena> arena_;
    const GumboNode* root_ = nullptr;
};

bool IsElement(const GumboNode* node, GumboTag tag);
/// Of an element; none for other nodes.
std::span<const GumboNode* const> Children(const GumboNode* node);
/// Empty without the attribute.
std::string_view Attribute(const GumboNode* element, const char* name);
/// True for any of the names.
bool HasClass(const GumboNode* element, std::initializer_list<std::string_view> names);
/// The element and what is in it, depth first, the first one for which `matches` is true; null if none is.
const GumboNode* Find(const GumboNode* node, bool (*matches)(const GumboNode*));

}  // namespace sorakaze::gateway
