// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <csignal>

namespace sorakaze::speech {

/// For as long as it lives, signals wait in the calling thread. A thread that is started meanwhile lets none
/// through for good: what the process is sent then comes to those that are older.
class SignalsWait {
  public:
    SignalsWait() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    ~SignalsWait() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsWait(const SignalsWait&) = delete;
    SignalsWait& operator=(const SignalsWait&) = delete;

  private:
    sigset_t before_;
};

}  // namespace sorakaze::speech
