// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/Audibility.h"

#include <QRandomGenerator>
#include <algorithm>
#include <utility>

namespace sorakaze::viewer {
namespace {

constexpr QChar kBegin = '+', kEnd = '-';

constexpr const char* kScript = R"((() => {
    const playing = new Set();
    const begin = element => { if (!playing.has(element)) { playing.add(element); console.log("SECRET+"); } };
    const end = element => { if (playing.delete(element)) console.log("SECRET-"); };
    addEventListener("playing", event => begin(event.target), true);
    for (const kind of ["pause", "ended", "emptied", "error"]) addEventListener(kind, event => end(event.target), true);
    addEventListener("pagehide", () => [...playing].forEach(end), true);
})();)";

QString Secret() {
    QString secret;
    for (int i = 0; i < 4; ++i) secret += QString::number(QRandomGenerator::system()->generate(), 16) + ' ';
    return secret;
}

}  // namespace

Audibility::Audibility(std::function<void(bool)> tell) : tell_(std::move(tell)), secret_(Secret()) {}

QString Audibility::Script() const {
    return QString(kScript).replace("SECRET", secret_);
}

void Audibility::OnConsole(const QString& message) {
    if (message == secret_ + kBegin) {
        ++playing_;
        Set(true);
    } else if (message == secret_ + kEnd) {
        playing_ = std::max(0, playing_ - 1);
        if (playing_ == 0) Set(false);
    }
}

void Audibility::OnEngine(bool recentlyAudible) {
    // Before a beginning it repeats that it is silent, and again two seconds after an end.
    if (std::exchange(engineAudible_, recentlyAudible) == recentlyAudible) return;
    if (!recentlyAudible) playing_ = 0;
    Set(recentlyAudible);
}

void Audibility::OnRendererEnd() {
    engineAudible_ = false;
    playing_ = 0;
    Set(false);
}

void Audibility::Set(bool audible) {
    if (std::exchange(audible_, audible) != audible) tell_(audible);
}

}  // namespace sorakaze::viewer
