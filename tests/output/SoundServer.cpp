// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/output/SoundServer.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace sorakaze::output::testing {

using namespace sound::testing;

bool SoundServer::IsInstalled() {
    const auto exists = [](const char* file) { return access(file, X_OK) == 0; };
    return exists("/usr/bin/pulseaudio") && exists("/usr/bin/parec");
}

SoundServer::SoundServer() : socket_(folder_ / "native") {
    const std::pair<const char*, std::string> variables[] = {{"SDL_AUDIODRIVER", "pulseaudio"},
                                                             {"PULSE_SERVER", "unix:" + socket_},
                                                             {"HOME", folder_.Path()},
                                                             {"XDG_RUNTIME_DIR", folder_.Path()},
                                                             {"PULSE_RUNTIME_PATH", folder_.Path()}};
    for (const auto& [name, value] : variables)
        environment_.push_back(std::make_unique<Variable>(name, value));
}

bool SoundServer::Start() {
    program_ = std::make_unique<test::Program>(
        std::vector<std::string>{"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                                 "--use-pid-file=no", "-L", "module-null-sink sink_name=test", "-L",
                                 "module-native-protocol-unix auth-anonymous=1 socket=" + socket_},
        folder_ / "server.log");
    return Eventually([&] {
        sockaddr_un address{AF_UNIX, {}};
        std::strncpy(address.sun_path, socket_.c_str(), sizeof(address.sun_path) - 1);
        const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool there = connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
        close(probe);
        return there;
    });
}

void SoundServer::Freeze() const {
    program_->Signal(SIGSTOP);
}

void SoundServer::Thaw() const {
    program_->Signal(SIGCONT);
}

Samples SoundServer::Hear() {
    const auto recording = folder_ / "recording.raw";
    const test::Program recorder({"parec", "--device=test.monitor", "--raw", "--format=float32le",
                                  "--rate=48000", "--channels=2", "--latency-msec=50"},
                                 recording);
    Samples found;
    Eventually([&] {
        const Samples left = Channel(ReadSamples(recording), 0);
        const auto begin =
            std::find_if(left.begin(), left.end(), [](float sample) { return std::fabs(sample) > 0.1f; });
        // The first tenth of a second may hold the swell.
        if (left.end() - begin < 4800 + 24000) return false;
        found.assign(begin + 4800, begin + 4800 + 24000);
        return true;
    });
    return found;
}

}  // namespace sorakaze::output::testing
