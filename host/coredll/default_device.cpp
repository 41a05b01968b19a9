#include "default_device.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

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

/// A pseudo-terminal that is younger than the link has only the number of the one that the link was
/// made for. It can be the terminal of a shell.
bool isOlder(const struct stat& terminal, const struct stat& link) {
  const auto moment = [](const timespec& time) { return std::pair(time.tv_sec, time.tv_nsec); };
  return moment(terminal.st_ctim) <= moment(link.st_mtim);
}

std::string targetOf(const std::string& link) {
  char target[PATH_MAX];
  const ssize_t size = readlink(link.c_str(), target, sizeof target);
  return size > 0 ? std::string(target, static_cast<size_t>(size)) : "";
}

}  // namespace

std::string defaultTerminal(const std::string& link) {
  struct stat ofLink = {};
  if (lstat(link.c_str(), &ofLink) != 0) refuse("there is no " + link);
  if (!S_ISLNK(ofLink.st_mode)) refuse(link + " is not a link");
  if (!isOfThisUser(ofLink)) refuse(link + " belongs to another user");
  std::string target = targetOf(link);
  struct stat status = {};
  // The target is not followed if it is a link again.
  if (lstat(target.c_str(), &status) != 0) refuse(link + " leads to nothing");
  const bool isUsable = S_ISCHR(status.st_mode) && isPseudoTerminal(status);
  if (!isUsable) refuse(link + " does not lead to a pseudo-terminal");
  if (!isOfThisUser(status)) refuse(target + " belongs to another user");
  if (!isOlder(status, ofLink)) refuse(link + " is left from an ipodsim that has ended");
  return target;
}

}  // namespace coredll
