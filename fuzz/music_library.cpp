// A library file, and an iPod with that library.

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>

#include "database/database.h"
#include "device/simulated_ipod.h"
#include "music/json_library.h"
#include "music/text.h"
#include "support/input_file.h"
#include "support/require.h"

namespace {

using simulator::MusicLibrary;

std::optional<MusicLibrary> load(const InputFile& file) {
  try {
    return simulator::loadJsonLibrary(file.path());
  } catch (const std::runtime_error& error) {
    require(std::string(error.what()).find(file.path()) == 0, "an error without the file's name");
    return std::nullopt;
  }
}

void check(const MusicLibrary& library) {
  for (const simulator::Playlist& playlist : library.playlists) {
    const bool areThere =
        std::all_of(playlist.tracks.begin(), playlist.tracks.end(),
                    [&](uint32_t track) { return track < library.tracks.size(); });
    require(areThere, "a playlist with a track that does not exist");
  }
}

/// Checks that the library is the same when it is written and read again.
void loadAgain(const InputFile& file, const MusicLibrary& library) {
  const std::string text = toJson(library);
  file.write(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  const std::optional<MusicLibrary> again = load(file);
  require(again && toJson(*again) == text, "another library when it is read again");
}

/// Requests every list and its first and last record.
void lookThrough(const MusicLibrary& library) {
  using simulator::Bytes;
  simulator::SimulatedIpod ipod(simulator::Personality{}, library);
  simulator::Time now(0);
  ipod.plugIn(now, simulator::FrameKind::kUsb);
  const auto ask = [&](const Bytes& payload) {
    ipod.receive(now, encodeFrame(simulator::FrameKind::kUsb, payload));
    require(!ipod.takeOutput(now).empty(), "no answer");
    now += simulator::milliseconds(30);
  };
  ask({0x00, 0x05});
  for (uint8_t category = 1; category <= 7; ++category) {
    ask({0x04, 0x00, 0x18, category});
    ask({0x04, 0x00, 0x1A, category, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF});
  }
  ask({0x04, 0x00, 0x28, 0, 0, 0, 0});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const InputFile file;
  file.write(data, size);
  const std::optional<MusicLibrary> library = load(file);
  if (!library) return 0;
  check(*library);
  loadAgain(file, *library);
  lookThrough(*library);
  return 0;
}
