#include "control/control_help.h"

#include <algorithm>
#include <sstream>

namespace simulator {

namespace {

constexpr char kIntroduction[] =
    "--control SOCKET\n"
    "\n"
    "Programs connect to this Unix socket, which only its owner can use. Each line is\n"
    "a JSON object, and each is answered with one line, in the same order:\n"
    "\n"
    "  {\"do\":\"press\",\"button\":\"play\"}\n"
    "  {\"ok\":true}\n"
    "  {\"do\":\"jump\"}\n"
    "  {\"ok\":false,\"error\":{\"code\":\"unknown-verb\",\"message\":\"There is ...\"}}\n"
    "\n"
    "The verbs, with their keys:\n"
    "\n";

constexpr char kEnd[] =
    "\n"
    "button: play, pause, play-pause, next, previous, menu or select. personality:\n"
    "see --help-personalities. fault: see --help-faults. state: stopped, playing or\n"
    "paused. Of wait-until all conditions must be true at the same moment;\n"
    "position_ms and screen_revision are then at least these. timeout_ms is at most\n"
    "60000, and 5000 if it is left out.\n"
    "\n"
    "A line has at most 65536 bytes. A program that does not read its answers for\n"
    "5 seconds is disconnected.\n"
    "\n"
    "Example:\n"
    "\n"
    "  ipodsim --control /tmp/ipod.control &\n"
    "  echo '{\"do\":\"status\"}' | nc -NU /tmp/ipod.control\n";

std::vector<std::string> keysOf(const std::string& verb) {
  const auto& all = verbHelp();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const VerbHelp& each) { return each.name == verb; });
  std::vector<std::string> keys;
  std::istringstream words(found == all.end() ? "" : found->keys);
  for (std::string key; words >> key;)
    keys.push_back(key);
  return keys;
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words)
    text += (text.empty() ? "" : ", ") + word;
  return text;
}

std::string keyLines(const VerbHelp& verb) {
  constexpr size_t kWidth = 66;
  std::string text;
  std::string line;
  for (const std::string& key : keysOf(verb.name)) {
    if (line.size() + key.size() + 1 > kWidth) {
      text += "             " + line + "\n";
      line.clear();
    }
    line += (line.empty() ? "" : " ") + key;
  }
  return line.empty() ? text : text + "             " + line + "\n";
}

}  // namespace

const std::vector<VerbHelp>& verbHelp() {
  static const std::vector<VerbHelp> verbs = {
      {"status", "", "what the iPod is doing"},
      {"press", "button", "press a button of the iPod"},
      {"seek", "position_ms", "move within the track, at most to its end"},
      {"unplug", "", "pull the cable"},
      {"plug", "personality", "plug it in again, also another model"},
      {"fault", "fault clear", "add a fault; clear true removes all of them"},
      {"library", "tracks", "numbers of the music; unplugged: cut or copy it"},
      {"screen", "", "the screen as a PNG picture in Base64"},
      {"wait-until",
       "state extended accessory plugged title position_ms screen_revision timeout_ms",
       "answer when this is so, with the status"},
      {"help", "", "the verbs"},
  };
  return verbs;
}

std::string verbNames() {
  std::vector<std::string> names;
  for (const VerbHelp& verb : verbHelp())
    names.push_back(verb.name);
  return joined(names);
}

bool verbHasKey(const std::string& verb, const std::string& key) {
  const std::vector<std::string> keys = keysOf(verb);
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

std::string keysSentence(const std::string& verb) {
  const std::vector<std::string> keys = keysOf(verb);
  if (keys.empty()) return "it has none.";
  return (keys.size() == 1 ? "its key is " : "its keys are ") + joined(keys) + ".";
}

std::string controlHelp() {
  constexpr size_t kColumn = 11;
  std::string help = kIntroduction;
  for (const VerbHelp& verb : verbHelp()) {
    std::string name = verb.name;
    name.resize(kColumn, ' ');
    help += "  " + name + verb.meaning + "\n" + keyLines(verb);
  }
  return help + kEnd;
}

}  // namespace simulator
