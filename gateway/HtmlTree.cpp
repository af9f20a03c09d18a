// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/HtmlTree.h"

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

constexpr int kDeepest = 256;
constexpr std::size_t kMostBytes = 1u << 20;
constexpr std::size_t kMostElements = 10'000;
/// Elements times bytes of text in one piece: the parser looks through the open elements at each character,
/// and can't be interrupted between two tags.
constexpr std::size_t kMostSteps = 200'000'000;
constexpr std::size_t kBlockBytes = 256 * 1024;
/// A tree takes some twenty times its page's length.
constexpr std::size_t kBytesOfTreePerByte = 40;
/// What the parser may take of its thread. An article needs a tenth of it.
constexpr std::chrono::milliseconds kLongest{250};
constexpr std::ptrdiff_t kStackBytes = 64 * 1024;

bool StartsWith(std::string_view text, std::string_view lower) {
    return ascii::Lowered(text.substr(0, lower.size())) == lower;
}

/// Whether the parser will be interrupted in time when that must be. Nothing here depends on what is open
/// where: a bound on that would have to know all that a parser does.
bool IsReasonable(std::string_view html) {
    if (html.size() > kMostBytes) return false;
    std::size_t elements = 0;
    std::size_t longest = 0;
    for (std::size_t at = 0; at < html.size();) {
        const std::string_view behind = html.substr(at + 1);
        std::size_t next = at + 1 + std::min(behind.find('<'), behind.size());
        if (html[at] == '<') {
            elements += !behind.empty() && std::isalpha(static_cast<unsigned char>(behind[0]));
            // Here tags may be text.
            if (StartsWith(behind, "plaintext") || StartsWith(behind, "![cdata[")) {
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

bool IsDeep(const GumboNode* root) {
    std::vector<std::pair<const GumboNode*, int>> left{{root, 1}};
    while (!left.empty()) {
        const auto [node, depth] = left.back();
        left.pop_back();
        if (depth > kDeepest) return true;
        for (const GumboNode* child : Children(node)) left.emplace_back(child, depth + 1);
    }
    return false;
}

}  // namespace

/// Memory that goes all at once: the parser frees node by node. It asks at every tag, and so this is also
/// where it is looked after: when there is no memory, no time or no stack left it is left by a jump, since it
/// holds nothing but this memory and has no other way to be told.
class HtmlTree::Arena {
  public:
    explicit Arena(std::size_t limit) : limit_(limit) {}

    static void* Allocate(void* self, std::size_t size) { return static_cast<Arena*>(self)->Take(size); }
    /// The parser throws a tree away by recursion where a page changes its mind about its body.
    static void Free(void* self, void*) { static_cast<Arena*>(self)->CheckStack(); }

    std::jmp_buf exhausted;

  private:
    void CheckStack() {
        if (base_ - static_cast<const char*>(__builtin_frame_address(0)) > kStackBytes) {
            std::longjmp(exhausted, 1);
        }
    }

    void CheckTime() {
        constexpr unsigned kSeldom = 64;
        if (++taken_ % kSeldom == 0 && ThreadTime() > end_) std::longjmp(exhausted, 1);
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
    const std::chrono::nanoseconds end_ = ThreadTime() + kLongest;
};

HtmlTree::HtmlTree(std::string_view html) {
    if (!IsReasonable(html)) return;
    arena_ = std::make_unique<Arena>(4 * kBlockBytes + html.size() * kBytesOfTreePerByte);
    GumboOptions options = kGumboDefaultOptions;
    options.allocator = &Arena::Allocate;
    options.deallocator = &Arena::Free;
    options.userdata = arena_.get();
    options.max_errors = 0;
    if (setjmp(arena_->exhausted) != 0) return;
    const GumboNode* root = gumbo_parse_with_options(&options, html.data(), html.size())->root;
    if (root && !IsDeep(root)) root_ = root;
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
