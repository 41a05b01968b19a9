#include "complaint.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
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

/// Returns the text without characters that a terminal obeys.
std::string printable(std::string text) {
  constexpr char kDelete = 0x7f;
  for (char& one : text) {
    if (static_cast<unsigned char>(one) < ' ' || one == kDelete) one = '?';
  }
  return text;
}

/// Writes the line in one call, so that other lines are not mixed into it.
void writeLine(const std::string& text) {
  const std::string line = "ipodctl: " + printable(text) + "\n";
  std::fflush(stdout);
  std::string_view rest = line;
  while (!rest.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
    if (written <= 0) return;
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

bool isDebugging() {
  const char* const variable = std::getenv("IPODCTL_DEBUG");
  return variable != nullptr && *variable != 0 && std::string_view(variable) != "0";
}

void sayLine(const std::string& text) noexcept {
  try {
    writeLine(text);
  } catch (const std::exception&) {
    // Without memory there is no line.
  }
}

void complainOnce(const std::string& text) noexcept {
  try {
    if (isNew(text)) writeLine(text);
  } catch (const std::exception&) {
    // Without memory there is no line.
  }
}

}  // namespace coredll
