#include "ipodctl/commands/format.h"

#include <algorithm>
#include <stdexcept>

#include "wire/printable.h"

namespace tool {
namespace {

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names)
    text += (text.empty() ? "" : ", ") + name;
  return text;
}

/// Returns the character that a backslash and this letter mean; 0 when they mean themselves.
char escapeOf(char letter) {
  if (letter == 'n') return '\n';
  return letter == 't' ? '\t' : '\0';
}

}  // namespace

Format::Format(const std::string& text, const std::vector<std::string>& known) {
  for (size_t i = 0; i < text.size(); ++i) {
    const char next = i + 1 < text.size() ? text[i + 1] : '\0';
    if (text[i] == '\\' && escapeOf(next) != '\0') {
      addText(escapeOf(next));
      ++i;
    } else if (text[i] == '{' && next != '{') {
      i = addField(text, i, known);
    } else {
      addText(text[i]);
      if ((text[i] == '{' || text[i] == '}') && next == text[i]) ++i;
    }
  }
}

void Format::addText(char character) {
  if (parts.empty() || parts.back().isField) parts.push_back({false, ""});
  parts.back().text += character;
}

/// Returns the place of the closing brace.
size_t Format::addField(const std::string& text, size_t brace,
                        const std::vector<std::string>& known) {
  const size_t end = text.find('}', brace);
  if (end == std::string::npos) {
    throw std::runtime_error("--format has a { without a }; write {{ for a brace");
  }
  const std::string name = text.substr(brace + 1, end - brace - 1);
  if (std::find(known.begin(), known.end(), name) == known.end()) {
    throw std::runtime_error("--format has no field " + simulator::quoted(name) +
                             "; the fields are " + joined(known));
  }
  parts.push_back({true, name});
  return end;
}

std::string Format::fill(const std::function<std::string(const std::string&)>& valueOf) const {
  std::string text;
  for (const Part& part : parts)
    text += part.isField ? simulator::printable(valueOf(part.text)) : part.text;
  return text;
}

}  // namespace tool
