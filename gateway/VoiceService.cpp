// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/VoiceService.h"

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

#include "gateway/VoiceForm.h"
#include "process/ConfinedProcess.h"

namespace sorakaze::gateway {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFormPath = "/voice_neo/vsdemo.aspx";
constexpr std::string_view kSpeechFolder = "/voice_neo/speech/";
constexpr std::string_view kSpeechEnding = ".wav";

/// Sounds that are made at the same time; one more ends the oldest, which nobody waits for any more.
constexpr std::size_t kMostUnderWay = 4;
/// What is kept for a player that asks again.
constexpr std::size_t kMostKept = 12;
constexpr std::size_t kMostBytes = 64u << 20;

constexpr std::chrono::seconds kLongestWork{20};
constexpr std::uint64_t kLargestFile = 48u << 20;

VoiceAnswer Page(int status, const std::string& body) {
    return {
        status, "text/html; charset=utf-8",
        "<!DOCTYPE html>\n<html lang=\"ja\"><head><meta charset=\"utf-8\"><title>voice</title></head><body>" +
            body + "</body></html>\n"};
}

VoiceAnswer Complaint(int status, const std::string& text) {
    return Page(status, "<p>" + text + "</p>");
}

/// One text on its way to being a sound. A thread of its own runs the program say, confined, and reads its
/// file; any thread may wait for that or end it.
class Speech {
  public:
    Speech(std::uint64_t number, const VoiceWish& wish, const fs::path& resources, const fs::path& folder)
        : number_(number),
          file_(folder / ("voice-" + std::to_string(number) + ".wav")),
          process_(CommandLine(wish, file_), Confined(resources, file_)),
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
    /// Waits for the sound; empty where there is none.
    std::string Sound() const {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return done_; });
        return sound_;
    }

  private:
    static std::string CommandLine(const VoiceWish& wish, const fs::path& file) {
        return "exec say -v " + wish.voice + ' ' + QuoteForShell(wish.text) + " -o " +
               QuoteForShell(file.string()) + " -s " + wish.speed;
    }

    static process::Confinement Confined(const fs::path& resources, const fs::path& file) {
        process::Confinement confinement;
        confinement.folder = file.parent_path();
        confinement.output = file;
        process::OfferPrograms(confinement, resources);
        confinement.wallTime = kLongestWork;
        confinement.processorTime = kLongestWork;
        confinement.fileSize = kLargestFile;
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
    std::thread thread_;  ///< begins when all else stands
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
    std::deque<SpeechRef> speeches;  ///< the oldest first

    VoiceAnswer Form(const VoiceRequest& request);
    VoiceAnswer Sound(std::string_view path);
    std::vector<SpeechRef> MakeRoom();
    SpeechRef Find(std::string_view number);
};

/// Ends and forgets the oldest until one more has room. The caller lets go of them without the lock.
std::vector<VoiceService::Impl::SpeechRef> VoiceService::Impl::MakeRoom() {
    std::size_t underWay = 0, bytes = 0, kept = 0;
    const auto keep = [&](const SpeechRef& speech) {
        bytes += speech->Bytes();
        underWay += speech->UnderWay() ? 1 : 0;
        return ++kept < kMostKept && underWay < kMostUnderWay && bytes < kMostBytes;
    };
    const auto end = std::find_if_not(speeches.rbegin(), speeches.rend(), keep).base();
    std::vector<SpeechRef> gone(speeches.begin(), end);
    speeches.erase(speeches.begin(), end);
    return gone;
}

VoiceAnswer VoiceService::Impl::Form(const VoiceRequest& request) {
    if (request.method != "POST") return Complaint(405, "The form is posted here.");
    const auto wish = ReadVoiceForm(request.fields);
    if (!wish) return Complaint(400, "This isn't the form of this service.");
    if (wish->text.empty()) return Page(200, "");

    std::vector<SpeechRef> gone;  // destroyed behind the lock: that waits for their threads
    const std::lock_guard lock(mutex);
    if (stopped) return Complaint(503, "The service has ended.");
    if (folder.empty()) folder = askForFolder();
    if (folder.empty()) return Complaint(500, "There is no folder to make sounds in.");
    gone = MakeRoom();
    for (const auto& speech : gone) speech->Kill();
    speeches.push_back(std::make_shared<Speech>(++last, *wish, resources, folder));
    // The sound is made while the page is on its way.
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

VoiceAnswer VoiceService::Impl::Sound(std::string_view path) {
    path.remove_prefix(kSpeechFolder.size());
    if (!path.ends_with(kSpeechEnding)) return Complaint(404, "There is no such sound.");
    path.remove_suffix(kSpeechEnding.size());
    const SpeechRef speech = Find(path);
    std::string sound = speech ? speech->Sound() : std::string();
    {
        const std::lock_guard lock(mutex);
        if (stopped) return Complaint(503, "The service has ended.");
    }
    if (sound.empty()) return Complaint(404, "There is no such sound.");
    return {200, "audio/wav", std::move(sound)};
}

VoiceService::VoiceService(fs::path resources, std::function<fs::path()> temporaryFolder)
    : impl_(std::make_unique<Impl>()) {
    impl_->resources = std::move(resources);
    impl_->askForFolder = std::move(temporaryFolder);
}

VoiceService::~VoiceService() {
    Stop();
}

VoiceAnswer VoiceService::Answer(const VoiceRequest& request) {
    try {
        {
            const std::lock_guard lock(impl_->mutex);
            if (impl_->stopped) return Complaint(503, "The service has ended.");
        }
        if (request.path == kFormPath) return impl_->Form(request);
        if (!request.path.starts_with(kSpeechFolder)) return Complaint(404, "There is nothing here.");
        if (request.method != "GET") return Complaint(405, "A sound can only be fetched.");
        return impl_->Sound(request.path);
    } catch (const std::exception&) {
        // No thread, no memory, no folder.
        return Complaint(500, "The sound can't be made now.");
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
