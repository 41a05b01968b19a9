#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tool {

/// The fields of --format in status, info and watch.
const std::vector<std::string>& stateFields();
/// Returns the value of a field in a state document; empty when it is not known.
std::string stateField(const nlohmann::json& state, const std::string& name);

/// The fields of --format in ls.
const std::vector<std::string>& itemFields();
/// Returns the value of a field of an item in a list document.
std::string itemField(const nlohmann::json& item, const std::string& path, const std::string& name);

}  // namespace tool
