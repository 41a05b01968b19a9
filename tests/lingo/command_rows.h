#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

#include "support/message_bytes.h"
#include "support/row_name.h"

namespace ipodctl {

/// A command that goes to the iPod: how it is built and the bytes that come of it.
template <class Message>
struct BuilderRow : NamedRow {
  std::function<bool(Message&)> build;
  uint16_t command;
  Bytes data;
  Bytes body;
};

template <class Message>
void expectBuilds(const BuilderRow<Message>& row) {
  Message message;
  EXPECT_TRUE(row.build(message));
  EXPECT_EQ(message.getCommand(), row.command);
  EXPECT_EQ(dataOf(message), row.data);
  EXPECT_EQ(bodyOf(message), row.body);
}

/// A decoded field: a number or a text.
using Field = std::variant<uint32_t, std::string>;
using Fields = std::vector<Field>;

struct Decoding {
  bool accepted;
  Fields fields;
};

/// The value that an output holds before decoding; `odd` chooses one of two, so that no output can
/// seem untouched or filled by chance.
template <class Output>
struct Before {
  static Output value(bool odd) { return static_cast<Output>(odd ? 0x5AA5A55Au : 0xA55A5AA5u); }
  static Field field(const Output& output) { return static_cast<uint32_t>(output); }
};
template <>
struct Before<bool> {
  static bool value(bool odd) { return odd; }
  static Field field(bool output) { return static_cast<uint32_t>(output); }
};
template <>
struct Before<ByteString> {
  static ByteString value(bool odd) { return byteString(odd ? "odd" : "even"); }
  static Field field(const ByteString& output) { return textOf(output); }
};

/// Runs a decoder over outputs that hold their values from before.
template <class Message>
using Decoder = std::function<Decoding(const Message&, bool odd)>;

template <class Message, class... Outputs>
Decoder<Message> decoder(bool (Message::*operation)(Outputs&...) const) {
  return [operation](const Message& message, bool odd) {
    std::tuple<Outputs...> outputs{Before<Outputs>::value(odd)...};
    const bool accepted =
        std::apply([&](Outputs&... each) { return (message.*operation)(each...); }, outputs);
    return Decoding{
        accepted,
        std::apply([](const Outputs&... each) { return Fields{Before<Outputs>::field(each)...}; },
                   outputs)};
  };
}

template <class... Outputs>
Fields untouched(bool odd) {
  return {Before<Outputs>::field(Before<Outputs>::value(odd))...};
}

constexpr uint32_t kAnyLength = 65535;

/// A command that comes from the iPod: its data, the fields in them, and which lengths will do.
template <class Message>
struct DecoderRow : NamedRow {
  Decoder<Message> decode;
  std::function<Fields(bool odd)> untouchedFields;
  uint16_t command;
  Bytes data;
  Fields fields;
  uint32_t least;
  uint32_t most;
};

template <class Message, class... Outputs>
DecoderRow<Message> decoderRow(const char* name, bool (Message::*operation)(Outputs&...) const,
                               uint16_t command, Bytes data, Fields fields, uint32_t least,
                               uint32_t most) {
  return {name, decoder(operation), untouched<Outputs...>, command, data, fields, least, most};
}

template <class Message>
void expectDecodes(const DecoderRow<Message>& row) {
  Message message;
  receive(message, row.command, row.data);
  for (const bool odd : {false, true}) {
    const Decoding decoding = row.decode(message, odd);
    EXPECT_TRUE(decoding.accepted);
    EXPECT_EQ(decoding.fields, row.fields);
  }
}

template <class Message>
void expectRefused(const DecoderRow<Message>& row, const Message& message) {
  for (const bool odd : {false, true}) {
    const Decoding decoding = row.decode(message, odd);
    EXPECT_FALSE(decoding.accepted);
    EXPECT_EQ(decoding.fields, row.untouchedFields(odd));
  }
}

/// Every length up to two bytes more than the row's data: refused unless the row allows it.
template <class Message>
void expectLengthsJudged(const DecoderRow<Message>& row) {
  for (uint32_t length = 0; length <= row.data.size() + 2; ++length) {
    SCOPED_TRACE(testing::Message() << length << " data bytes");
    Bytes data = row.data;
    data.resize(length);
    Message message;
    receive(message, row.command, data);
    if (length < row.least || length > row.most)
      expectRefused(row, message);
    else
      EXPECT_TRUE(row.decode(message, false).accepted);
  }
}

template <class Message>
void expectOtherCommandsRefused(const DecoderRow<Message>& row) {
  for (const int other : {row.command - 1, row.command + 1, row.command ^ 0x0100}) {
    SCOPED_TRACE(testing::Message() << "command " << other);
    Message message;
    receive(message, static_cast<uint16_t>(other), row.data);
    expectRefused(row, message);
  }
}

}  // namespace ipodctl
