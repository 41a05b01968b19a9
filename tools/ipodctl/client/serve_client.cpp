#include <string_view>

#include "ipodctl/client/event_parser.h"
#include "ipodctl/client/http_client.h"
#include "ipodctl/client/player_client.h"
#include "ipodctl/commands/exit_status.h"

namespace tool {
namespace {

using nlohmann::json;

int exitStatusOf(const std::string& code) {
  if (code == "no-ipod") return kNoIpod;
  return code == "no-answer" ? kNoAnswer : kFailed;
}

/// A server that is not ours can answer with anything.
[[noreturn]] void refuseAnswer(const HttpAnswer& answer) {
  if (answer.status == 0) throw CommandFailure{kNoServe, "no-serve", answer.body};
  const json document = json::parse(answer.body, nullptr, false);
  const json error = document.is_object() ? document.value("error", json()) : json();
  const auto textOf = [&](const char* key, const std::string& otherwise) {
    const bool isText = error.is_object() && error.contains(key) && error[key].is_string();
    return isText ? error[key].get<std::string>() : otherwise;
  };
  const std::string code = textOf("code", "http-" + std::to_string(answer.status));
  throw CommandFailure{exitStatusOf(code), code,
                       textOf("message", "The server refuses the request; check --url.")};
}

json documentOf(const HttpAnswer& answer) {
  if (answer.status != 200) refuseAnswer(answer);
  json document = json::parse(answer.body, nullptr, false);
  if (document.is_object()) return document;
  throw CommandFailure{kFailed, "bad-answer", "The server is not ipodctl serve; check --url."};
}

/// Characters that have a meaning in an address are escaped.
std::string escaped(const std::string& path) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const char each : path) {
    const auto byte = static_cast<unsigned char>(each);
    const bool isPlain = (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') ||
                         (byte >= 'A' && byte <= 'Z') || each == '/' || each == '-';
    if (isPlain) {
      text += each;
    } else {
      text += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return text;
}

class ServeClient : public PlayerClient {
 public:
  explicit ServeClient(const ServeAddress& address) : client(address) {}

  const char* name() const override { return "serve"; }

  json state() override { return documentOf(client.get("/v1/state")); }

  json list(const std::string& path, uint64_t generation, int offset, int count) override {
    return documentOf(
        client.get("/v1/list/" + escaped(path) + "?generation=" + std::to_string(generation) +
                   "&offset=" + std::to_string(offset) + "&count=" + std::to_string(count)));
  }

  void change(const std::string& path, const json& body) override {
    documentOf(client.post(path, body.dump(-1, ' ', false, json::error_handler_t::replace)));
  }

  void watch(const std::function<bool(const json&)>& take) override {
    EventParser parser;
    bool isWanted = true;
    const auto pass = [&](const std::string& piece) {
      for (const std::string& data : parser.take(piece)) {
        const json document = json::parse(data, nullptr, false);
        if (isWanted && document.is_object()) isWanted = take(document);
      }
      return isWanted;
    };
    const HttpAnswer answer = client.follow("/v1/events?topics=state", pass);
    if (answer.status != 200) refuseAnswer(answer);
    if (isWanted) {
      throw CommandFailure{kFailed, "stream-ended", "ipodctl serve has ended; start it again."};
    }
  }

 private:
  HttpClient client;
};

}  // namespace

std::unique_ptr<PlayerClient> makeServeClient(const ServeAddress& address) {
  return std::make_unique<ServeClient>(address);
}

}  // namespace tool
