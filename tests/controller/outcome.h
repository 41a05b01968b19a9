#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

#include "controller/ipod_controller.h"
#include "support/message_bytes.h"

namespace ipodctl {

/// A value that an operation gives out: a number or a text.
using Output = std::variant<uint32_t, std::string>;
using Outputs = std::vector<Output>;

/// What an operation returned and what its outputs held then.
struct Outcome {
  bool result;
  Outputs outputs;
};

inline bool operator==(const Outcome& left, const Outcome& right) {
  return left.result == right.result && left.outputs == right.outputs;
}

inline void PrintTo(const Outcome& outcome, std::ostream* stream) {
  *stream << (outcome.result ? "true" : "false") << ' ' << testing::PrintToString(outcome.outputs);
}

/// The value that an output holds before the operation; `odd` chooses one of two, so that no output
/// can seem untouched or filled by chance.
template <class Number>
struct Before {
  static Number value(bool odd) { return static_cast<Number>(odd ? 0x5AA5A55Au : 0xA55A5AA5u); }
  static Output output(Number number) { return static_cast<uint32_t>(number); }
};
template <>
struct Before<ByteString> {
  static ByteString value(bool odd) { return byteString(odd ? "odd" : "even"); }
  static Output output(const ByteString& text) { return textOf(text); }
};

/// Runs a call and returns what it returned; a test may do something before and after it.
using Around = std::function<bool(const std::function<bool()>& call)>;

inline bool directly(const std::function<bool()>& call) { return call(); }

/// Calls an operation with outputs that hold their values from before.
struct Operation {
  std::function<Outcome(IpodController&, bool odd, const Around&)> body;

  Outcome operator()(IpodController& controller, bool odd, const Around& around = directly) const {
    return body(controller, odd, around);
  }
};

template <class... Values>
Outputs outputsOf(const std::tuple<Values...>& values) {
  return std::apply([](const Values&... each) { return Outputs{Before<Values>::output(each)...}; },
                    values);
}

template <class... Values>
std::tuple<Values...> valuesBefore([[maybe_unused]] bool odd) {
  return {Before<Values>::value(odd)...};
}

template <class... Values>
Operation withOutputs(std::function<bool(IpodController&, Values&...)> call) {
  return {[call](IpodController& controller, bool odd, const Around& around) {
    std::tuple<Values...> values = valuesBefore<Values...>(odd);
    const bool result = around([&] {
      return std::apply([&](Values&... each) { return call(controller, each...); }, values);
    });
    return Outcome{result, outputsOf(values)};
  }};
}

/// What the outputs of an operation hold when it fails: what they held before.
template <class... Values>
Outputs untouchedOutputs(bool odd) {
  return outputsOf(valuesBefore<Values...>(odd));
}

}  // namespace ipodctl
