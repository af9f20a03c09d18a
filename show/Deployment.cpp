// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "show/Deployment.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace sorakaze {
namespace {

using Json = nlohmann::json;

constexpr std::string_view kLettersAndDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";

/// One member of the file: its field, and the characters allowed in it besides letters and digits.
struct Member {
    std::string_view name;
    std::string Deployment::*field;
    std::string_view marks;
};
constexpr std::array kMembers = {
    Member{"search", &Deployment::searchHost, "-._~%:[]/"},
    Member{"voice", &Deployment::voiceHost, "-._~%:[]/"},
    Member{"encyclopaediaEnglish", &Deployment::encyclopaediaEnglish, "-.:/"},
    Member{"encyclopaediaJapanese", &Deployment::encyclopaediaJapanese, "-.:/"},
    Member{"contact", &Deployment::contact, "-._~%:/@+?=&#,; "},
    Member{"viewState", &Deployment::viewState, "+/="},
    Member{"eventValidation", &Deployment::eventValidation, "+/="},
    Member{"player", &Deployment::player, "-"},
};

/// Louder or softer is not a station's.
constexpr double kSoftest = -31, kLoudest = -9;

void SetLoudness(Deployment& deployment, const Json& value) {
    if (value == "off") {
        deployment.loudness.reset();
    } else if (value.is_number() && value.get<double>() >= kSoftest && value.get<double>() <= kLoudest) {
        deployment.loudness = value.get<double>();
    } else {
        throw DeploymentError(
            "\"loudness\" must be a number of LUFS from -31 to -9, such as -16, -18 or -23, or \"off\"");
    }
}

void SetAnswer(Deployment& deployment, const Json& value) {
    constexpr double kShortest = 1, kLongest = 3600;
    if (!value.is_number() || value.get<double>() < kShortest || value.get<double>() > kLongest)
        throw DeploymentError("\"answerMessagesAfter\" must be a number of seconds from 1 to 3600");
    deployment.answerMessagesAfter = value.get<double>();
}

void SetMember(Deployment& deployment, const std::string& name, const Json& value) {
    if (name == "loudness") return SetLoudness(deployment, value);
    if (name == "answerMessagesAfter") return SetAnswer(deployment, value);
    for (const Member& member : kMembers) {
        if (member.name != name) continue;
        if (!value.is_string()) throw DeploymentError("\"" + name + "\" must be a text");
        auto text = value.get<std::string>();
        const auto bad = std::find_if(text.begin(), text.end(), [&](char c) {
            return kLettersAndDigits.find(c) == std::string_view::npos &&
                   member.marks.find(c) == std::string_view::npos;
        });
        if (bad != text.end()) {
            throw DeploymentError("\"" + name + "\" has a character that isn't allowed, at place " +
                                  std::to_string(bad - text.begin() + 1));
        }
        deployment.*member.field = std::move(text);
        return;
    }
    std::string known;
    for (const Member& member : kMembers) known += std::string(member.name) + ", ";
    throw DeploymentError("there is no member \"" + name + "\"; there are " + known +
                          "loudness, answerMessagesAfter");
}

}  // namespace

std::string Deployment::DefaultViewState() {
    return "D4sDMWq/O5UqSCAU2pSRxUbPa8jES31Q/zaA+8sxae+28g420/pEnAFurotWftVcBOk2re4rvnkD6u06QGuW"
           "ejlyENKfVXzTtHhtw4Ygd8BPMHoaXVgYLnI0PgoGsyLgUKNgOnKZLX/tAmKGCBgB/GOncN5lia4T/dE4l8vM"
           "IfckryR+AyA9yFWOZEOdRuEnn93q9Eh+Ieg23CREsYnu2PdobaYX0tfZpkh+BO6m/f1LRGuvIeEC7CYJ0CXP"
           "DLl4qWDjV7e9zZ7ne15iyJ5bCJYDw4zD0zKwspdsqSUsW4g2KnbbbqWT9i+JSeJDRk6oTj1Q5FMK4tuohzrw";
}

std::string Deployment::DefaultEventValidation() {
    return "bCsKQje2BVmiKmIntQuenCz/CDFXUw1HHd2vVQ1RZ4inG0OwTVqe5rD64N9aj+nwiHeTR5nqNGk2LkbtULvQ"
           "zK7FyRDdGzbH";
}

std::string ContactAdvice(const Deployment& deployment) {
    const std::string& site = deployment.encyclopaediaEnglish.empty() ? deployment.encyclopaediaJapanese
                                                                      : deployment.encyclopaediaEnglish;
    if (site.empty() || !deployment.contact.empty() || !deployment.searchHost.empty()) return {};
    return "deployment.json has no \"contact\": " + site +
           " asks for an e-mail address or a web page of who looks artists up";
}

Deployment ParseDeployment(std::string_view json) {
    Deployment deployment;
    Json file;
    try {
        file = Json::parse(json);
    } catch (const Json::exception& error) {
        throw DeploymentError(error.what());
    }
    if (!file.is_object()) throw DeploymentError("it must be one JSON object");
    for (const auto& [name, value] : file.items()) SetMember(deployment, name, value);
    if (deployment.player != "files") {
        throw DeploymentError("there is no player \"" + deployment.player + "\"; there is \"files\"");
    }
    return deployment;
}

Deployment ReadDeployment(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error) && !error) return {};
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    if (std::filesystem::is_directory(file, error) || !(text << stream.rdbuf())) {
        throw DeploymentError("it can't be read, or it is empty");
    }
    return ParseDeployment(text.str());
}

}  // namespace sorakaze
