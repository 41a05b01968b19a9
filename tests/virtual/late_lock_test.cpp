// An export that has to wait for the lock uses the state that it finds then, not the earlier one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ipodctl.h>

#include <algorithm>

#include "support/exports.h"
#include "support/host_folder.h"
#include "virtual/story.h"
#include "virtual/virtual_session.h"

namespace virtual_session {
namespace {

using exports::Export;

constexpr unsigned kVarieties = 3;
constexpr uint64_t kSeed = 1;

/// What another thread does before an export gets the lock.
struct Before {
  const char* name;
  void (*act)();
};

void PrintTo(const Before& before, std::ostream* stream) { *stream << before.name; }

constexpr Before kBefore[] = {{"opens_genres", [] { IpodGetFirstItem(0, IPOD_GENRES, 0); }},
                              {"goes_up", [] { IpodGetParentItem(); }},
                              {"disconnects", [] { IpodDisconnect(); }},
                              {"connects", [] {
                                 IpodDisconnect();
                                 IpodConnect();
                               }}};

void startSession() {
  IpodConnect();
  IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  IpodGetNextItem();
  IpodGetFirstItem(1, IPOD_TRACKS, 1);
  IpodValidateUpDownTree();
  IpodSongPlay(0);
  IpodGetNextItem();
  IpodGetNextItem();  // to the second track
}

enum class Meeting { kOneAfterTheOther, kAtTheLock };

/// Returns the story of an export on a separate thread.
Lines ownStory(const Export& exported, unsigned variety, const Before& before, Meeting meeting) {
  VirtualSession session(kSeed);
  EXPECT_EQ(session.run([&] {
    startSession();
    const auto call = [&](Host& host) {
      if (meeting == Meeting::kAtTheLock) session.world.threads().holdAfter(0);
      host.call(exported.name, [&] { return exported.make(variety).result; });
    };
    if (meeting == Meeting::kAtTheLock) {
      session.spawn(call);
      Sleep(1);
    }
    before.act();
    if (meeting == Meeting::kOneAfterTheOther) session.spawn(call);
    session.world.threads().resume();
    session.awaitOthers();
    IpodDisconnect();
  }),
            "");
  Lines own;
  std::copy_if(session.world.trace().begin(), session.world.trace().end(), std::back_inserter(own),
               [](const std::string& line) { return line.find(" host 2: ") != std::string::npos; });
  return storyOf(own);
}

class LateLock : public testing::TestWithParam<Before> {
 protected:
  LateLock() { warmUp(); }

  const session::HostFolder folder;
};

INSTANTIATE_TEST_SUITE_P(All, LateLock, testing::ValuesIn(kBefore),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(LateLock, ActsOnTheStateThatTheHolderLeft) {
  int locked = 0;
  for (const Export& exported : exports::allExports()) {
    for (unsigned variety = 0; variety < kVarieties; ++variety) {
      const Lines after = ownStory(exported, variety, GetParam(), Meeting::kOneAfterTheOther);
      if (std::find(after.begin(), after.end(), "takes the library's lock") == after.end()) break;
      ++locked;
      EXPECT_EQ(ownStory(exported, variety, GetParam(), Meeting::kAtTheLock), after)
          << exported.name << " " << variety;
    }
  }
  EXPECT_GE(locked, 25 * static_cast<int>(kVarieties));
}

}  // namespace
}  // namespace virtual_session
