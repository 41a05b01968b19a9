#pragma once

#include <string>

namespace simulator {

/// Returns the text by which an iPod sorts a UTF-8 name: without a leading English article, in
/// lower case, and with Latin letters without their accents.
std::string sortKey(const std::string& name);

}  // namespace simulator
