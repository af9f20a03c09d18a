// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// sorakaze-decoder: reads foreign sound files for the application, which starts it and talks with it over its
// standard input.
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>

#include "decoder/ForkServer.h"
#include "decoder/Sandbox.h"
#include "decoder/WarmUp.h"

#ifdef __SANITIZE_ADDRESS__
/// A crash within a library ends a worker as it does without the sanitizer; what the sanitizer itself finds
/// is a fault of ours and has a status of its own, which no test lets pass.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer's own name
extern "C" const char* __asan_default_options() {
    return "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_abort=0:allocator_may_return_null=1:"
           "detect_leaks=0:exitcode=99";
}
#endif

int main() {
    int type = 0;
    socklen_t size = sizeof type;
    if (::getsockopt(STDIN_FILENO, SOL_SOCKET, SO_TYPE, &type, &size) != 0 || type != SOCK_SEQPACKET) {
        std::fputs(
            "sorakaze-decoder is started by Sorakaze and sorakaze-studio; it does nothing by itself.\n",
            stderr);
        return 2;
    }
    sorakaze::decoder::SandboxForkServer();
    sorakaze::decoder::WarmUp();
    // At once: there is nothing that outlives the process.
    ::_exit(sorakaze::decoder::RunForkServer(STDIN_FILENO));
}
