#include "ipodctl/client/serve_address.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "link/file_descriptor.h"

namespace tool {
namespace {

using simulator::FileDescriptor;

constexpr mode_t kOthers = 0077;
constexpr size_t kLargestFile = 4096;
constexpr char kScheme[] = "http://";

std::string runtimeFolderOfUser() {
  const char* const folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder != nullptr && *folder == '/') return std::string(folder) + "/ipodctl";
  return "/tmp/ipodctl-" + std::to_string(geteuid());
}

[[noreturn]] void refuse(const std::string& file, const std::string& why) {
  throw std::runtime_error("cannot use " + file + ": " + why);
}

/// What is checked is what is read: the name can mean another file a moment later.
void requireOwn(const FileDescriptor& opened, const std::string& name) {
  struct stat status = {};
  if (fstat(opened.get(), &status) != 0) refuse(name, std::strerror(errno));
  if (status.st_uid != geteuid()) refuse(name, "it belongs to another user; remove it");
  if ((status.st_mode & kOthers) != 0) refuse(name, "others may use it; take their rights away");
}

std::string contentOf(const FileDescriptor& file, const std::string& name) {
  std::string text(kLargestFile, '\0');
  const ssize_t size = read(file.get(), text.data(), text.size());
  if (size < 0) refuse(name, std::strerror(errno));
  text.resize(static_cast<size_t>(size));
  return text;
}

bool isRunning(int process) { return process > 0 && (kill(process, 0) == 0 || errno == EPERM); }

/// No value when the process of the file has ended.
std::optional<ServeAddress> addressIn(const std::string& text, const std::string& name) {
  const auto document = nlohmann::json::parse(text, nullptr, false);
  if (!document.is_object()) refuse(name, "it is damaged; start ipodctl serve again");
  const auto textOf = [&](const char* key) {
    const auto found = document.find(key);
    return found != document.end() && found->is_string() ? found->get<std::string>() : "";
  };
  const auto process = document.find("pid");
  if (process == document.end() || !process->is_number_integer()) return std::nullopt;
  if (!isRunning(process->get<int>())) return std::nullopt;
  return ServeAddress{textOf("url"), textOf("token")};
}

}  // namespace

std::optional<ServeAddress> findServe() {
  const std::string folder = runtimeFolderOfUser();
  const std::string name = folder + "/serve.json";
  const FileDescriptor opened(
      open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!opened) return std::nullopt;
  const FileDescriptor file(
      openat(opened.get(), "serve.json", O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file) return std::nullopt;
  requireOwn(opened, folder);
  requireOwn(file, name);
  return addressIn(contentOf(file, name), name);
}

ServeAddress serveAt(const std::string& url, const std::string& tokenFile) {
  if (url.compare(0, sizeof kScheme - 1, kScheme) != 0) {
    throw std::runtime_error("--url wants an address such as http://127.0.0.1:8730");
  }
  if (tokenFile.empty()) throw std::runtime_error("--url needs --token-file with serve's token");
  const FileDescriptor file(open(tokenFile.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!file) refuse(tokenFile, std::strerror(errno));
  std::string token = contentOf(file, tokenFile);
  token.erase(token.find_last_not_of(" \r\n\t") + 1);
  if (token.empty() || token.find_first_of("\r\n") != std::string::npos) {
    refuse(tokenFile, "it must have the token in one line");
  }
  return {url.substr(0, url.find_last_not_of('/') + 1), token};
}

}  // namespace tool
