// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/HtmlTree.h"

#include <algorithm>
#include <cctype>
#include <csetjmp>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace sorakaze::gateway {
namespace {

constexpr int kDeepest = 256;
constexpr int kMostAttributes = 500;
constexpr std::size_t kBlockBytes = 256 * 1024;
/// A tree takes some twenty times its page's length.
constexpr std::size_t kBytesOfTreePerByte = 40;

constexpr std::string_view kWithoutEnd[] = {"area",  "base", "br",   "col",   "embed",  "hr",    "img",
                                            "input", "link", "meta", "param", "source", "track", "wbr"};

/// The attributes of the tag whose name ends at `at`, counted generously; `at` moves to its end.
int Attributes(std::string_view html, std::size_t& at) {
    int count = 0;
    char before = ' ';
    for (; at < html.size() && html[at] != '>'; ++at) {
        const char c = html[at];
        if ((c == '"' || c == '\'') && before == '=') at = std::min(html.find(c, at + 1), html.size() - 1);
        const bool separates = std::isspace(static_cast<unsigned char>(c)) || c == '/';
        if (separates) ++count;
        if (!separates || before != '=') before = c;
    }
    return count;
}

/// Whether the parser, whose time grows with the square of how deep elements nest and of how many attributes
/// one has, would be done with it in time: as far as that can be told without parsing.
bool IsReasonable(std::string_view html) {
    std::unordered_map<std::string, int> open;
    int depth = 0;
    for (std::size_t at = html.find('<'); at != html.npos; at = html.find('<', at)) {
        const bool closes = html.substr(++at, 1) == "/";
        if (closes) ++at;
        std::string name;
        for (; at < html.size() && std::isalnum(static_cast<unsigned char>(html[at])); ++at) {
            name += static_cast<char>(std::tolower(static_cast<unsigned char>(html[at])));
        }
        if (name.empty()) continue;
        if (Attributes(html, at) > kMostAttributes) return false;
        if (std::ranges::find(kWithoutEnd, name) != std::end(kWithoutEnd)) continue;
        int& ofName = open[name];
        if (closes && ofName == 0) continue;
        ofName += closes ? -1 : 1;
        depth += closes ? -1 : 1;
        if (depth > kDeepest) return false;
    }
    return true;
}

}  // namespace

/// Memory that goes all at once: the parser frees node by node and recursively. When there is none left the
/// parser is left by a jump, since it doesn't look at what it gets; it holds nothing but this memory.
class HtmlTree::Arena {
  public:
    explicit Arena(std::size_t limit) : limit_(limit) {}

    static void* Allocate(void* self, std::size_t size) { return static_cast<Arena*>(self)->Take(size); }
    static void Free(void*, void*) {}

    std::jmp_buf exhausted;

  private:
    void* Take(std::size_t size) {
        constexpr std::size_t kAlignment = alignof(std::max_align_t);
        size = (size + kAlignment - 1) / kAlignment * kAlignment;
        if (size > left_) {
            const std::size_t block = std::max(size, kBlockBytes);
            if (block > limit_) std::longjmp(exhausted, 1);
            limit_ -= block;
            blocks_.emplace_back(new std::byte[block]);
            next_ = blocks_.back().get();
            left_ = block;
        }
        left_ -= size;
        return std::exchange(next_, next_ + size);
    }

    std::vector<std::unique_ptr<std::byte[]>> blocks_;
    std::byte* next_ = nullptr;
    std::size_t left_ = 0;
    std::size_t limit_;
};

HtmlTree::HtmlTree(std::string_view html)
    : arena_(std::make_unique<Arena>(4 * kBlockBytes + html.size() * kBytesOfTreePerByte)) {
    if (!IsReasonable(html)) return;
    GumboOptions options = kGumboDefaultOptions;
    options.allocator = &Arena::Allocate;
    options.deallocator = &Arena::Free;
    options.userdata = arena_.get();
    options.max_errors = 0;
    if (setjmp(arena_->exhausted) != 0) return;
    root_ = gumbo_parse_with_options(&options, html.data(), html.size())->root;
}

HtmlTree::~HtmlTree() = default;

bool IsElement(const GumboNode* node, GumboTag tag) {
    return node->type == GUMBO_NODE_ELEMENT && node->v.element.tag == tag;
}

std::span<const GumboNode* const> Children(const GumboNode* node) {
    if (node->type != GUMBO_NODE_ELEMENT) return {};
    const GumboVector& children = node->v.element.children;
    return {reinterpret_cast<const GumboNode* const*>(children.data), children.length};
}

std::string_view Attribute(const GumboNode* element, const char* name) {
    if (element->type != GUMBO_NODE_ELEMENT) return {};
    const GumboAttribute* attribute = gumbo_get_attribute(&element->v.element.attributes, name);
    return attribute ? std::string_view(attribute->value) : std::string_view();
}

bool HasClass(const GumboNode* element, std::initializer_list<std::string_view> names) {
    std::string_view classes = Attribute(element, "class");
    while (!classes.empty()) {
        const std::size_t end = std::min(classes.find(' '), classes.size());
        if (std::ranges::find(names, classes.substr(0, end)) != names.end()) return true;
        classes.remove_prefix(std::min(end + 1, classes.size()));
    }
    return false;
}

const GumboNode* Find(const GumboNode* node, bool (*matches)(const GumboNode*)) {
    if (!node) return nullptr;
    if (node->type == GUMBO_NODE_ELEMENT && matches(node)) return node;
    for (const GumboNode* child : Children(node)) {
        if (const GumboNode* found = Find(child, matches)) return found;
    }
    return nullptr;
}

}  // namespace sorakaze::gateway
