#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tool {

/// A text with fields in braces: "{title} - {artist}". Two braces are a brace, and \n and \t are
/// the characters.
class Format {
 public:
  /// Throws std::runtime_error with one line for the user when a field is not among the known ones.
  Format(const std::string& text, const std::vector<std::string>& known);

  /// Returns the text with the fields' values, as a terminal may show them.
  std::string fill(const std::function<std::string(const std::string&)>& valueOf) const;

 private:
  struct Part {
    bool isField;
    std::string text;
  };

  void addText(char character);
  size_t addField(const std::string& text, size_t brace, const std::vector<std::string>& known);

  std::vector<Part> parts;
};

}  // namespace tool
