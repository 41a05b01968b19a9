#pragma once

#include <string>
#include <vector>

namespace simulator {

/// A verb of the control socket, for people.
struct VerbHelp {
  std::string name;
  std::string keys;  ///< with a blank between them; empty: none
  std::string meaning;
};

const std::vector<VerbHelp>& verbHelp();
/// Returns the names of the verbs, with a comma and a blank between them.
std::string verbNames();
bool verbHasKey(const std::string& verb, const std::string& key);
/// Returns a sentence that names the keys of the verb.
std::string keysSentence(const std::string& verb);

/// Returns the help text of the control socket.
std::string controlHelp();

}  // namespace simulator
