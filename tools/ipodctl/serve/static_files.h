// The files of the page.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace tool {

/// A file that is built into the program.
struct BuiltInFile {
  const char* name;  ///< "style.css"
  const unsigned char* bytes;
  size_t size;
};

/// All of them; the last one has no name.
extern const BuiltInFile kBuiltInFiles[];

/// The files that clients can ask for. They are read at the start: a request names none, so that no
/// path leads elsewhere.
class StaticFiles {
 public:
  struct File {
    std::string bytes;
    std::string type;
  };

  /// The files that are built in, or those of the folder when it is not empty. Throws
  /// std::runtime_error with a message for the user.
  explicit StaticFiles(const std::string& folder = "");

  /// Returns the file of a path: "/" is index.html. Null when there is none.
  const File* find(const std::string& path) const;

 private:
  void add(const std::string& name, std::string bytes);
  void readFolder(const std::string& folder);

  std::map<std::string, File> files;  ///< by "/style.css"
};

}  // namespace tool
