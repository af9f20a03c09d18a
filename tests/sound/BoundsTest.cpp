// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a file may cost its decoder, where no sanitizer adds to that.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/RegularFile.h"
#include "decoder/Sandbox.h"
#include "decoder/Worker.h"
#include "sound/DecodedSound.h"
#include "sound/DecoderProtocol.h"
#include "tests/sound/HostileFiles.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

constexpr std::uint64_t kMemory = 40u << 20;
constexpr long kMostKilobytes = 64 << 10;

struct Cost {
    bool answered;   ///< with a sound
    bool crashed;    ///< not by a bound
    long kilobytes;  ///< resident, at most
};

/// Does the job in a process of its own, as the program does.
Cost CostOf(JobKind kind, const std::filesystem::path& file) {
    int ends[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    const FileDescriptor ours(ends[0]);
    FileDescriptor theirs(ends[1]);
    const SharedMemory ring;
    auto opened = OpenNonEmptyFile(file);
    const pid_t worker = ::fork();
    if (worker == 0) {
        JobRequest request{kind, 1, kMemory, ring.Capacity(), {}, kLongestMeasurement.count, {}};
        file.filename().string().copy(request.name, sizeof request.name - 1);
        decoder::SandboxForkServer();
        ::_exit(decoder::Work(
            {request, std::move(opened->descriptor), std::move(theirs), FileDescriptor(ring.Descriptor())}));
    }
    theirs.Close();
    PlayAnswer answer{};
    ssize_t size = 0;
    do {
        size = ::recv(ours.Get(), &answer, sizeof answer, 0);
    } while (kind == JobKind::MeasureBackground && size == 1);
    ::shutdown(ours.Get(), SHUT_RDWR);
    int status = 0;
    rusage usage{};
    ::wait4(worker, &status, 0, &usage);
    const bool bounded = WIFSIGNALED(status) && (WTERMSIG(status) == SIGPROF || WTERMSIG(status) == SIGXCPU);
    const bool plays = kind == JobKind::Play || kind == JobKind::PlayFast;
    return {size > 0 && (!plays || answer.result == PlayAnswer::Playing), !bounded && WIFSIGNALED(status),
            usage.ru_maxrss};
}

TEST(Bounds, NoFileCostsMoreThanItsShareOfTimeAndMemory) {
    const ScratchFolder folder;
    Encode(folder / "a.flac", Sine(440, 48000, 0.5f), 48000, 2);
    Encode(folder / "a.mp3", Sine(440, 48000, 0.5f), 48000, 2);
    const std::string flac = ReadBytes(folder / "a.flac"), mp3 = ReadBytes(folder / "a.mp3");
    // Files with holes take no room on the disk.
    const auto sparse = [&](const char* name, const std::string& head, std::uintmax_t hole) {
        const auto file = folder.Write(name, head);
        std::filesystem::resize_file(file, head.size() + hole);
        std::ofstream(file, std::ios::binary | std::ios::app) << mp3;
    };
    constexpr std::uint32_t kCover = 250u << 20;
    sparse("cover.mp3",
           std::string("ID3\x03\0\0", 6) + Syncsafe(kCover + 24) + "APIC" + BigEndian(kCover + 14, 4) +
               std::string(2, '\0') + std::string("\0image/png\0\x03\0", 13),
           kCover);
    sparse("junk.mp3", "", 100u << 20);
    folder.Write("chunks.wav", ManyChunks(2'000'000));
    folder.Write("comments.flac", WithComments(flac, 80'000));
    folder.Write("slow.wav", Wav({.rate = 1}, 20'000));
    folder.Write("slowest.wav", Wav({.rate = 100}, 20'000));
    folder.Write("fast.wav", Wav({.rate = 1'280'000'000}, 100));
    folder.Write("wide.wav", Wav({.channels = 64}, 20'000));
    folder.Write("good.flac", flac);
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
        for (const JobKind kind :
             {JobKind::Play, JobKind::PlayFast, JobKind::Tags, JobKind::MeasureBackground}) {
            SCOPED_TRACE(entry.path().filename().string() + ' ' + std::to_string(static_cast<int>(kind)));
            const Cost cost = CostOf(kind, entry.path());
            EXPECT_FALSE(cost.crashed);
            EXPECT_LE(cost.kilobytes, kMostKilobytes);
            // Not everything is refused.
            const bool good = entry.path().filename() == "good.flac";
            EXPECT_TRUE(cost.answered || !good);
        }
    }
}

TEST(Bounds, BackgroundWorkRunsWhenNobodyElseDoes) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    FileDescriptor ours(ends[0]), theirs(ends[1]);
    const pid_t worker = ::fork();
    if (worker == 0) {
        ours.Close();
        decoder::SandboxForkServer();
        decoder::UseIdleTime();
        char word = 'i';
        ::send(theirs.Get(), &word, 1, MSG_NOSIGNAL);
        ::recv(theirs.Get(), &word, 1, 0);
        ::_exit(0);
    }
    theirs.Close();
    char word = 0;
    EXPECT_EQ(::recv(ours.Get(), &word, 1, 0), 1);
    EXPECT_EQ(::sched_getscheduler(worker), SCHED_IDLE);
    ours.Close();
    ::waitpid(worker, nullptr, 0);
}

}  // namespace
}  // namespace sorakaze::sound::testing
