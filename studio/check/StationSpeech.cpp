// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/StationSpeech.h"

#include <array>
#include <fstream>
#include <limits>
#include <system_error>
#include <utility>

#include "base/NearestWord.h"
#include "gateway/voice/VoiceForm.h"
#include "gateway/voice/VoiceSpeakers.h"
#include "host/StationPaths.h"
#include "process/ConfinedProcess.h"
#include "speech/VoicePage.h"
#include "speech/say/VoiceNames.h"
#include "studio/PageClient.h"
#include "studio/VoicePages.h"

namespace sorakaze::studio {
namespace {

namespace fs = std::filesystem;
using check::Complaint;
using check::Severity;

constexpr std::size_t kLargestPage = 1u << 20;
constexpr std::size_t kLargestSound = 64u << 20;
constexpr std::array<std::string_view, 7> kSpeakers{"Kyoko", "Haruka",  "Sakura", "Ayumi",
                                                    "Otoya", "Hattori", "Ichiro"};

/// A name of the table, which has small letters.
std::string Capitalised(std::string_view name) {
    std::string capitalised(name);
    if (!capitalised.empty() && capitalised[0] >= 'a' && capitalised[0] <= 'z') capitalised[0] -= 'a' - 'A';
    return capitalised;
}

}  // namespace

StationSpeech::StationSpeech(fs::path station, Deployment deployment)
    : station_(std::move(station)),
      resources_(ResourcesOfStation(station_)),
      deployment_(std::move(deployment)) {}

StationSpeech::~StationSpeech() = default;

fs::path StationSpeech::Folder() {
    if (!folder_) folder_ = RunFolder::Make();
    return folder_ ? folder_->Files() : fs::path();
}

bool StationSpeech::CanSpeak(const std::string& voice) {
    const auto known = voices_.find(voice);
    if (known != voices_.end()) return known->second;
    process::Confinement confinement;
    confinement.folder = Folder();
    confinement.output = confinement.folder / "voice.aiff";
    confinement.wallTime = std::chrono::seconds(20);
#ifdef __SANITIZE_ADDRESS__
    // A program of ours that is built with the sanitizer reserves terabytes of addresses.
    confinement.addressSpace = std::numeric_limits<std::uint64_t>::max();
#endif
    process::OfferPrograms(confinement, resources_);
    process::ConfinedProcess say("exec say -v " + gateway::QuoteForShell(voice) + " '' -o " +
                                     gateway::QuoteForShell(confinement.output.string()),
                                 confinement);
    say.Run();
    // The sign of success that the show goes by.
    std::error_code error;
    return voices_[voice] = fs::remove(confinement.output, error);
}

namespace {

/// Two slips make a short name another name.
std::size_t MostSlips(const std::string& name) {
    constexpr std::size_t kShort = 4;
    return name.size() <= kShort ? 1 : 2;
}

}  // namespace

const std::vector<Voice>& StationSpeech::Voices() {
    if (!listed_) listed_ = StationVoices(station_).List();
    return *listed_;
}

std::optional<Complaint> StationSpeech::CheckVoice(const std::string& name) {
    const std::string folded = speech::FoldName(name);
    std::vector<std::string> known;
    for (const Voice& voice : Voices()) {
        known.push_back(speech::FoldName(voice.name));
        if (known.back() != folded || voice.problem.empty()) continue;
        return Complaint{Severity::Warning, "faulty-voice",
                         "the voice " + check::Quoted(name) + " is faulty: " + voice.problem, ""};
    }
    if (speech::FindFirstName(folded) || Folder().empty()) return {};
    // Where nobody can speak, the name isn't at fault.
    if (CanSpeak(name) || !CanSpeak("Alex")) return {};
    const std::vector<std::string_view> names(known.begin(), known.end());
    const auto nearest = FindNearestWord(folded, names, MostSlips(name));
    return Complaint{Severity::Error, "unknown-voice",
                     "no voice is called " + check::Quoted(name) + ", so nothing is spoken",
                     nearest ? Capitalised(nearest->word) : ""};
}

std::optional<Complaint> StationSpeech::CheckSpeaker(const std::string& name) const {
    if (!deployment_.voiceHost.empty() || gateway::IsSpeaker(name)) return {};
    const auto nearest = FindNearestWord(name, kSpeakers, MostSlips(name));
    return Complaint{Severity::Warning, "unknown-speaker",
                     "no speaker is called " + check::Quoted(name) + ", so Kyoko speaks",
                     nearest ? std::string(nearest->word) : ""};
}

std::optional<double> StationSpeech::SpeakPage(const std::string& speaker, const std::string& text,
                                               const LengthOf& lengthOf) {
    if (!gateway_) {
        gateway::Options options;
        options.resources = resources_;
        options.temporaryFolder = [folder = Folder()] { return folder; };
        options.englishSite.clear();
        options.japaneseSite.clear();
        gateway_ = std::make_unique<gateway::Gateway>(std::move(options));
    }
    Deployment own = deployment_;
    own.voiceHost = gateway_->Host();
    const auto form = FindForm(VoicePage(own, speaker, text).Bytes());
    if (!form) return {};
    PageClient client({});
    const std::string sound =
        Resolve(form->action, FindSound(client.Post(form->action, EncodeForm(*form), kLargestPage)));
    const fs::path file = Folder() / "sentence.wav";
    std::ofstream(file, std::ios::binary) << client.Get(sound, kLargestSound);
    return lengthOf(file);
}

std::optional<double> StationSpeech::Measure(const std::string& speaker, const std::string& text,
                                             const LengthOf& lengthOf) {
    if (!deployment_.voiceHost.empty() || Folder().empty()) return {};
    const auto [known, isNew] = measured_.try_emplace(speaker + '\n' + text);
    if (!isNew) return known->second;
    try {
        known->second = SpeakPage(speaker, text, lengthOf);
    } catch (const PageError&) {
    } catch (const std::system_error&) {
        // No port could be bound: nothing is measured.
    }
    return known->second;
}

}  // namespace sorakaze::studio
