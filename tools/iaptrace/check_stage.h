// How far a host came with an iPod.
#pragma once

#include <vector>

namespace iaptrace::checking {

/// The steps of a connection and what follows it, in their order. A connection stops at the step
/// that it does not complete; an iPod is lost after the last step that was completed.
enum class Stage {
  kOpen,           ///< the device is open
  kIdentify,       ///< the host's lingoes are accepted
  kAccessoryInfo,  ///< the iPod's questions about the host are answered
  kSampleRates,    ///< the host's sample rates are sent
  kVersions,       ///< the lingo versions are known: the host is identified
  kLogo,           ///< the iPod accepted a packet of the logo
  kMode,           ///< only as a step at which a connection stops
  kConnected,      ///< the iPod is in the Extended Interface mode
  kBrowse,         ///< a request of the database is answered
  kPlay,           ///< the iPod plays
};

/// Returns the name that a cause has for the stage, such as "accessory-info".
const char* nameOf(Stage stage);

/// Returns what the stage means, as a part of a sentence.
const char* meaningOf(Stage stage);

/// Returns the stages at which a connection can stop, and those after which an iPod can be lost.
std::vector<Stage> stagesThatStop();
std::vector<Stage> stagesBeforeALoss();

}  // namespace iaptrace::checking
