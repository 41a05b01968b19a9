// What a trace shows of the iPod's player and its notifications.

#include <algorithm>
#include <set>

#include "iaptrace/shown_personality.h"
#include "wire/lingo.h"
#include "wire/payload.h"

namespace iaptrace {
namespace {

using simulator::Lingo;
using simulator::PayloadReader;
using simulator::Status;

constexpr uint8_t kPlaying = 1;

class PlaybackFinder {
 public:
  explicit PlaybackFinder(ShownPersonality& found) : shown(found) {}

  void take(const Asked& each) {
    if (each.message().lingo != static_cast<uint8_t>(Lingo::kExtendedInterface)) return;
    switch (each.message().command) {
      case simulator::kGetIndexedPlayingTrackTitle:
      case simulator::kGetIndexedPlayingTrackArtistName:
      case simulator::kGetIndexedPlayingTrackAlbumName:
        takeText(each);
        break;
      case simulator::kGetIndexedPlayingTrackInfo:
        takeGenre(each);
        break;
      case simulator::kGetPlayStatus:
        if (each.reply() != nullptr) takeStatus(each);
        break;
      case simulator::kGetCurrentPlayingTrackIndex:
        if (each.reply() != nullptr) takeIndex(*each.reply());
        break;
      case simulator::kPlayControl:
        takeControl(each);
        break;
      default:
        break;
    }
  }

 private:
  void takeText(const Asked& each) {
    const auto status = each.status();
    if (each.reply() != nullptr) known.insert(PayloadReader(each.message().data).u32());
    if (status == static_cast<uint8_t>(Status::kBadParameter)) {
      shown.settings["bad-track-index"] = "bad-parameter";
    } else if (status == static_cast<uint8_t>(Status::kFailed)) {
      shown.settings["bad-track-index"] = "failed";
    }
  }

  /// The genre of a track that has a title.
  void takeGenre(const Asked& each) {
    PayloadReader data(each.message().data);
    const bool isGenre = data.u8() == static_cast<uint8_t>(simulator::TrackInfoType::kGenre);
    const bool hasTitle = known.count(data.u32()) > 0;
    if (!isGenre || !data.ok()) return;
    if (each.reply() != nullptr) shown.set("tells-genre", true);
    if (each.status() && hasTitle) shown.set("tells-genre", false);
  }

  void takeStatus(const Asked& each) {
    PayloadReader data(each.reply()->data);
    data.u32();
    const uint32_t ms = data.u32();
    const bool isPlaying = data.u8() == kPlaying && data.ok();
    const trace::Time at = each.replies.front()->at;
    if (isWinding && position) takeWinding(ms, at);
    isWinding = false;
    position.reset();
    if (isPlaying) position = Position{ms, at};
  }

  /// From two positions while it winds, and the time between them.
  void takeWinding(uint32_t ms, trace::Time at) {
    constexpr trace::Time kLeast = std::chrono::milliseconds(100);
    constexpr int64_t kFastest = 100;
    const trace::Time passed = at - windingSince;
    if (passed < kLeast || ms <= positionAt(windingSince)) return;
    const int64_t moved = ms - positionAt(windingSince);
    const int64_t speed = (moved * 1000 + passed.count() / 2) / passed.count();
    if (speed > 1 && speed <= kFastest) shown.settings["seek-speed"] = static_cast<uint32_t>(speed);
  }

  int64_t positionAt(trace::Time at) const {
    return position->ms + (at - position->at).count() / 1000;
  }

  void takeIndex(const Message& reply) {
    const uint32_t number = PayloadReader(reply.data).u32();
    constexpr int64_t kUsualLimit = 3000;
    const bool hasLeft = previousFrom && index && number + 1 == *index;
    if (hasLeft && *previousFrom >= kUsualLimit) shown.settings["previous-restarts-after"] = 0u;
    previousFrom.reset();
    index = number;
  }

  void takeControl(const Asked& each) {
    const uint8_t code = PayloadReader(each.message().data).u8();
    const bool isDone = each.status() == static_cast<uint8_t>(Status::kOk);
    previousFrom.reset();
    isWinding = false;
    if (!isDone || !position) return position.reset();
    const trace::Time at = each.replies.back()->at;
    if (code == static_cast<uint8_t>(simulator::PlayControlCode::kPreviousTrack)) {
      previousFrom = positionAt(at);
    }
    isWinding = code == static_cast<uint8_t>(simulator::PlayControlCode::kStartFastForward);
    windingSince = at;
    if (!isWinding) position.reset();
  }

  struct Position {
    int64_t ms;
    trace::Time at;
  };

  ShownPersonality& shown;
  std::set<uint32_t> known;  ///< the indexes of tracks with a text
  std::optional<Position> position;
  std::optional<uint32_t> index;
  std::optional<int64_t> previousFrom;  ///< ms: where "previous" was pressed
  bool isWinding = false;
  trace::Time windingSince{0};
};

/// Finds out how often positions are notified.
void showNotifications(const Conversation& items, ShownPersonality& shown) {
  constexpr size_t kEnough = 3;
  constexpr int64_t kStep = 10;  // ms
  std::vector<int64_t> pauses;
  const Item* before = nullptr;  // the position before, without another message between
  for (const Item& item : items) {
    if (!item.isMessage() || !item.isFrom(Sender::kIpod)) continue;
    // Another track: the pause is not the usual one.
    if (item.message.lingo == static_cast<uint8_t>(Lingo::kDigitalAudio)) before = nullptr;
    if (!item.message.is(Lingo::kExtendedInterface, simulator::kPlayStatusChangeNotification)) {
      continue;
    }
    const uint8_t change = PayloadReader(item.message.data).u8();
    const bool isPosition = change == static_cast<uint8_t>(simulator::PlayStatusChange::kPosition);
    if (isPosition && before != nullptr) {
      pauses.push_back((item.at - before->at).count() / 1000);
    }
    before = isPosition ? &item : nullptr;
  }
  if (pauses.size() < kEnough) return;
  const auto [least, most] = std::minmax_element(pauses.begin(), pauses.end());
  const int64_t jitter = (*most - *least + kStep - 1) / kStep * kStep;
  const int64_t interval = std::max(*least / kStep * kStep, kStep);
  shown.settings["position-interval"] = static_cast<uint32_t>(std::min<int64_t>(interval, 3600000));
  shown.settings["notification-jitter"] =
      jitter <= kStep ? 0u : static_cast<uint32_t>(std::min<int64_t>(jitter, 3600000));
}

}  // namespace

void showPlayback(const Conversation& items, const std::vector<Asked>& asked,
                  ShownPersonality& shown) {
  PlaybackFinder finder(shown);
  for (const Asked& each : asked)
    finder.take(each);
  showNotifications(items, shown);
}

}  // namespace iaptrace
