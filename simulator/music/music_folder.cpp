#include "music/music_folder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "music/audio_file.h"
#include "music/file_content.h"
#include "music/m3u_playlist.h"
#include "music/text.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

constexpr size_t kLargestPlaylistFile = size_t{16} * 1024 * 1024;  // bytes

std::string utf8Of(const fs::path& path) { return toUtf8(path.native()); }

void requireFolder(const fs::path& folder) {
  std::error_code error;
  const fs::file_status status = fs::status(folder, error);
  const std::string start = "music folder " + utf8Of(folder) + ": ";
  if (status.type() == fs::file_type::not_found) throw std::runtime_error(start + "does not exist");
  if (error) throw std::runtime_error(start + error.message());
  if (!fs::is_directory(status)) throw std::runtime_error(start + "is not a folder");
}

std::string libraryName(const fs::path& folder) {
  std::error_code error;
  const std::string name = utf8Of(fs::canonical(folder, error).filename());
  return name.empty() ? "iPod" : name;
}

bool isPlaylist(const fs::path& file) {
  const std::string extension = lowerCase(file.extension().native());
  return extension == ".m3u" || extension == ".m3u8";
}

/// Returns the name of the folder that is `levels` above the file; an empty text when that is the
/// music folder or above it. `file` is relative to the music folder.
std::string folderAbove(const fs::path& file, int levels) {
  fs::path folder = file;
  for (int i = 0; i < levels; ++i)
    folder = folder.parent_path();
  return utf8Of(folder.filename());
}

/// Replaces an empty text with the first replacement that is not empty.
void fillIn(std::string& text, const std::string& fromFolder, const std::string& unknown) {
  if (text.empty()) text = fromFolder.empty() ? unknown : fromFolder;
}

/// Reads the folder and the folders below it.
class FolderReader {
 public:
  FolderReader(fs::path folder, FolderReport& whatIsWrong)
      : root(std::move(folder)), report(whatIsWrong) {}

  MusicLibrary read() {
    library.name = libraryName(root);
    readFolder(root);
    for (const fs::path& file : playlistFiles)
      readPlaylist(file);
    if (library.tracks.empty())
      report.warnings.push_back(utf8Of(root) + ": no playable audio found in this folder");
    return std::move(library);
  }

 private:
  void warn(const fs::path& file, const std::string& text) {
    report.warnings.push_back(utf8Of(file.lexically_relative(root)) + ": " + text);
  }

  void skip(const fs::path& file, const std::string& reason) {
    warn(file, reason);
    ++report.skipped[reason];
  }

  void readFolder(const fs::path& folder) {
    std::error_code error;
    const fs::path canonical = fs::canonical(folder, error);
    if (error) return skip(folder, error.message());
    // A link may lead to a folder above, or to one that has been read.
    if (!foldersRead.insert(canonical).second) return;
    std::vector<fs::path> entries;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
      entries.push_back(it->path());
    }
    if (error) skip(folder, error.message());
    std::sort(entries.begin(), entries.end());
    for (const fs::path& entry : entries)
      readEntry(entry);
  }

  void readEntry(const fs::path& entry) {
    std::error_code error;
    const fs::file_status status = fs::status(entry, error);
    if (fs::is_directory(status)) return readFolder(entry);
    if (!hasAudioExtension(entry) && !isPlaylist(entry)) return;
    if (!fs::is_regular_file(status)) return skip(entry, "is not a file that can be read");
    if (isPlaylist(entry)) {
      playlistFiles.push_back(entry);
    } else {
      readTrack(entry);
    }
  }

  void readTrack(const fs::path& file) {
    std::error_code error;
    const auto index = static_cast<uint32_t>(library.tracks.size());
    const auto [known, isNew] = trackOfFile.try_emplace(fs::canonical(file, error), index);
    if (!isNew) return;
    std::optional<Track> track = readAudioFile(file);
    if (!track) {
      trackOfFile.erase(known);
      return skip(file, "no playable audio found in it");
    }
    nameAfterFile(*track, file.lexically_relative(root));
    library.tracks.push_back(std::move(*track));
    library.files.push_back(file.native());
  }

  static void nameAfterFile(Track& track, const fs::path& file) {
    fillIn(track.title, utf8Of(file.stem()), {});
    fillIn(track.album, folderAbove(file, 1), "Unknown Album");
    fillIn(track.artist, folderAbove(file, 2), "Unknown Artist");
  }

  void readPlaylist(const fs::path& file) {
    M3uPlaylist content;
    try {
      content = parseM3u(readFileContent(file, kLargestPlaylistFile));
    } catch (const std::runtime_error& error) {
      return skip(file, error.what());
    }
    Playlist playlist;
    playlist.name = content.name.empty() ? utf8Of(file.stem()) : content.name;
    for (const std::string& entry : content.entries) {
      if (const std::optional<uint32_t> index = trackOfEntry(file.parent_path(), entry)) {
        playlist.tracks.push_back(*index);
      } else {
        warn(file, "not in the library: " + entry);
      }
    }
    library.playlists.push_back(std::move(playlist));
  }

  std::optional<uint32_t> trackOfEntry(const fs::path& folder, const std::string& entry) const {
    if (const std::optional<uint32_t> index = trackAt(folder / entry)) return index;
    std::string withSlashes = entry;
    std::replace(withSlashes.begin(), withSlashes.end(), '\\', '/');
    return trackAt(folder / withSlashes);
  }

  std::optional<uint32_t> trackAt(const fs::path& file) const {
    std::error_code error;
    const auto track = trackOfFile.find(fs::canonical(file, error));
    if (error || track == trackOfFile.end()) return std::nullopt;
    return track->second;
  }

  fs::path root;
  FolderReport& report;
  MusicLibrary library;
  std::set<fs::path> foldersRead;            ///< canonical
  std::map<fs::path, uint32_t> trackOfFile;  ///< canonical path to index in library.tracks
  std::vector<fs::path> playlistFiles;
};

}  // namespace

MusicLibrary loadMusicFolder(const std::filesystem::path& folder, FolderReport& report) {
  requireFolder(folder);
  return FolderReader(folder, report).read();
}

}  // namespace simulator
