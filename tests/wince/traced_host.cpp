// A host program for the recorder: connects, asks the iPod again and again, disconnects, and waits
// until the recorder has written. Prints the time of its longest request.
//
// usage: traced_host [FILE TEXT]      it waits for the text in the file

#include <ipodctl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int kRequests = 100;
/// A request that takes so long says enough.
constexpr milliseconds kLong{500};
constexpr std::chrono::seconds kPatience{10};

/// Returns the time of the longest request; -1 when one fails.
long long longestRequest() {
  milliseconds longest{0};
  for (int i = 0; i < kRequests && longest < kLong; ++i) {
    const auto begin = steady_clock::now();
    int index = 0;
    if (IpodGetTrackIndex(&index) == 0) return -1;
    longest = std::max(longest, std::chrono::ceil<milliseconds>(steady_clock::now() - begin));
  }
  return longest.count();
}

bool contains(const char* path, const char* wanted) {
  std::ifstream file(path, std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  return text.find(wanted) != std::string::npos;
}

bool await(const char* path, const char* text) {
  for (const auto end = steady_clock::now() + kPatience; steady_clock::now() < end;) {
    if (contains(path, text)) return true;
    std::this_thread::sleep_for(milliseconds(10));
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (IpodConnect() == 1) {
    std::printf("longest request: %lld ms\n", longestRequest());
    IpodDisconnect();
  }
  constexpr int kArguments = 3;
  return argc < kArguments || await(argv[1], argv[2]) ? 0 : 3;
}
