// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Another program that a test needs beside it: a server, a recorder.
#pragma once

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sorakaze::test {

/// A program that ends with its scope, and with the thread that made it.
class Program {
  public:
    enum class User {
        Own,
        Nobody,  ///< in place of root, for programs that refuse to work as root
    };
    enum class Errors { Dropped, WithOutput };

    static constexpr uid_t kNobody = 65534;

    Program(const std::vector<std::string>& line, const std::filesystem::path& output,
            Errors errors = Errors::Dropped, User user = User::Own) {
        std::vector<char*> arguments;
        for (const auto& word : line) arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        const std::string path = output;
        pid_ = fork();
        if (pid_ != 0) return;
        dup2(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), STDOUT_FILENO);
        if (errors == Errors::WithOutput)
            dup2(STDOUT_FILENO, STDERR_FILENO);
        else
            dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
        if (user == User::Nobody && geteuid() == 0 &&
            (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0))
            _exit(126);
        // A change of user would clear it.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    ~Program() {
        if (!Ended()) {
            Signal(SIGKILL);
            Wait();
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t Id() const { return pid_; }
    void Signal(int number) const { kill(pid_, number); }

    bool Ended() {
        if (!status_) Collect(WNOHANG);
        return status_.has_value();
    }
    /// Its exit status, or 128 and the signal that ended it.
    int Wait() {
        while (!status_) Collect(0);
        return WIFEXITED(*status_) ? WEXITSTATUS(*status_) : 128 + WTERMSIG(*status_);
    }
    /// The most memory that it ever held. Known when it has ended.
    std::size_t PeakBytes() const { return static_cast<std::size_t>(usage_.ru_maxrss) * 1024; }

  private:
    void Collect(int options) {
        int status = 0;
        if (wait4(pid_, &status, options, &usage_) == pid_) status_ = status;
    }

    pid_t pid_;
    std::optional<int> status_;
    rusage usage_{};
};

}  // namespace sorakaze::test
