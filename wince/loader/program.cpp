// Runs a program of Windows CE for ARM: run_image PROGRAM.exe
//
// The DLLs that it imports are those in its folder; the functions of coredll are those of the Linux
// host. The device is that of IPODCTL_DEVICES.
#include <cstdio>

#include "loader/image.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: run_image PROGRAM.exe\n");
    return 2;
  }
  loader::Image image(loader::Image::Kind::kProgram);
  const loader::Problem problem = image.load(argv[1]);
  if (!problem.empty()) {
    std::fprintf(stderr, "the program cannot be run: %s\n", problem.c_str());
    return 1;
  }
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  image.run();
  return 1;  // a program of the device ends itself
}
