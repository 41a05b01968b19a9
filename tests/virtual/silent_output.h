#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace virtual_session {

/// Hides what is printed while it lives.
class SilentOutput {
 public:
  SilentOutput() : before(moveOutput()) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
  }
  ~SilentOutput() {
    std::fflush(stdout);
    dup2(before, STDOUT_FILENO);
    close(before);
  }
  SilentOutput(const SilentOutput&) = delete;
  SilentOutput& operator=(const SilentOutput&) = delete;

 private:
  static int moveOutput() {
    std::fflush(stdout);
    return dup(STDOUT_FILENO);
  }

  const int before;
};

}  // namespace virtual_session
