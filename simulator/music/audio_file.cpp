#include "music/audio_file.h"

#include <taglib/fileref.h>
#include <taglib/tpropertymap.h>

#include <charconv>
#include <cstdint>
#include <set>
#include <string>

#include "music/text.h"

namespace simulator {
namespace {

std::string extensionOf(const std::filesystem::path& file) {
  const std::string extension = lowerCase(file.extension().string());
  return extension.empty() ? extension : extension.substr(1);
}

std::set<std::string> audioExtensions() {
  std::set<std::string> extensions;
  for (const TagLib::String& extension : TagLib::FileRef::defaultFileExtensions()) {
    extensions.insert(extension.to8Bit());
  }
  // Old Musepack files have no signature: any bytes would be read as hours of music.
  extensions.erase("mpc");
  return extensions;
}

/// Returns the texts of a tag. The texts of a repeated tag (a song of two artists) are joined.
std::string textOf(const TagLib::PropertyMap& tags, const char* key) {
  return std::string(trimmed(tags[key].toString(", ").to8Bit(true)));
}

/// Returns the number that the tag starts with: "3" and "3/12" are 3, "2004-05-01" is 2004.
uint32_t numberOf(const TagLib::PropertyMap& tags, const char* key) {
  const std::string text = textOf(tags, key);
  uint32_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

MediaKind kindOf(const std::string& genre, const std::string& extension) {
  const std::string name = lowerCase(genre);
  if (name == "podcast" || name == "podcasts") return MediaKind::kPodcast;
  const bool isBook = name == "audiobook" || name == "audiobooks" || extension == "m4b";
  return isBook ? MediaKind::kAudiobook : MediaKind::kMusic;
}

}  // namespace

bool hasAudioExtension(const std::filesystem::path& file) {
  static const std::set<std::string> extensions = audioExtensions();
  return extensions.count(extensionOf(file)) != 0;
}

std::optional<Track> readAudioFile(const std::filesystem::path& file) {
  const TagLib::FileRef audio(file.c_str());
  if (audio.isNull() || audio.audioProperties() == nullptr) return std::nullopt;
  const int lengthMs = audio.audioProperties()->lengthInMilliseconds();
  const int sampleRate = audio.audioProperties()->sampleRate();
  if (lengthMs <= 0 || sampleRate <= 0) return std::nullopt;

  const TagLib::PropertyMap tags = audio.file()->properties();
  Track track;
  track.title = textOf(tags, "TITLE");
  track.artist = textOf(tags, "ARTIST");
  track.album = textOf(tags, "ALBUM");
  track.genre = textOf(tags, "GENRE");
  track.composer = textOf(tags, "COMPOSER");
  track.kind = kindOf(track.genre, extensionOf(file));
  track.discNumber = numberOf(tags, "DISCNUMBER");
  track.trackNumber = numberOf(tags, "TRACKNUMBER");
  track.releaseYear = numberOf(tags, "DATE");
  track.lengthMs = static_cast<uint32_t>(lengthMs);
  track.sampleRate = static_cast<uint32_t>(sampleRate);
  return track;
}

}  // namespace simulator
