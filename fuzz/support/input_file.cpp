#include "support/input_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include "support/require.h"

InputFile::InputFile()
    : descriptor(memfd_create("input", MFD_CLOEXEC)),
      name("/proc/self/fd/" + std::to_string(descriptor)) {
  require(descriptor >= 0, "no file in memory");
}

InputFile::~InputFile() { close(descriptor); }

void InputFile::write(const uint8_t* bytes, size_t size) const {
  const bool isWritten = ftruncate(descriptor, 0) == 0 &&
                         pwrite(descriptor, bytes, size, 0) == static_cast<ssize_t>(size);
  require(isWritten, "no room in memory");
}
