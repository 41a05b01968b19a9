#include "default_device.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include "open_failure.h"
#include "terminal.h"

namespace coredll {
namespace {

[[noreturn]] void refuse(const std::string& why) {
  throw OpenFailure(ERROR_FILE_NOT_FOUND, "is not in IPODCTL_DEVICES, and " + why +
                                              "; start ipodsim, or set "
                                              "IPODCTL_DEVICES=IPD1:=PATH");
}

bool isOfThisUser(const struct stat& status) { return status.st_uid == geteuid(); }

std::string targetOf(const std::string& link) {
  char target[PATH_MAX];
  const ssize_t size = readlink(link.c_str(), target, sizeof target);
  return size > 0 ? std::string(target, static_cast<size_t>(size)) : "";
}

}  // namespace

std::string defaultTerminal(const std::string& link) {
  struct stat status = {};
  if (lstat(link.c_str(), &status) != 0) refuse("there is no " + link);
  if (!S_ISLNK(status.st_mode)) refuse(link + " is not a link");
  if (!isOfThisUser(status)) refuse(link + " belongs to another user");
  const std::string target = targetOf(link);
  // No link inside: the status is that of the target itself.
  if (lstat(target.c_str(), &status) != 0) refuse(link + " leads to nothing");
  const bool isUsable = S_ISCHR(status.st_mode) && isPseudoTerminal(status);
  if (!isUsable) refuse(link + " does not lead to a pseudo-terminal");
  if (!isOfThisUser(status)) refuse(target + " belongs to another user");
  return target;
}

}  // namespace coredll
