// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The voice service: a form that is answered with a page that plays the speech. Reached by what lies under
// /voice_neo/.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace sorakaze::gateway {

struct VoiceRequest {
    std::string method;                              ///< "GET" or "POST"
    std::string path;                                ///< behind the token: "/voice_neo/vsdemo.aspx"
    std::multimap<std::string, std::string> fields;  ///< of the form, decoded
};

struct VoiceAnswer {
    int status = 404;
    std::string contentType = "text/plain; charset=utf-8";
    std::string body;
};

class VoiceService {
  public:
    /// `resources` is where say and SayKotoeri stand; `temporaryFolder` is asked for at the first sound.
    VoiceService(std::filesystem::path resources, std::function<std::filesystem::path()> temporaryFolder);
    ~VoiceService();

    /// Any thread, several at a time. Never throws for what a request holds.
    VoiceAnswer Answer(const VoiceRequest& request);
    /// Ends what is under way; from now on every answer is a 503. Any thread.
    void Stop();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::gateway
