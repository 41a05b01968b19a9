#include "ipodctl/client/http_client.h"

#include <httplib.h>

namespace tool {
namespace {

constexpr int kSecondsToConnect = 2;
/// A request can wait for several of the iPod's, each of which takes up to a second.
constexpr int kSecondsToAnswer = 30;
/// The stream has a comment every 10 seconds.
constexpr int kSecondsOfSilence = 25;
constexpr size_t kLargestAnswer = 16u << 20;

void prepare(httplib::Client& client, const std::string& token, int secondsToAnswer) {
  client.set_connection_timeout(kSecondsToConnect);
  client.set_read_timeout(secondsToAnswer);
  client.set_write_timeout(kSecondsToConnect);
  client.set_default_headers({{"Authorization", "Bearer " + token}});
}

HttpAnswer answerOf(const httplib::Result& result, const std::string& url, std::string body) {
  if (result) return {result->status, std::move(body)};
  return {0, "ipodctl serve at " + url + " does not answer (" + httplib::to_string(result.error()) +
                 "); start it again"};
}

}  // namespace

HttpAnswer HttpClient::get(const std::string& path) const {
  std::string body;
  httplib::Client client(address.url);
  prepare(client, address.token, kSecondsToAnswer);
  const auto take = [&](const char* data, size_t size) {
    body.append(data, size);
    return body.size() <= kLargestAnswer;
  };
  const httplib::Result result = client.Get(path, take);
  return answerOf(result, address.url, std::move(body));
}

HttpAnswer HttpClient::post(const std::string& path, const std::string& json) const {
  httplib::Client client(address.url);
  prepare(client, address.token, kSecondsToAnswer);
  const httplib::Result result = client.Post(path, json, "application/json");
  return answerOf(result, address.url, result ? result->body : "");
}

HttpAnswer HttpClient::follow(const std::string& path,
                              const std::function<bool(const std::string&)>& take) const {
  httplib::Client client(address.url);
  prepare(client, address.token, kSecondsOfSilence);
  int status = 0;
  std::string failure;
  const auto begin = [&](const httplib::Response& response) {
    status = response.status;
    return true;
  };
  const auto pass = [&](const char* data, size_t size) {
    if (status == 200) return take(std::string(data, size));
    failure.append(data, size);
    return failure.size() <= kLargestAnswer;
  };
  const httplib::Result result = client.Get(path, begin, pass);
  if (status != 0) return {status, std::move(failure)};
  return answerOf(result, address.url, "");
}

}  // namespace tool
