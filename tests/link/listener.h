#pragma once

#include <memory>
#include <string>
#include <vector>

#include "lingo/lingo_message.h"
#include "link/transport.h"

namespace ipodctl {

/// An owner of handlers. Each handler appends the owner's name and its message to `heard`.
struct Listener {
  std::string name;
  std::vector<std::string>& heard;

  static void first(void* object, std::unique_ptr<LingoMessage> message) {
    static_cast<Listener*>(object)->hear("first", *message);
  }
  static void second(void* object, std::unique_ptr<LingoMessage> message) {
    static_cast<Listener*>(object)->hear("second", *message);
  }

 private:
  void hear(const char* handler, const LingoMessage& message) {
    heard.push_back(name + " " + handler + " " + std::to_string(message.getLingo()) + "/" +
                    std::to_string(message.getCommand()) + "/" +
                    std::to_string(message.getDataLength()));
  }
};

}  // namespace ipodctl
