// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The constants of a deployment: the hosts of its services, the tokens of the voice service's form, which
// player is used, how loud the station is, and how long it waits for an answer. Resources/deployment.json
// holds them; what it leaves out has the defaults given here.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace sorakaze {

struct Deployment {
    /// A host may have a port and the beginning of a path: "127.0.0.1:8080/services". Empty: the
    /// application's own service.
    std::string searchHost;
    std::string voiceHost;
    /// The host names of the encyclopaedia's two editions. Our own search engine looks nothing up in an
    /// edition without a name.
    std::string encyclopaediaEnglish = "en.wikipedia.org";
    std::string encyclopaediaJapanese = "ja.wikipedia.org";
    /// An e-mail address or a web page by which the encyclopaedia's operators reach who runs the station.
    std::string contact;
    /// Tokens of the voice service's form: base64, 336 and 96 characters.
    std::string viewState = DefaultViewState();
    std::string eventValidation = DefaultEventValidation();
    /// "files": the user's own music files.
    std::string player = "files";
    /// The loudness that all that is heard is brought to, in LUFS; empty for the bare mix of the sounds.
    std::optional<double> loudness = -16;
    /// Seconds after which the show goes on although nobody has answered a message; empty: it waits.
    std::optional<double> answerMessagesAfter;

    static std::string DefaultViewState();
    static std::string DefaultEventValidation();
};

/// One line for who runs the station; empty unless artists are looked up without a contact.
std::string ContactAdvice(const Deployment& deployment);

/// A deployment.json that can't be used. The message says what is wrong with it, and where.
class DeploymentError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Throws DeploymentError for a text that is no JSON object, for an unknown member, and for a value of the
/// wrong kind or with characters that a host or token can't have.
Deployment ParseDeployment(std::string_view json);

/// The deployment of the file; the defaults where there is none. Throws DeploymentError, also for a file that
/// can't be read.
Deployment ReadDeployment(const std::filesystem::path& file);

}  // namespace sorakaze
