#include "link/ipod_link.h"

#include <sys/stat.h>

#include <system_error>
#include <tuple>

namespace simulator {

namespace {

namespace fs = std::filesystem;

constexpr char kWhat[] = "link";
constexpr char kTerminals[] = "/dev/pts";

[[noreturn]] void refuse(const fs::path& link, const std::string& why) {
  refusePath(kWhat, link, why);
}

/// Returns a time as numbers that can be compared.
std::tuple<time_t, long> momentOf(const timespec& time) { return {time.tv_sec, time.tv_nsec}; }

}  // namespace

void IpodLink::claim() {
  if (!file.empty()) claimed = claimPath(kWhat, file);
}

/// Makes the link. If two processes make it at the same time, one of them finds the other's link.
void IpodLink::leadTo(const std::string& slave) const {
  if (file.empty()) return;
  removeStale(slave);
  std::error_code error;
  fs::create_symlink(slave, file, error);
  if (error) refuse(file, error.message() + "; use another link");
}

void IpodLink::removeFrom(const std::string& slave) const {
  std::error_code ignored;
  if (file.empty() || fs::read_symlink(file, ignored) != slave) return;
  fs::remove(file, ignored);
}

void IpodLink::removeStale(const std::string& slave) const {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(file, error);
  if (!fs::exists(status)) return;
  if (!fs::is_symlink(status)) refuse(file, "there is a file of this name; use another link");
  const fs::path target = fs::read_symlink(file, error);
  if (target.parent_path() != kTerminals) {
    refuse(file,
           "it is there and leads to " + target.string() + "; remove it, or use another link");
  }
  if (target != slave && isServed(target)) {
    refuse(file, "it is there and leads to " + target.string() +
                     ", which another program serves; end that program, or use another link");
  }
  fs::remove(file, error);
  if (error) refuse(file, error.message() + "; use another link");
}

/// Returns whether the process that made the link may still run. A terminal that is younger than
/// the link belongs to another process, which got the same number.
bool IpodLink::isServed(const fs::path& slave) const {
  struct stat terminal;
  struct stat link;
  if (stat(slave.c_str(), &terminal) != 0 || lstat(file.c_str(), &link) != 0) return false;
  return momentOf(terminal.st_ctim) <= momentOf(link.st_mtim);
}

}  // namespace simulator
