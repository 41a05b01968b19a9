#include "database/sort_key.h"

#include <cstdint>

namespace simulator {

namespace {

constexpr const char* kArticles[] = {"a ", "an ", "the "};

/// The letters as which U+00C0 to U+00FF are sorted; a space means: as itself.
constexpr char kLatin1Letters[] =
    "aaaaaaaceeeeiiii"
    "dnooooo ouuuuy s"
    "aaaaaaaceeeeiiii"
    "dnooooo ouuuuy y";

char lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// Returns the plain letter of the two-byte sequence that encodes U+00C0 to U+00FF; 0 when there is
/// none.
char plainLetter(char lead, char next) {
  if (static_cast<uint8_t>(lead) != 0xC3) return 0;
  const uint8_t trail = static_cast<uint8_t>(next);
  if (trail < 0x80 || trail > 0xBF) return 0;
  const char letter = kLatin1Letters[trail - 0x80];
  return letter == ' ' ? '\0' : letter;
}

std::string fold(const std::string& name) {
  std::string folded;
  folded.reserve(name.size());
  for (size_t i = 0; i < name.size(); ++i) {
    const char plain = i + 1 < name.size() ? plainLetter(name[i], name[i + 1]) : '\0';
    folded.push_back(plain != 0 ? plain : lower(name[i]));
    if (plain != 0) ++i;
  }
  return folded;
}

}  // namespace

std::string sortKey(const std::string& name) {
  std::string key = fold(name);
  for (const std::string article : kArticles) {
    if (key.size() > article.size() && key.compare(0, article.size(), article) == 0) {
      return key.substr(article.size());
    }
  }
  return key;
}

}  // namespace simulator
