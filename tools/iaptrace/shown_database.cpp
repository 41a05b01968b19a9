// What a trace shows of the iPod's lists.

#include <algorithm>
#include <set>

#include "database/sort_key.h"
#include "iaptrace/shown_personality.h"
#include "wire/lingo.h"
#include "wire/payload.h"

namespace iaptrace {
namespace {

using simulator::Lingo;
using simulator::PayloadReader;
using simulator::Status;

constexpr uint8_t kPlaylists = 1;
constexpr uint8_t kTracks = 5;
/// Fewer tracks can be in the order of their names by chance.
constexpr size_t kEnoughNames = 6;

class DatabaseFinder {
 public:
  explicit DatabaseFinder(ShownPersonality& found) : shown(found) {}

  void take(const Asked& each) {
    if (!each.inExtendedMode) counted.clear();
    if (each.message().lingo != static_cast<uint8_t>(Lingo::kExtendedInterface)) return;
    PayloadReader data(each.message().data);
    switch (each.message().command) {
      case simulator::kResetDbSelection:
        counted.clear();
        isNarrowed = false;
        break;
      case simulator::kGetNumberCategorizedDbRecords:
        if (each.reply() != nullptr) counted.insert(data.u8());
        break;
      case simulator::kSelectDbRecord:
      case simulator::kSelectSortDbRecord: {
        const uint8_t category = data.u8();
        takeSelection(each, category, data.u32());
        break;
      }
      case simulator::kRetrieveCategorizedDatabaseRecords:
        if (data.u8() == kTracks && !isNarrowed) takeTracks(each);
        break;
      case simulator::kPlayCurrentSelection:
      case simulator::kPlayControl:
      case simulator::kSetCurrentPlayingTrack:
        selected.reset();
        break;
      case simulator::kGetCurrentPlayingTrackIndex:
      case simulator::kGetNumPlayingTracks:
        if (each.reply() != nullptr) takePlaying(*each.reply());
        break;
      default:
        break;
    }
  }

 private:
  void takeSelection(const Asked& each, uint8_t category, uint32_t index) {
    const auto status = each.status();
    if (!status) return;
    const bool isOk = *status == static_cast<uint8_t>(Status::kOk);
    isNarrowed = isNarrowed || isOk;
    if (index == simulator::kNoIndex) {
      const bool isRefused = *status == static_cast<uint8_t>(Status::kBadParameter);
      if (category == kPlaylists && (isOk || isRefused)) shown.set("deselects-playlists", isOk);
      return;
    }
    const bool isUncounted = counted.count(category) == 0;
    const bool isFailed = *status == static_cast<uint8_t>(Status::kFailed);
    if (isUncounted && (isOk || isFailed)) shown.set("count-before-select", isFailed);
    selected.reset();
    if (isOk && category == kTracks && index > 0) selected = index;
  }

  /// A track that plays within its list keeps its index.
  void takePlaying(const Message& reply) {
    if (!selected) return;
    PayloadReader data(reply.data);
    const uint32_t number = data.u32();
    const bool isCount = reply.command == simulator::kReturnNumPlayingTracks;
    const bool isAlone = isCount ? number == 1 : number == 0;
    if (isAlone || (isCount ? number > *selected : number == *selected)) {
      shown.settings["track-selection"] = isAlone ? "alone" : "list";
    }
    selected.reset();
  }

  void takeTracks(const Asked& each) {
    std::vector<std::string> names;
    for (const Item* reply : each.replies) {
      PayloadReader data(reply->message.data);
      data.u32();
      const ByteView text = data.rest();
      names.push_back(simulator::sortKey(std::string(text.begin(), text.end())));
    }
    if (names.size() < kEnoughNames) return;
    const bool isByName = std::is_sorted(names.begin(), names.end());
    shown.settings["track-order"] = isByName ? "name" : "artist";
  }

  ShownPersonality& shown;
  std::set<uint8_t> counted;  ///< the categories, since the last reset
  bool isNarrowed = false;    ///< something was selected since then
  std::optional<uint32_t> selected;
};

}  // namespace

void showDatabase(const std::vector<Asked>& asked, ShownPersonality& shown) {
  DatabaseFinder finder(shown);
  for (const Asked& each : asked)
    finder.take(each);
}

}  // namespace iaptrace
