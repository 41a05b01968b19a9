#include "playback.h"

#include "ipodctl.h"
#include "pause.h"
#include "screen_text.h"

namespace {

constexpr int kReadings = 3;
constexpr int kBetweenReadings = 800;  // ms
constexpr int kTrackSettles = 700;     // ms
constexpr int kModeSettles = 200;      // ms

constexpr char kNotAnswered[] = "The iPod did not answer what it plays.";

/// What plays, and its position.
struct Playing {
  int track = -1;
  int status = IPOD_STOPPED;
  int position = 0;  ///< ms

  /// Returns whether the iPod answered. Without an answer the status is "stopped" and the position
  /// is 0; a track that plays, or that was paused after a moment, has neither value.
  bool makesSense() const {
    return track < 0 ? status == IPOD_STOPPED : status != IPOD_STOPPED && position > 0;
  }
};

bool readPlaying(Playing& playing) {
  playing = {};
  if (IpodGetTrackIndex(&playing.track) == 0) return false;
  IpodGetCurrentPlayStatus(&playing.status);
  IpodGetCurrentTrackPosition(&playing.position);
  return playing.makesSense();
}

void showPlaying(Screen& screen, const Playing& playing) {
  static const char* const kStates[] = {"stopped", "playing", "paused"};
  if (playing.track < 0) {
    screen.show("nothing plays");
    return;
  }
  screen.show("track " + std::to_string(playing.track) + ", " + kStates[playing.status] + " at " +
              clockTime(playing.position));
}

bool showWhatPlays(HeadUnit& headUnit) {
  Playing playing;
  if (headUnit.ipod.ask([&] { return readPlaying(playing); })) {
    showPlaying(headUnit.screen, playing);
    return true;
  }
  headUnit.showGap(kNotAnswered);
  return false;
}

/// An action of the head unit, the status that follows from it, and the text for its failure.
struct Action {
  std::function<void()> act;
  int settles;  ///< ms
  int status;
  const char* failure;
};

/// Does the action. No function reports whether the iPod obeyed, so this checks what plays
/// afterwards.
bool carryOut(HeadUnit& headUnit, const Action& action) {
  Playing playing;
  bool isKnown = false;
  const bool hasObeyed = headUnit.ipod.ask([&] {
    action.act();
    waitMilliseconds(action.settles);
    isKnown = readPlaying(playing);
    return isKnown && playing.status == action.status;
  });
  if (hasObeyed) {
    showPlaying(headUnit.screen, playing);
  } else {
    const bool hasRefused = isKnown && playing.status != action.status;
    headUnit.showGap(hasRefused ? action.failure : kNotAnswered);
  }
  return hasObeyed;
}

void skipToNextTrack(HeadUnit& headUnit) {
  IpodCommand(IPOD_NEXT_TRACK);
  waitMilliseconds(kTrackSettles);
  showWhatPlays(headUnit);
}

bool setShuffleMode(Conversation& ipod, int mode) {
  return ipod.ask([mode] {
    int answer = 0;
    IpodSetShuffleMode(mode);
    waitMilliseconds(kModeSettles);
    IpodGetShuffleMode(&answer);
    return answer == mode;
  });
}

}  // namespace

bool playTracks(HeadUnit& headUnit) {
  headUnit.screen.beginSection("Play from the first track; the position moves");
  IpodValidateUpDownTree();
  bool isPlaying = carryOut(headUnit, {[] { IpodSongPlay(0); }, kBetweenReadings, IPOD_PLAYING,
                                       "The iPod did not start to play."});
  for (int i = 1; i < kReadings && isPlaying; ++i) {
    waitMilliseconds(kBetweenReadings);
    isPlaying = showWhatPlays(headUnit);
  }
  return isPlaying;
}

void playNextTrack(HeadUnit& headUnit) {
  headUnit.screen.beginSection("Next track");
  skipToNextTrack(headUnit);
}

void pauseAndPlayOn(HeadUnit& headUnit) {
  headUnit.screen.beginSection("Pause, and play on");
  carryOut(headUnit,
           {[] { IpodCommand(IPOD_PAUSE); }, kModeSettles, IPOD_PAUSED, "The iPod did not pause."});
  carryOut(headUnit, {[] { IpodCommand(IPOD_PLAY); }, kTrackSettles, IPOD_PLAYING,
                      "The iPod did not play on."});
}

void changeShuffleMode(HeadUnit& headUnit) {
  headUnit.screen.beginSection("Shuffle");
  for (const int mode : {IPOD_MODE_TRACKS, IPOD_MODE_OFF}) {
    if (setShuffleMode(headUnit.ipod, mode)) {
      headUnit.screen.show("shuffle mode " + std::to_string(mode));
    } else {
      headUnit.showGap("The iPod did not confirm shuffle mode " + std::to_string(mode) + ".");
    }
  }
}

void followSampleRate(HeadUnit& headUnit) {
  headUnit.screen.beginSection("Skip on: a track at another sample rate announces itself");
  skipToNextTrack(headUnit);
}
