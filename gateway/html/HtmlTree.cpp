// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/html/HtmlTree.h"

#include <gumbo.h>
#include <time.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <csetjmp>
#include <string>
#include <utility>
#include <vector>

#include "base/Ascii.h"

namespace sorakaze::gateway {
namespace {

constexpr int kMostDepth = 256;
constexpr std::size_t kMostBytes = 1u << 20;
constexpr std::size_t kMostElements = 10'000;
/// Elements times bytes of text in one piece. The parser goes through the open elements at each character,
/// and can't be interrupted between two tags.
constexpr std::size_t kMostSteps = 200'000'000;
constexpr std::size_t kBlockBytes = 256 * 1024;
/// Twice what the tree of an ordinary page takes.
constexpr std::size_t kTreeBytesPerByte = 40;
/// Of the thread's processor time; an article needs a tenth of it.
constexpr std::chrono::milliseconds kMostParseTime{250};
constexpr std::ptrdiff_t kMostStackBytes = 64 * 1024;

bool StartsWith(std::string_view text, std::string_view lower) {
    return ascii::Lowered(text.substr(0, lower.size())) == lower;
}

/// Whether the arena's checks will come often enough to interrupt the parser in time. This doesn't follow
/// which elements are open: it would have to know all that a parser does.
bool CanBeInterrupted(std::string_view html) {
    if (html.size() > kMostBytes) return false;
    std::size_t elements = 0;
    std::size_t longest = 0;
    for (std::size_t at = 0; at < html.size();) {
        const std::string_view rest = html.substr(at + 1);
        std::size_t next = at + 1 + std::min(rest.find('<'), rest.size());
        if (html[at] == '<') {
            elements += !rest.empty() && std::isalpha(static_cast<unsigned char>(rest[0]));
            // Tags after these may be text.
            if (StartsWith(rest, "plaintext") || StartsWith(rest, "![cdata[")) {
                longest = std::max(longest, html.size() - at);
            }
        }
        // Other angle brackets are text.
        while (next + 1 < html.size() && !std::isalpha(static_cast<unsigned char>(html[next + 1])) &&
               std::string_view("/!?").find(html[next + 1]) == std::string_view::npos) {
            next = std::min(html.find('<', next + 1), html.size());
        }
        longest = std::max(longest, next - at);
        at = next;
    }
    return elements <= kMostElements && elements * longest <= kMostSteps;
}

std::chrono::nanoseconds ThreadTime() {
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

bool IsTooDeep(HtmlNode root) {
    std::vector<std::pair<HtmlNode, int>> remaining{{root, 1}};
    while (!remaining.empty()) {
        const auto [node, depth] = remaining.back();
        remaining.pop_back();
        if (depth > kMostDepth) return true;
        for (const HtmlNode child : node.Children()) remaining.emplace_back(child, depth + 1);
    }
    return false;
}

/// Null for what is no element.
const GumboElement* ElementOf(const void* node) {
    const auto* gumbo = static_cast<const GumboNode*>(node);
    return gumbo && gumbo->type == GUMBO_NODE_ELEMENT ? &gumbo->v.element : nullptr;
}

}  // namespace

/// The parser's memory, freed as a whole. The parser allocates at every tag, so this is also where its bounds
/// are checked. It can't be told to stop; but it holds nothing but this memory, so a jump ends it when there
/// is no memory, time or stack left.
class HtmlTree::Arena {
  public:
    explicit Arena(std::size_t limit) : limit_(limit) {}

    static void* Allocate(void* self, std::size_t size) { return static_cast<Arena*>(self)->Take(size); }
    /// Where a frameset replaces the body, the parser frees the old tree by recursion.
    static void Free(void* self, void*) { static_cast<Arena*>(self)->CheckStack(); }

    std::jmp_buf exhausted;

  private:
    void CheckStack() {
        if (base_ - static_cast<const char*>(__builtin_frame_address(0)) > kMostStackBytes) {
            std::longjmp(exhausted, 1);
        }
    }

    void CheckTime() {
        constexpr unsigned kAllocationsPerCheck = 64;
        if (++taken_ % kAllocationsPerCheck == 0 && ThreadTime() > end_) std::longjmp(exhausted, 1);
    }

    void* Take(std::size_t size) {
        CheckStack();
        CheckTime();
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
    unsigned taken_ = 0;
    const char* const base_ = static_cast<const char*>(__builtin_frame_address(0));
    const std::chrono::nanoseconds end_ = ThreadTime() + kMostParseTime;
};

HtmlTree::HtmlTree(std::string_view html) {
    if (!CanBeInterrupted(html)) return;
    arena_ = std::make_unique<Arena>(4 * kBlockBytes + html.size() * kTreeBytesPerByte);
    GumboOptions options = kGumboDefaultOptions;
    options.allocator = &Arena::Allocate;
    options.deallocator = &Arena::Free;
    options.userdata = arena_.get();
    options.max_errors = 0;
    if (setjmp(arena_->exhausted) != 0) return;
    const GumboNode* root = gumbo_parse_with_options(&options, html.data(), html.size())->root;
    if (root && !IsTooDeep(HtmlNode(root))) root_ = HtmlNode(root);
}

HtmlTree::~HtmlTree() = default;

bool HtmlNode::IsElement() const {
    return ElementOf(node_) != nullptr;
}

std::string_view HtmlNode::Tag() const {
    const GumboElement* element = ElementOf(node_);
    return element ? gumbo_normalized_tagname(element->tag) : std::string_view();
}

std::string_view HtmlNode::Text() const {
    const auto* node = static_cast<const GumboNode*>(node_);
    const bool isText = node && (node->type == GUMBO_NODE_TEXT || node->type == GUMBO_NODE_WHITESPACE);
    return isText ? node->v.text.text : std::string_view();
}

std::string_view HtmlNode::Attribute(const char* name) const {
    const GumboElement* element = ElementOf(node_);
    const GumboAttribute* attribute = element ? gumbo_get_attribute(&element->attributes, name) : nullptr;
    return attribute ? attribute->value : std::string_view();
}

bool HtmlNode::HasClass(std::initializer_list<std::string_view> names) const {
    std::string_view classes = Attribute("class");
    while (!classes.empty()) {
        const std::size_t end = std::min(classes.find(' '), classes.size());
        if (std::ranges::find(names, classes.substr(0, end)) != names.end()) return true;
        classes.remove_prefix(std::min(end + 1, classes.size()));
    }
    return false;
}

HtmlChildren HtmlNode::Children() const {
    const GumboElement* element = ElementOf(node_);
    return element ? HtmlChildren(element->children.data, element->children.length)
                   : HtmlChildren(nullptr, 0);
}

HtmlNode FindElement(HtmlNode node, bool (*matches)(HtmlNode)) {
    if (node.IsElement() && matches(node)) return node;
    for (const HtmlNode child : node.Children()) {
        if (const HtmlNode found = FindElement(child, matches)) return found;
    }
    return {};
}

}  // namespace sorakaze::gateway
