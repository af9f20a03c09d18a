// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A page of HTML as a tree. A library parses it; this bounds what a page can make the library do, and is the
// only place that knows it. Foreign bytes; any thread.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string_view>

namespace sorakaze::gateway {

class HtmlChildren;

/// A place in a tree: cheap to copy, valid as long as its tree.
class HtmlNode {
  public:
    /// No node: false, without children, attributes and text.
    HtmlNode() = default;
    explicit operator bool() const { return node_ != nullptr; }

    bool IsElement() const;
    bool IsElement(std::string_view tag) const { return IsElement() && Tag() == tag; }
    /// In lower case. Empty for an element that HTML doesn't know, and for what is no element.
    std::string_view Tag() const;
    /// Of a piece of text; empty for other nodes.
    std::string_view Text() const;
    /// Empty without the attribute.
    std::string_view Attribute(const char* name) const;
    /// True for any of the names.
    bool HasClass(std::initializer_list<std::string_view> names) const;
    /// None for what is no element.
    HtmlChildren Children() const;

  private:
    friend class HtmlChildren;
    friend class HtmlTree;
    explicit HtmlNode(const void* node) : node_(node) {}
    const void* node_ = nullptr;
};

/// For a range-based loop.
class HtmlChildren {
  public:
    class Iterator {
      public:
        explicit Iterator(const void* const* at) : at_(at) {}
        HtmlNode operator*() const { return HtmlNode(*at_); }
        Iterator& operator++() { return ++at_, *this; }
        bool operator==(const Iterator&) const = default;

      private:
        const void* const* at_;
    };
    HtmlChildren(const void* const* first, std::size_t count) : first_(first), count_(count) {}
    Iterator begin() const { return Iterator(first_); }
    Iterator end() const { return Iterator(first_ + count_); }

  private:
    const void* const* first_;
    std::size_t count_;
};

class HtmlTree {
  public:
    /// The tree is empty if the page is longer or has more elements than pages do, if it takes more memory or
    /// time than its length explains, or if it nests deeper than 256 elements, so that a tree can be walked
    /// by recursion. Takes a third of a second at most, and little stack. `html` must outlive the tree.
    explicit HtmlTree(std::string_view html);
    ~HtmlTree();
    HtmlTree(const HtmlTree&) = delete;
    HtmlTree& operator=(const HtmlTree&) = delete;

    /// The element "html"; no node in an empty tree.
    HtmlNode Root() const { return root_; }

  private:
    class Arena;
    std::unique_ptr<Arena> arena_;
    HtmlNode root_;
};

/// The first element, depth first from `node` itself, for which `matches` is true; no node if there is none.
HtmlNode FindElement(HtmlNode node, bool (*matches)(HtmlNode));

}  // namespace sorakaze::gateway
