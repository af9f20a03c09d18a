// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Sound.h"

#include <algorithm>

#include "app/runtime/FolderItem.h"
#include "app/runtime/Runtime.h"

namespace sorakaze {

void Sound::Play() {
    AssertBaton();
    voice_->Start();
}

void Sound::Stop() {
    AssertBaton();
    voice_->Stop();
}

void Sound::SetVolume(std::int32_t volume) {
    AssertBaton();
    volume_ = std::clamp(volume, 0, 100);
    voice_->SetGain(static_cast<float>(volume_) / 100.0f);
}

double Sound::Seconds() const {
    const auto length = voice_->Length();
    return length ? length->Seconds() : 0;
}

void ExpectSpeech() {
    AssertBaton();
    if (sound::MixingEngine* const engine = Runtime::Current().Engine()) engine->ExpectSpeech();
}

SoundRef FolderItem::OpenAsSound(sound::Bus bus, std::string* why) const {
    auto& runtime = Runtime::Current();
    if (!runtime.Engine()) return nullptr;
    std::shared_ptr<sound::Voice> voice;
    runtime.Threads().Block(Blocking::ClockStopped,
                            [&](std::stop_token) { voice = runtime.Engine()->Open(path_, bus, {}, why); });
    return voice ? std::make_shared<Sound>(path_, std::move(voice)) : nullptr;
}

}  // namespace sorakaze
