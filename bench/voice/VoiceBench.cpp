// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How long a spoken line waits for its sound: over HTTP, as a viewer asks, from the form's sending to the
// page and to the whole sound after it. First of a run, and later on; for short and long texts.
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>

#include "gateway/Gateway.h"
#include "studio/PageClient.h"
#include "studio/VoicePages.h"

namespace {

using namespace sorakaze;
using Time = std::chrono::steady_clock;

const std::string kSentence =
    "こんばんは。お聴きの曲は、The Beatlesの「Let It Be」、1970年の作品です。";  // 45

std::string TextOf(std::int64_t characters) {
    std::string text;
    for (std::int64_t length = 0; length < characters; length += 45) text += kSentence;
    return text;
}

class Service {
  public:
    Service() {
        std::string name = (std::filesystem::temp_directory_path() / "voice-bench-XXXXXX").string();
        folder_ = mkdtemp(name.data());
        gateway::Options options;
        options.resources = SAY_FOLDER;
        options.temporaryFolder = [this] { return folder_; };
        gateway_ = std::make_unique<gateway::Gateway>(std::move(options));
    }
    ~Service() {
        gateway_.reset();
        std::filesystem::remove_all(folder_);
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    void Speak(benchmark::State& state, const std::string& text) {
        const std::string address = "http://" + gateway_->Host() + "/voice_neo/vsdemo.aspx";
        const std::string form = studio::EncodeForm({address,
                                                     {{"__VIEWSTATE", "a"},
                                                      {"__EVENTVALIDATION", "b"},
                                                      {"RadioButton1", "Kyoko"},
                                                      {"WriteText", text},
                                                      {"SpeedText", "1.0"},
                                                      {"PlayButton.x", "400"},
                                                      {"PlayButton.y", "25"}}});
        studio::PageClient client{std::stop_token()};
        const auto begin = Time::now();
        const std::string page = client.Post(address, form, 1u << 20);
        const auto answered = Time::now();
        const std::string sound = client.Get(studio::Resolve(address, studio::FindSound(page)), 64u << 20);
        const auto heard = Time::now();
        state.SetIterationTime(std::chrono::duration<double>(heard - begin).count());
        page_ += std::chrono::duration<double, std::milli>(answered - begin).count();
        state.counters["page_ms"] = benchmark::Counter(page_, benchmark::Counter::kAvgIterations);
        state.counters["speech_s"] = static_cast<double>(sound.size()) / 44100;
    }

  private:
    std::filesystem::path folder_;
    std::unique_ptr<gateway::Gateway> gateway_;
    double page_ = 0;
};

void FirstSound(benchmark::State& state) {
    for (auto unused : state) Service().Speak(state, TextOf(state.range(0)));
}

void LaterSound(benchmark::State& state) {
    Service service;
    for (auto unused : state) service.Speak(state, TextOf(state.range(0)));
}

BENCHMARK(FirstSound)->Arg(45)->Arg(225)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(LaterSound)
    ->Arg(45)
    ->Arg(225)
    ->Arg(1980)
    ->Iterations(10)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
