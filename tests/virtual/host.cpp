#include "virtual/host.h"

#include <ipodctl.h>

#include "virtual/call.h"

namespace virtual_session {
namespace {

constexpr int kMaxChars = 16;

}  // namespace

std::vector<std::string> resultsOf(const Calls& calls) {
  std::vector<std::string> results;
  for (const Call& call : calls) {
    results.push_back(call.name + " " + std::to_string(call.result));
    for (const std::string& words : call.written)
      results.back() += " " + words;
  }
  return results;
}

std::string exportOf(const std::string& callName) { return callName.substr(0, callName.find('(')); }

void Host::call(const std::string& name, const std::function<int()>& exported,
                const std::vector<const Output*>& outputs) {
  Call call;
  call.name = name;
  call.thread = thread;
  call.start = world.now();
  virtual_platform::note("calls " + name);
  call.result = exported();
  virtual_platform::note("returns " + std::to_string(call.result));
  call.took = world.now() - call.start;
  for (const Output* output : outputs)
    call.add(*output);
  made.push_back(call);
}

void Host::command(int code) {
  call("IpodCommand(" + std::to_string(code) + ")", [code] { return IpodCommand(code); });
}

void Host::play(int track) {
  call("IpodSongPlay", [track] { return IpodSongPlay(track); });
}

void Host::number(const char* name, int (*exported)(int*)) {
  Number number;
  call(name, [&] { return exported(number.data()); }, {&number});
}

void Host::position(int atLeast) {
  number("IpodGetCurrentTrackPosition", IpodGetCurrentTrackPosition);
  std::string& words = made.back().written.front();
  if (words != Output::kNothing && std::stoi(words) >= atLeast) {
    words = std::to_string(atLeast) + " or more";
  }
}

void Host::open(int descend, int type, int tracksOfSelection) {
  move("IpodGetFirstItem", [=] { return IpodGetFirstItem(descend, type, tracksOfSelection); });
}

void Host::move(const char* name, const std::function<const int*()>& exported) {
  Number index;
  const auto readIndex = [&] {
    const int* const found = exported();
    if (found != nullptr) *index.data() = *found;
    return found != nullptr ? 1 : 0;
  };
  call(name, readIndex, {&index});
}

void Host::entryName(const char* name,
                     int (*exported)(int, unsigned short*, unsigned short*, int)) {
  Text first(kNameChars);
  Text second(kNameChars);
  call(name, [&] { return exported(0, first.data(), second.data(), kNameChars); },
       {&first, &second});
}

void Host::deviceText(const char* name, int (*exported)(unsigned short*, int)) {
  Text text(kMaxChars);
  call(name, [&] { return exported(text.data(), kMaxChars); }, {&text});
}

void Host::trackTexts() {
  Number index;
  Text artist(kMaxChars), album(kMaxChars), title(kMaxChars), genre(kMaxChars), fifth(kMaxChars);
  const auto exported = [&] {
    return IpodGetTrackInfo(index.data(), artist.data(), album.data(), title.data(), genre.data(),
                            fifth.data(), kMaxChars);
  };
  call("IpodGetTrackInfo", exported, {&index, &artist, &album, &title, &genre, &fifth});
}

}  // namespace virtual_session
