#pragma once

#include <functional>
#include <map>
#include <string>

#include "controller/ipod_controller.h"
#include "virtual/host.h"

namespace virtual_session {

/// What an operation wrote to its references.
class Said final : public Output {
 public:
  bool isIntact() const override { return true; }
  bool isFull() const override { return false; }
  std::string words() const override { return text; }

  void say(const ipodctl::ByteString& said) {
    text.clear();
    append(said);
  }
  void say(const ipodctl::ImageLimits& said) {
    text = std::to_string(said.width) + "x" + std::to_string(said.height);
  }
  /// In the order of their indexes: a late one arrives last.
  void say(const ipodctl::RecordList& said) {
    std::map<uint32_t, const ipodctl::ByteString*> names;
    for (const ipodctl::RecordEntry& entry : said)
      names[entry.index] = &entry.name;
    text.clear();
    for (const auto& [index, name] : names)
      append(*name);
  }
  template <class Value>
  void say(Value said) {
    text = std::to_string(static_cast<uint32_t>(said));
  }

 private:
  void append(const ipodctl::ByteString& said) {
    for (uint32_t i = 0; i < said.size(); ++i)
      text += exports::wordsOf(static_cast<unsigned char>(said[i]));
  }

  std::string text = kNothing;
};

/// A host of the controller. The controller and its link live as long as the program.
class SerialHost {
 public:
  explicit SerialHost(Host& caller) : host(caller) {}

  /// Makes the controller if there is none yet.
  static void prepare() { controller(); }

  void act(const char* name, const std::function<bool(ipodctl::IpodController&)>& operation) {
    host.call(name, [&] { return operation(controller()) ? 1 : 0; });
  }

  template <class Value>
  void ask(const char* name,
           const std::function<bool(ipodctl::IpodController&, Value&)>& operation) {
    Said said;
    const auto asked = [&] {
      Value value{};
      Said before;
      before.say(value);
      const bool success = operation(controller(), value);
      Said after;
      after.say(value);
      if (success || after.words() != before.words()) said = after;
      return success ? 1 : 0;
    };
    host.call(name, asked, {&said});
  }

 private:
  static ipodctl::IpodController& controller() {
    static ipodctl::IpodController one(ipodctl::kSerialLink);
    return one;
  }

  Host& host;
};

}  // namespace virtual_session
