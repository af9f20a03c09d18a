// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The constants that belong to a deployment and not to the application: which hosts its services have, the
// tokens of the voice service's form, and which player stands behind the bridge. Resources/deployment.json
// holds them; what it leaves out is as here.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace sorakaze {

struct Deployment {
    /// A host may have a port and the beginning of a path: "127.0.0.1:8080/services". Empty: the service that
    /// the application brings itself.
    std::string searchHost;
    std::string voiceHost;
    /// The names by which the search engine knows the encyclopaedia's two editions. Our own search engine
    /// looks nothing up in an edition without a name.
    std::string encyclopaediaEnglish = "en.wikipedia.org";
    std::string encyclopaediaJapanese = "ja.wikipedia.org";
    /// Tokens of the voice service's form: base64, 336 and 96 characters.
    std::string viewState = DefaultViewState();
    std::string eventValidation = DefaultEventValidation();
    /// "files": the user's own music files.
    std::string player = "files";

    static std::string DefaultViewState();
    static std::string DefaultEventValidation();
};

/// A deployment.json that can't be used. The message says what is wrong with it, and where.
class DeploymentError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The deployment that a JSON text describes. Throws DeploymentError for what is no JSON object, for an
/// unknown member, and for a value of the wrong kind or with characters that can't stand in a host or token.
Deployment ParseDeployment(std::string_view json);

/// The deployment of the file; the defaults where there is none. Throws DeploymentError, also for a file that
/// can't be read.
Deployment ReadDeployment(const std::filesystem::path& file);

}  // namespace sorakaze
