// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/PageSpeaker.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdio>
#include <stop_token>
#include <utility>

#include "app/runtime/FolderItem.h"
#include "app/runtime/Runtime.h"
#include "base/RegularFile.h"
#include "studio/PageClient.h"

namespace sorakaze::studio {
namespace {

constexpr std::size_t kLargestPage = 1u << 20;
constexpr std::size_t kLargestSound = 64u << 20;

/// The result of a page's form: a file with the sound and a voice that reads it, or why there is none.
struct Outcome {
    std::filesystem::path file;
    std::shared_ptr<sound::Voice> voice;
    std::string complaint;
    bool timedOut = false;
};

/// Blocks; without the baton. Empty where there is nothing to hear.
std::string FetchSound(const PageForm& form, const std::stop_token& cancelled) {
    PageClient client(cancelled);
    const std::string reference = FindSound(client.Post(form.action, EncodeForm(form), kLargestPage));
    if (reference.empty()) return {};
    const std::string sound = Resolve(form.action, reference);
    if (sound.empty()) throw PageError("its sound isn't served by plain HTTP");
    return client.Get(sound, kLargestSound);
}

bool Write(const std::filesystem::path& path, const std::string& bytes) {
    FileHandle file = CreateRegularFile(path);
    return file && std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() &&
           std::fclose(file.release()) == 0;
}

bool HasText(const PageForm& form) {
    return std::ranges::any_of(form.fields, [](const auto& field) {
        return field.first == "WriteText" && field.second.find_first_not_of(" \t\r\n") != std::string::npos;
    });
}

Outcome MakeVoice(const PageForm& form, std::filesystem::path file, sound::MixingEngine& engine,
                  const std::stop_token& cancelled) {
    Outcome outcome;
    try {
        const std::string bytes = FetchSound(form, cancelled);
        if (bytes.empty()) {
            if (HasText(form)) outcome.complaint = "its answer has no sound";
            return outcome;
        }
        outcome.file = std::move(file);
        if (!Write(outcome.file, bytes)) throw PageError("its sound can't be kept");
        std::string why;
        outcome.voice = engine.Open(outcome.file, sound::Bus::Speech, {}, &why);
        if (!outcome.voice) outcome.complaint = "the sound of its answer can't be played: " + why;
    } catch (const PageTimeout& error) {
        outcome.complaint = error.what();
        outcome.timedOut = true;
    } catch (const PageError& error) {
        outcome.complaint = error.what();
    }
    return outcome;
}

std::string ReadPage(const std::filesystem::path& file) {
    const FileHandle in = OpenRegularFile(file, O_RDONLY | O_NOFOLLOW, "rb");
    std::string page(kLargestPage, '\0');
    page.resize(in ? std::fread(page.data(), 1, page.size(), in.get()) : 0);
    return page;
}

void Remove(const std::filesystem::path& file) {
    std::error_code ignored;
    if (!file.empty()) std::filesystem::remove(file, ignored);
}

}  // namespace

PageSpeaker::PageSpeaker(HTMLViewer& viewer, std::function<void(const std::string&)> complain)
    : viewer_(viewer), complain_(std::move(complain)) {
    viewer_.Load = [this](const FolderItemRef& file) { Load(file); };
}

PageSpeaker::~PageSpeaker() {
    viewer_.Load = nullptr;
    remote_.Kill();
    StopSpeaking();
}

void PageSpeaker::StopSpeaking() {
    if (voice_) voice_->Stop();
    voice_.reset();
    Remove(std::exchange(file_, {}));
}

bool PageSpeaker::IsSpeaking() const {
    return voice_ && voice_->IsPlaying();
}

void PageSpeaker::Load(const FolderItemRef& file) {
    AssertBaton();
    ++pageCount_;
    remote_.Kill();
    StopSpeaking();
    auto form = FindForm(ReadPage(file->Path()));
    if (!form) return;
    form->action = Resolve("", form->action);
    if (form->action.empty()) {
        complain_("the voice service is silent: its address is none of plain HTTP");
    } else if (form->action == timedOutService_) {
        // Waiting half a minute for each line would take long.
        complain_("the voice service is silent: it did not answer before, and isn't asked again");
    } else if (IsLoopback(form->action)) {
        // The application's own service: the speech starts at this tick in every rendering.
        Speak(*form, Blocking::ClockStopped);
    } else {
        remote_.RunEvent = [this, form = *form] { Speak(form, Blocking::ClockFollowsWall); };
        remote_.Run();
    }
}

void PageSpeaker::Speak(const PageForm& form, Blocking kind) {
    auto& runtime = Runtime::Current();
    const std::uint64_t page = pageCount_;
    const auto file = runtime.TemporaryFolder() / ("sayj-" + std::to_string(page));
    Outcome outcome;
    // A thread that is killed meanwhile ends by an exception.
    const auto remove = [](Outcome* left) { Remove(left->file); };
    const std::unique_ptr<Outcome, decltype(remove)> leftover(&outcome);
    runtime.Threads().Block(kind, [&](std::stop_token cancelled) {
        outcome = MakeVoice(form, file, *runtime.Engine(), cancelled);
    });
    if (outcome.timedOut) timedOutService_ = form.action;
    if (page != pageCount_) return;
    if (!outcome.complaint.empty()) complain_("the voice service is silent: " + outcome.complaint);
    if (!outcome.voice) return;
    voice_ = std::move(outcome.voice);
    file_ = std::exchange(outcome.file, {});
    voice_->Start();
}

}  // namespace sorakaze::studio
