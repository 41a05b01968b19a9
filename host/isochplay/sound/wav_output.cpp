#include "wav_output.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "complaint.h"
#include "coredll/descriptor.h"
#include "resampler.h"

namespace isochplay {
namespace {

/// The name of the program in the file, which marks a file that may be overwritten.
constexpr char kMark[] = "ipodctl";

/// A WAV file has lengths of 32 bits; this leaves room for its head.
constexpr uint64_t kMostFrames = 0xFFFF0000u / sizeof(Frame);

class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Closes the file.
struct Closer {
  void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, Closer>;

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
  throw FileError("cannot write " + path + ": " + why);
}

std::string lastError() { return std::generic_category().message(errno); }

SoundFile openedAt(int file, int mode, SF_INFO& info) {
  lseek(file, 0, SEEK_SET);
  return SoundFile(sf_open_fd(file, mode, &info, SF_FALSE));
}

bool hasMark(int file) {
  SF_INFO info = {};
  const SoundFile sound = openedAt(file, SFM_READ, info);
  const char* const software = sound ? sf_get_string(sound.get(), SF_STR_SOFTWARE) : nullptr;
  return software != nullptr && std::strncmp(software, kMark, sizeof kMark - 1) == 0;
}

/// Makes the opened file empty.
void prepare(int file, const std::string& path) {
  if (file < 0) refuse(path, lastError() + "; name a file that you may write");
  struct stat status = {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    refuse(path, "it is not a regular file; name another one");
  }
  if (flock(file, LOCK_EX | LOCK_NB) != 0) {
    refuse(path, "another program writes it; name another file, or end that program");
  }
  if (status.st_size != 0 && !hasMark(file)) {
    refuse(path, "it is there and was not recorded by this library; name another file");
  }
  if (ftruncate(file, 0) != 0) refuse(path, lastError() + "; name another file");
}

/// The file and what is written to it. The constructor throws FileError.
class WavFile {
 public:
  WavFile(const std::string& name, int rate)
      : path(name),
        file(open(name.c_str(), O_RDWR | O_CREAT | O_NOCTTY | O_NONBLOCK | O_CLOEXEC, 0600)),
        resampler(rate) {
    prepare(file.get(), path);
    SF_INFO info = {};
    info.samplerate = rate;
    info.channels = kChannels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    sound = openedAt(file.get(), SFM_WRITE, info);
    if (!sound) refuse(path, sf_strerror(nullptr) + std::string("; name another file"));
    sf_set_string(sound.get(), SF_STR_SOFTWARE, kMark);
    complete();
  }

  void write(int rate, const Frames& frames) { append(resampler.convert(rate, frames)); }
  void writeRest() { append(resampler.rest()); }
  /// Writes the lengths in the head.
  void complete() { sf_command(sound.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0); }

 private:
  void append(const Frames& frames) {
    if (frames.empty()) return;
    const auto count = static_cast<sf_count_t>(frames.size());
    if (written + frames.size() > kMostFrames) refuse(path, "a WAV file cannot be longer");
    errno = 0;
    const sf_count_t done = sf_writef_short(sound.get(), &frames.front().left, count);
    written += static_cast<uint64_t>(done);
    if (done == count) return;
    const std::string why = errno != 0 ? lastError() : "not everything can be written";
    refuse(path, why + "; make room or name another file, and start again");
  }

  const std::string path;
  const coredll::Descriptor file;
  Resampler resampler;
  SoundFile sound;
  uint64_t written = 0;  ///< frames
};

class WavOutput final : public Output {
 public:
  explicit WavOutput(std::string name) : path(std::move(name)) {}

  void start(int rate) override {
    attempt([&] {
      if (!wav) wav.emplace(path, rate);
    });
  }
  void play(int rate, const Frames& frames) override {
    attempt([&] {
      if (wav) wav->write(rate, frames);
    });
  }
  void stop() override {
    attempt([&] {
      if (wav) wav->writeRest();
    });
    pause();
  }
  void pause() override {
    if (wav) wav->complete();
  }

 private:
  template <typename Work>
  void attempt(Work work) {
    if (hasFailed) return;
    try {
      work();
    } catch (const FileError& error) {
      hasFailed = true;
      complainOnce(error.what());
    }
  }

  const std::string path;
  std::optional<WavFile> wav;
  bool hasFailed = false;
};

}  // namespace

std::unique_ptr<Output> makeWavOutput(const std::string& path) {
  return std::make_unique<WavOutput>(path);
}

}  // namespace isochplay
