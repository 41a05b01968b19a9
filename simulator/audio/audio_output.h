#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace simulator {

class PtyIpod;

/// The sound of a simulated iPod, made by a separate thread that the iPod never waits for.
class AudioOutput {
 public:
  virtual ~AudioOutput() = default;

  /// Follows what the iPod plays, until its thread has ended. Call it before pty.start().
  virtual void follow(PtyIpod& pty) = 0;
  /// Makes the socket and begins. Does nothing more than to call `complain` with a line for the
  /// user when there can be no socket.
  virtual void start(const std::filesystem::path& socket,
                     const std::function<void(const std::string&)>& complain) = 0;
};

std::unique_ptr<AudioOutput> makeAudioOutput();

/// Returns the path of the socket of an iPod with this link.
inline std::filesystem::path audioSocketOf(const std::filesystem::path& link) {
  return link.native() + ".audio";
}

}  // namespace simulator
