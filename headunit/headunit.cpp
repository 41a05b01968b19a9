#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "session.h"

namespace {

constexpr char kUsage[] =
    "headunit - a head unit without a screen: one whole session with the iPod on \"IPD1:\"\n"
    "\n"
    "usage: headunit [--help]\n"
    "\n"
    "On the desk an environment variable says where the device is:\n"
    "  IPODCTL_DEVICES=\"IPD1:=/path/of/a/tty\" headunit\n"
    "The logo is read from logo_zel.bmp in the current directory.\n"
    "\n"
    "Exit status: 0 the session ran to its end, 1 no iPod, 2 wrong usage.\n";

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    std::fputs(kUsage, stdout);
    return EXIT_SUCCESS;
  }
  if (argc > 1) {
    std::fprintf(stderr, "headunit: unknown argument: %s\n\n%s", argv[1], kUsage);
    return 2;
  }
  // What the audio system says comes in between, also in a pipe.
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  return runSession() ? EXIT_SUCCESS : EXIT_FAILURE;
}
