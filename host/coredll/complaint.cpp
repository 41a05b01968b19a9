#include "complaint.h"

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <mutex>
#include <set>
#include <string_view>

namespace coredll {
namespace {

/// A program that opens one device after another does not fill the memory with texts.
constexpr std::size_t kMostTexts = 1000;

/// Returns whether the text is new. Never destroyed: threads may still complain while the process
/// ends.
bool isNew(const std::string& text) {
  static auto& mutex = *new std::mutex;
  static auto& written = *new std::set<std::string>;
  const std::lock_guard lock(mutex);
  return written.size() < kMostTexts && written.insert(text).second;
}

/// Writes the line in one call, so that other lines are not mixed into it.
void writeLine(const std::string& line) {
  std::fflush(stdout);
  std::string_view rest = line;
  while (!rest.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
    if (written <= 0) return;
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

void complainOnce(const std::string& text) noexcept {
  try {
    if (isNew(text)) writeLine("ipodctl: " + text + "\n");
  } catch (const std::exception&) {
    // Without memory there is no line.
  }
}

}  // namespace coredll
