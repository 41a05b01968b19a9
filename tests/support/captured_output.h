#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>

namespace program_run {

/// Collects what the process prints on standard output during its lifetime.
class CapturedOutput {
 public:
  CapturedOutput() : before(dup(STDOUT_FILENO)), file(memfd_create("output", MFD_CLOEXEC)) {
    if (before < 0 || file < 0) throw std::runtime_error("no file for the output");
    std::fflush(stdout);
    dup2(file, STDOUT_FILENO);
  }
  ~CapturedOutput() {
    std::fflush(stdout);
    dup2(before, STDOUT_FILENO);
    close(before);
    close(file);
  }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  std::string text() const {
    std::fflush(stdout);
    std::string all(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
    const ssize_t size = pread(file, all.data(), all.size(), 0);
    all.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return all;
  }

 private:
  const int before;
  const int file;
};

}  // namespace program_run
