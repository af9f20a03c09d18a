// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The voice service: answers a form with a page that plays the speech. Its paths begin with /voice_neo/.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "gateway/server/ServiceMessages.h"

namespace sorakaze::gateway {

class VoiceService {
  public:
    /// `resources` is the folder of say and SayKotoeri; `temporaryFolder` is called at the first sound.
    VoiceService(std::filesystem::path resources, std::function<std::filesystem::path()> temporaryFolder);
    ~VoiceService();

    /// Any thread, several at a time. Never throws because of what a request holds.
    ServiceAnswer Answer(const ServiceRequest& request);
    /// Ends the speech that is being made; from now on every answer is a 503. Any thread.
    void Stop();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::gateway
