#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "ipodctl/serve/browser.h"
#include "ipodctl/serve/state_board.h"

namespace tool {

/// Keeps what plays up to date, and carries out the transport buttons.
///
/// What the iPod does by itself is not announced, so it is asked about once a second.
class Player {
 public:
  Player(StateBoard& shown, Browser& lists) : board(shown), browser(lists) {}

  /// After a new connection: nothing is known.
  void begin();

  /// Asks what plays. Returns false when the answers may be those of a lost one: ask again soon.
  /// Throws OddAnswer when the iPod does not answer.
  bool ask();

  /// Asks for the texts again with the next ask(). May be called on any thread.
  void refresh() { isRefreshed = true; }

  /// Plays an item of a list; of a list of other things, the tracks of the item.
  void play(const ListPath& path, int index, const Browser::Wanted& isWanted);

  /// Carries out a command of IpodCommand.
  void command(int code, const Browser::Wanted& isWanted);

  /// Sets the modes that are not 0, IpodPlayMode each, and reads both.
  void setModes(int shuffle, int repeat);
  void askModes();

 private:
  void askTexts(int index);
  static bool makesSense(int index, int status, int position);
  void selectOrigin(const Browser::Wanted& isWanted);
  void followGroupStep(bool forward);

  StateBoard& board;
  Browser& browser;
  Playback playing;
  std::optional<ListPath> origin;
  std::optional<int> textsOf;  ///< the index whose texts are known
  bool isDoubtful = false;     ///< the last answers made no sense
  std::atomic<bool> isRefreshed{false};
};

/// The command of a name such as "next-track". No value: there is none.
std::optional<int> commandNamed(const std::string& name);
std::optional<int> shuffleNamed(const std::string& name);
std::optional<int> repeatNamed(const std::string& name);

}  // namespace tool
