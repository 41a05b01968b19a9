// Keeps the signals of the program away from the threads of a library.
#pragma once

#include <pthread.h>

#include <csignal>

/// Blocks every signal of this thread, and with it of the threads that it makes: a signal for the
/// program is for its own threads, and a file that is too large for a limit must not end it.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }

 private:
  sigset_t before = {};
};
