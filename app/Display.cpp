// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Display.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace sorakaze {
namespace {

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// True if something listens at the socket. A name that begins with NUL is an abstract one.
bool Answers(const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, name.data(), name.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) return true;
    const std::size_t size = offsetof(sockaddr_un, sun_path) + name.size() + (name[0] == '\0' ? 0 : 1);
    const bool answers =
        connect(descriptor, reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(size)) == 0;
    close(descriptor);
    return answers;
}

bool WaylandAnswers(const std::string& display) {
    return Answers(display[0] == '/' ? display : Environment("XDG_RUNTIME_DIR") + "/" + display);
}

/// Only ":0", ":0.0" and "unix:0" are on this machine.
bool XAnswers(const std::string& display) {
    const auto colon = display.find(':');
    const std::string host = display.substr(0, colon);
    if (colon == std::string::npos || (!host.empty() && host != "unix")) return true;
    const auto digits = display.find_first_not_of("0123456789", colon + 1);
    const std::string path = "/tmp/.X11-unix/X" + display.substr(colon + 1, digits - colon - 1);
    return Answers(path) || Answers(std::string(1, '\0') + path);
}

}  // namespace

std::string WhyNoDisplay() {
    if (!Environment("QT_QPA_PLATFORM").empty()) return {};
    const std::string wayland = Environment("WAYLAND_DISPLAY");
    const std::string x = Environment("DISPLAY");
    if (wayland.empty() && x.empty()) return "there is no display";
    if ((!wayland.empty() && WaylandAnswers(wayland)) || (!x.empty() && XAnswers(x))) return {};
    return "the display " + (x.empty() ? wayland : x) + " does not answer";
}

}  // namespace sorakaze
