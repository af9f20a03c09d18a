// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// In place of sorakaze-decoder: what that could do once a file has taken it over. Each job is done the way
// that the name of its file says. Built without sanitizers, since it runs under tight limits.
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <string>

#include "decoder/Job.h"
#include "sound/SharedRing.h"

namespace {

using namespace sorakaze::sound;
using sorakaze::decoder::Job;

constexpr int kChannel = STDIN_FILENO;

class Worker {
  public:
    explicit Worker(const Job& job)
        : socket_(job.socket.Get()),
          capacity_(job.request.ring),
          memory_(
              ::mmap(nullptr, RingBytes(capacity_), PROT_READ | PROT_WRITE, MAP_SHARED, job.ring.Get(), 0)),
          ring_(memory_, capacity_) {}

    RingHeader& Header() { return *static_cast<RingHeader*>(memory_); }
    void Send(const void* bytes, std::size_t size) { ::send(socket_, bytes, size, MSG_NOSIGNAL); }
    void Answer(std::int64_t length) {
        const PlayAnswer answer{PlayAnswer::Playing, 0, length};
        Send(&answer, sizeof answer);
    }
    /// Frames of a level that can be told again.
    void Write(std::size_t frames) {
        const auto room = ring_.Writable().first(frames * kChannels);
        std::fill(room.begin(), room.end(), 0.25f);
        ring_.Commit(frames);
    }
    void Finish() { ring_.Finish(); }
    void HangUp() { ::close(socket_); }

    /// Never the same for long.
    [[noreturn]] void WriteNonsense() {
        RingHeader& header = Header();
        float* const samples = reinterpret_cast<float*>(static_cast<char*>(memory_) + kRingSamplesOffset);
        for (std::uint64_t turn = 1;; turn = turn * 6364136223846793005u + 1) {
            samples[turn >> 33 & 0xFFFF] = std::numeric_limits<float>::quiet_NaN();
            header.written.store(turn >> 40);
            header.finished.store(turn >> 50 & 1);
            header.sleeping.store(1);
        }
    }
    [[noreturn]] void Flood(const char* packet = "word") {
        for (;;) Send(packet, std::strlen(packet));
    }

  private:
    const int socket_;
    const std::uint32_t capacity_;
    void* const memory_;
    RingWriter ring_;
};

[[noreturn]] void Stay() {
    for (;;) ::pause();
}

const std::map<std::string, std::function<void(Worker&)>> kManners = {
    {"good", [](Worker& w) { w.Write(48'000), w.Finish(), w.Answer(48'000); }},
    {"long",
     [](Worker& w) { w.Write(48'000), w.Finish(), w.Answer(std::numeric_limits<std::int64_t>::max()); }},
    {"negative",
     [](Worker& w) { w.Write(48'000), w.Finish(), w.Answer(std::numeric_limits<std::int64_t>::min()); }},
    {"silent", [](Worker&) { Stay(); }},
    {"garbage", [](Worker& w) { w.Send(std::string(150'000, '\xA5').data(), 150'000), Stay(); }},
    {"short", [](Worker& w) { w.Send("abc", 3), Stay(); }},
    {"empty", [](Worker& w) { w.Send("", 0), Stay(); }},
    {"ends", [](Worker&) { ::_exit(0); }},
    {"crashes", [](Worker&) { std::abort(); }},
    {"progress", [](Worker& w) { w.Flood("m"); }},
    {"flood", [](Worker& w) { w.Write(1000), w.Answer(-1), w.Flood(); }},
    {"nonsense", [](Worker& w) { w.Write(1000), w.Answer(-1), w.WriteNonsense(); }},
    {"backwards",
     [](Worker& w) {
         w.Write(9000), w.Answer(-1);
         while (w.Header().read.load() < 8000) ::usleep(100);
         w.Header().written.store(1), w.Finish(), Stay();
     }},
    {"stops", [](Worker& w) { w.Write(1000), w.Answer(-1), Stay(); }},
    {"lets go", [](Worker& w) { w.Write(1000), w.Answer(-1), w.HangUp(), Stay(); }},
    {"lingers", [](Worker& w) { w.Write(1000), w.Finish(), w.Answer(1000), Stay(); }}};

/// Tells of the ends of jobs that there never were, and is in the way of what is said besides.
[[noreturn]] void SendStatuses() {
    for (std::uint32_t number = 0;; number += 977) {
        const JobEnded ended{number, SIGSEGV};
        ::send(kChannel, &ended, number % 3 == 0 ? sizeof ended : 3, MSG_NOSIGNAL);
    }
}

void Begin(const Job& job, std::map<std::uint32_t, pid_t>& workers) {
    const std::string manner = job.request.name;
    if (manner == "program ends") ::_exit(3);
    const pid_t worker = ::fork();
    if (worker == 0) {
        if (manner == "statuses") SendStatuses();
        Worker own(job);
        kManners.at(manner)(own);
        ::_exit(0);
    }
    workers[job.request.number] = worker;
}

}  // namespace

int main() {
    std::signal(SIGCHLD, SIG_IGN);
    std::map<std::uint32_t, pid_t> workers;
    for (;;) {
        Job job;
        if (sorakaze::decoder::ReceiveJob(kChannel, job) <= 0) return 0;
        if (job.request.kind == JobKind::Kill)
            ::kill(workers[job.request.number], SIGKILL);
        else
            Begin(job, workers);
    }
}
