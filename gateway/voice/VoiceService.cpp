// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/voice/VoiceService.h"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <fstream>
#include <iterator>
#include <limits>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "gateway/voice/VoiceForm.h"
#include "process/ConfinedProcess.h"

namespace sorakaze::gateway {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFormPath = "/voice_neo/vsdemo.aspx";
constexpr std::string_view kSpeechFolder = "/voice_neo/speech/";
constexpr std::string_view kSpeechEnding = ".wav";

/// Sounds that are made at the same time; one more ends the oldest, which nobody waits for any more.
constexpr std::size_t kMostUnderWay = 4;
/// Sounds that are kept for a player that asks again.
constexpr std::size_t kMostKept = 12;
constexpr std::size_t kMostKeptBytes = 64u << 20;

constexpr std::chrono::seconds kMostWorkTime{20};
constexpr std::uint64_t kMostFileBytes = 48u << 20;

ServiceAnswer Page(int status, const std::string& body) {
    return {
        status,
        "text/html; charset=utf-8",
        "<!DOCTYPE html>\n<html lang=\"ja\"><head><meta charset=\"utf-8\"><title>voice</title></head><body>" +
            body + "</body></html>\n",
        {}};
}

ServiceAnswer ErrorPage(int status, const std::string& text) {
    return Page(status, "<p>" + text + "</p>");
}

/// One text that is made into a sound. A thread of its own runs the program say, confined, and reads its
/// file; any thread may wait for that or end it.
class Speech {
  public:
    Speech(std::uint64_t number, const SpeechOrder& order, const fs::path& resources, const fs::path& folder)
        : number_(number),
          file_(folder / ("voice-" + std::to_string(number) + ".wav")),
          process_(CommandLine(order, file_), Confined(resources, file_)),
          thread_([this] { Work(); }) {}
    ~Speech() {
        process_.Kill();
        thread_.join();
    }
    Speech(const Speech&) = delete;
    Speech& operator=(const Speech&) = delete;

    std::uint64_t Number() const { return number_; }
    void Kill() { process_.Kill(); }
    bool UnderWay() const {
        const std::lock_guard lock(mutex_);
        return !done_;
    }
    std::size_t Bytes() const {
        const std::lock_guard lock(mutex_);
        return sound_.size();
    }
    /// Waits for the sound; empty if it couldn't be made.
    std::string Sound() const {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return done_; });
        return sound_;
    }

  private:
    static std::string CommandLine(const SpeechOrder& order, const fs::path& file) {
        return "exec say -v " + order.voice + ' ' + QuoteForShell(order.text) + " -o " +
               QuoteForShell(file.string()) + " -s " + order.speed;
    }

    static process::Confinement Confined(const fs::path& resources, const fs::path& file) {
        process::Confinement confinement;
        confinement.folder = file.parent_path();
        confinement.output = file;
        process::OfferPrograms(confinement, resources);
        confinement.wallTime = kMostWorkTime;
        confinement.processorTime = kMostWorkTime;
        confinement.fileSize = kMostFileBytes;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        // A program of ours that is built with a sanitizer reserves terabytes of addresses.
        confinement.addressSpace = std::numeric_limits<std::uint64_t>::max();
#endif
        return confinement;
    }

    void Work() {
        process_.Run();
        std::ifstream file(file_, std::ios::binary);
        std::string sound(std::istreambuf_iterator<char>(file), {});
        std::error_code ignored;
        fs::remove(file_, ignored);
        const std::lock_guard lock(mutex_);
        sound_ = std::move(sound);
        done_ = true;
        changed_.notify_all();
    }

    const std::uint64_t number_;
    const fs::path file_;
    process::ConfinedProcess process_;
    mutable std::mutex mutex_;  ///< guards what follows
    mutable std::condition_variable changed_;
    std::string sound_;
    bool done_ = false;
    std::thread thread_;  ///< last: it uses the other members
};

}  // namespace

struct VoiceService::Impl {
    using SpeechRef = std::shared_ptr<Speech>;

    fs::path resources;
    std::function<fs::path()> askForFolder;

    std::mutex mutex;  ///< guards what follows
    fs::path folder;
    bool stopped = false;
    std::uint64_t last = 0;
    std::deque<SpeechRef> speeches;  ///< oldest first

    ServiceAnswer Form(const ServiceRequest& request);
    ServiceAnswer Sound(std::string_view path);
    std::vector<SpeechRef> MakeRoom();
    SpeechRef Find(std::string_view number);
};

/// Removes the oldest until there is room for one more. The caller destroys them without the lock.
std::vector<VoiceService::Impl::SpeechRef> VoiceService::Impl::MakeRoom() {
    std::size_t underWay = 0, bytes = 0, kept = 0;
    const auto keep = [&](const SpeechRef& speech) {
        bytes += speech->Bytes();
        underWay += speech->UnderWay() ? 1 : 0;
        return ++kept < kMostKept && underWay < kMostUnderWay && bytes < kMostKeptBytes;
    };
    const auto end = std::find_if_not(speeches.rbegin(), speeches.rend(), keep).base();
    std::vector<SpeechRef> removed(speeches.begin(), end);
    speeches.erase(speeches.begin(), end);
    return removed;
}

ServiceAnswer VoiceService::Impl::Form(const ServiceRequest& request) {
    if (request.method != "POST") return ErrorPage(405, "The form is posted here.");
    const auto order = ReadVoiceForm(request.fields);
    if (!order) return ErrorPage(400, "This isn't the form of this service.");
    if (order->text.empty()) return Page(200, "");

    std::vector<SpeechRef> removed;  // destroyed after the lock is released: that waits for their threads
    const std::lock_guard lock(mutex);
    if (stopped) return ErrorPage(503, "The service has ended.");
    if (folder.empty()) folder = askForFolder();
    if (folder.empty()) return ErrorPage(500, "There is no folder to make sounds in.");
    removed = MakeRoom();
    for (const auto& speech : removed) speech->Kill();
    speeches.push_back(std::make_shared<Speech>(++last, *order, resources, folder));
    // The sound is made while the page is sent.
    return Page(200, "<audio autoplay src=\"speech/" + std::to_string(last) + std::string(kSpeechEnding) +
                         "\"></audio>");
}

VoiceService::Impl::SpeechRef VoiceService::Impl::Find(std::string_view number) {
    const std::lock_guard lock(mutex);
    const auto found = std::find_if(speeches.begin(), speeches.end(), [&](const SpeechRef& speech) {
        return std::to_string(speech->Number()) == number;
    });
    return found == speeches.end() ? nullptr : *found;
}

ServiceAnswer VoiceService::Impl::Sound(std::string_view path) {
    path.remove_prefix(kSpeechFolder.size());
    if (!path.ends_with(kSpeechEnding)) return ErrorPage(404, "There is no such sound.");
    path.remove_suffix(kSpeechEnding.size());
    const SpeechRef speech = Find(path);
    std::string sound = speech ? speech->Sound() : std::string();
    {
        const std::lock_guard lock(mutex);
        if (stopped) return ErrorPage(503, "The service has ended.");
    }
    if (sound.empty()) return ErrorPage(404, "There is no such sound.");
    return {200, "audio/wav", std::move(sound), {}};
}

VoiceService::VoiceService(fs::path resources, std::function<fs::path()> temporaryFolder)
    : impl_(std::make_unique<Impl>()) {
    impl_->resources = std::move(resources);
    impl_->askForFolder = std::move(temporaryFolder);
}

VoiceService::~VoiceService() {
    Stop();
}

ServiceAnswer VoiceService::Answer(const ServiceRequest& request) {
    try {
        {
            const std::lock_guard lock(impl_->mutex);
            if (impl_->stopped) return ErrorPage(503, "The service has ended.");
        }
        const std::string_view path = std::string_view(request.target).substr(0, request.target.find('?'));
        if (path == kFormPath) return impl_->Form(request);
        if (!path.starts_with(kSpeechFolder)) return ErrorPage(404, "There is nothing here.");
        if (request.method != "GET") return ErrorPage(405, "A sound can only be fetched.");
        return impl_->Sound(path);
    } catch (const std::exception&) {
        // No thread, no memory, no folder.
        return ErrorPage(500, "The sound can't be made now.");
    }
}

void VoiceService::Stop() {
    std::deque<Impl::SpeechRef> ended;
    const std::lock_guard lock(impl_->mutex);
    impl_->stopped = true;
    ended.swap(impl_->speeches);
    for (const auto& speech : ended) speech->Kill();
}

}  // namespace sorakaze::gateway
