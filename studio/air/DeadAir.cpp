// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/air/DeadAir.h"

#include <algorithm>
#include <utility>

namespace sorakaze::studio {
namespace {

/// Calls further apart mean that the process itself has stood still, and with it the clock of the silence.
constexpr double kLongestPause = 2;

}  // namespace

void DeadAir::Begin() {
    running_ = true;
    told_ = restarted_ = false;
    since_ = observed_ = waitEnds_ = now_();
}

void DeadAir::OnShowEvent(const ShowEvent& event) {
    if (event.kind != ShowEvent::Kind::Line) return;
    const auto* value = event.Find("text");
    const String line = value && std::holds_alternative<String>(*value) ? std::get<String>(*value) : String();
    waitEnds_ = now_();
    if (NthField(line, " ", 1) == "wait") waitEnds_ += std::max(0.0, Val(Mid(line, 5)));
}

DeadAir::Verdict DeadAir::Observe(bool sound) {
    if (!running_) return Verdict::Nothing;
    const double now = now_();
    if (now - observed_ > kLongestPause) since_ += now - observed_;
    observed_ = now;
    if (sound || now < waitEnds_) {
        since_ = now;
        restarted_ = false;
        return std::exchange(told_, false) ? Verdict::Over : Verdict::Nothing;
    }
    if (!restarted_ && Seconds() >= limit_) {
        restarted_ = true;
        return Verdict::Restart;
    }
    if (told_ || Seconds() <= kToldAfter) return Verdict::Nothing;
    told_ = true;
    return Verdict::Silent;
}

}  // namespace sorakaze::studio
