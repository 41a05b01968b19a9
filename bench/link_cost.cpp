// Does one piece of the link's work COUNT times, for a tool that counts instructions.
//
// usage: link_cost WORK SIZE READ COUNT
//
// WORK is one of link_work.h. SIZE is the payload's size, or the kind of junk. READ is the number
// of bytes that a read of the device delivers. Works without one of them ignore it.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>

#include "link_work.h"

int main(int argc, char** argv) {
  const std::string work = argc == 5 ? argv[1] : "";
  const std::string kind = argc == 5 ? argv[2] : "";
  const auto size = static_cast<uint32_t>(std::strtoul(kind.c_str(), nullptr, 10));
  const auto readSize = static_cast<uint32_t>(argc == 5 ? std::strtoul(argv[3], nullptr, 10) : 0);
  const uint64_t count = argc == 5 ? std::strtoull(argv[4], nullptr, 10) : 0;
  const std::map<std::string, std::function<void()>> works = {
      {"frame", [&] { bench::frame(size, count); }},
      {"send", [&] { bench::send(count); }},
      {"read", [&] { bench::read(size, readSize, count); }},
      {"device", [&] { bench::device(size, readSize, count); }},
      {"path", [&] { bench::path(size, readSize, count); }},
      {"junk", [&] { bench::junk(kind, readSize, count); }},
      {"junk-device", [&] { bench::junkDevice(kind, readSize, count); }},
      {"queue", [&] { bench::queue(count); }},
      {"floor", [&] { bench::copyAndSum(size, count); }},
  };
  const auto found = works.find(work);
  if (found == works.end()) {
    std::fputs("usage: link_cost WORK SIZE READ COUNT (see link_work.h)\n", stderr);
    return 2;
  }
  found->second();
}
