#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "session.h"

namespace {

constexpr char kUsage[] =
    "headunit - a head unit without a screen: one whole session with the iPod on \"IPD1:\"\n"
    "\n"
    "usage: headunit [--help | --version]\n"
    "\n"
    "On a Linux host an environment variable says where the device is:\n"
    "  IPODCTL_DEVICES=\"IPD1:=/path/of/a/tty\" headunit\n"
    "Without it, the simulated iPod is used that ipodsim has put at /tmp/ipod.\n"
    "The logo is read from logo_zel.bmp in the current directory.\n"
    "\n"
    "Exit status:\n"
    "  0  the session ran to its end\n"
    "  1  no iPod could be connected, or the iPod was lost on the way\n"
    "  2  wrong usage\n"
    "  3  the session ran to its end, but the iPod did not answer everything\n";

constexpr int kWrongUsage = 2;

bool isArgument(const char* argument, const char* name) { return std::strcmp(argument, name) == 0; }

int refuse(const char* argument) {
  std::fprintf(stderr, "headunit: unknown argument: %s\n\n%s", argument, kUsage);
  return kWrongUsage;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && isArgument(argv[1], "--help")) {
    std::fputs(kUsage, stdout);
    return EXIT_SUCCESS;
  }
  if (argc == 2 && isArgument(argv[1], "--version")) {
    std::puts("headunit " HEADUNIT_VERSION);
    return EXIT_SUCCESS;
  }
  if (argc > 1) return refuse(argv[1]);
  // Keeps the order of these lines and those of the audio library on stderr, also in a pipe.
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  return static_cast<int>(runSession());
}
