#pragma once

#include <string>

namespace simulator {

/// The text by which an iPod sorts a UTF-8 name: without a leading English article, without regard
/// to case, Latin letters with accents beside those without.
std::string sortKey(const std::string& name);

}  // namespace simulator
