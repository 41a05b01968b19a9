#pragma once

#include <functional>
#include <string>
#include <vector>

#include "device/personality.h"
#include "music/music_library.h"
#include "virtual/promises.h"
#include "wire/frame.h"

namespace virtual_session {

class VirtualSession;

/// What a host does with an iPod from the connection to the disconnection.
struct Script {
  const char* name;
  const char* device;
  simulator::FrameKind frames;
  simulator::Personality model;
  simulator::MusicLibrary library;
  std::string logo;  ///< the content of the logo's file; empty: there is none
  std::function<void(VirtualSession&, Host&)> play;
  std::vector<std::string> results;  ///< as resultsOf, of an undisturbed session
  const Promises& promises;
  int latest;  ///< ms: an answer so late is still accepted
};

/// A request waits for a second. The reader of a serial line looks for bytes every 100 ms.
constexpr int kLatestOnUsb = 900;
constexpr int kLatestOnASerialLine = 700;

/// Connects, lists the artists, plays the tracks of one, follows a new sample rate and disconnects.
const Script& shortScript();

/// Uses all of every export: each kind of list in tabs and in items, forward, backward, down and
/// up, every command, every mode and text, the logo, sample rates and notifications.
const Script& referenceScript();

/// The same on a serial line, which only the controller's operations can use.
const Script& serialScript();

/// "short", "reference" and "serial".
constexpr const char* kScripts[] = {"short", "reference", "serial"};
const Script& scriptCalled(const std::string& name);

constexpr int kLogoPackets = 3;       // of the largest logo
constexpr int kReferenceTracks = 40;  // of the largest library
constexpr int kRecordsAtOnce = 5;     // in one listing on a serial line

}  // namespace virtual_session
