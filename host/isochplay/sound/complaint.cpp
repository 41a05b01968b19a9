#include "complaint.h"

#include <cstdio>
#include <mutex>
#include <set>

namespace isochplay {

void complainOnce(const std::string& text) {
  constexpr std::size_t kMostTexts = 1000;
  // Never destroyed: threads may still complain while the process ends.
  static auto& mutex = *new std::mutex;
  static auto& written = *new std::set<std::string>;
  const std::lock_guard lock(mutex);
  if (written.size() >= kMostTexts || !written.insert(text).second) return;
  std::fflush(stdout);
  std::fprintf(stderr, "ipodctl: IPODCTL_AUDIO: %s\n", text.c_str());
}

}  // namespace isochplay
