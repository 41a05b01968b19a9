#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "api/browse_tree.h"
#include "api/ipodctl.h"
#include "api/library_state.h"
#include "support/desk_recorder.h"
#include "support/event_log.h"
#include "support/payload_text.h"
#include "support/quick_time.h"
#include "support/requests.h"
#include "support/scripted_ipod.h"

using namespace requests;

/// The event of the broadcast that asks the host to refresh its display.
constexpr char kRefresh[] = "PostMessageW(0xffff, 0x2400, 0, 0)";

/// Four bytes of a payload, highest first: " 00 00 01 02".
std::string word(std::uint32_t value);

/// One level of a tree: "type=2 count=36 index=-1 start=0 end=35 tab=-1 tabs=2 shown=1 split=1
/// playAll=1".
std::string levelText(const ipodctl::BrowseTree& tree, int level);

/// A level of which nothing is known.
constexpr char kUnknownLevel[] =
    "type=-1 count=-1 index=-1 start=-1 end=-1 tab=-1 tabs=-1 shown=0 split=0 playAll=0";

/// A tree's level and all its levels.
std::vector<std::string> treeText(const ipodctl::BrowseTree& tree);

/// A host's text buffer. It has just the size that the test passes to the library, so that the
/// sanitizer sees a write beyond it.
using Units = std::vector<unsigned short>;

constexpr unsigned short kUntouchedUnit = 0xEEEE;

Units untouched(std::size_t size);

/// A buffer of `size` units that begins with a text, one unit a byte, and is untouched after it.
Units holding(const std::string& text, std::size_t size);

/// Returns what `action` prints on the console.
template <class Action>
std::string printed(const Action& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

/// A scripted iPod that can be connected to, and a recorder of what the library does to its host.
class ApiTest : public testing::Test {
 protected:
  void SetUp() override;

  /// Closes the connection and finds the library lock free, whatever the test did.
  void TearDown() override;

  /// Returns what happened since the start or the last forgetEvents(), without the library's
  /// pauses.
  std::vector<std::string> events();

  /// Returns the requests among them.
  std::vector<std::string> requests();

  void forgetEvents();

  // Answers of the iPod from now on.
  void count(const std::string& category, std::uint32_t records);
  void playState(const std::string& state, std::uint32_t position);
  void playingIndex(std::uint32_t index);
  void record(const std::string& category, std::uint32_t index, const std::string& name);

  /// Opens a new tree with so many items.
  void openTree(int type, std::uint32_t records);

  EventLog log;
  QuickSleep quickSleep{log};
  DeskRecorder desk{log};
  ScriptedIpod ipod{log};
};

/// A connected iPod; the log begins after the connection.
class ConnectedApiTest : public ApiTest {
 protected:
  void SetUp() override;
};

/// Returns whether nobody holds the library lock.
bool libraryLockIsFree();
