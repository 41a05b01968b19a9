// The small parts of the head unit: texts, paths, kept names and the queue of requests.
#include <gmock/gmock.h>
#include <ipodctl.h>

#include <thread>

#include "ipodctl/serve/ipod_text.h"
#include "ipodctl/serve/job_queue.h"
#include "ipodctl/serve/list_path.h"
#include "ipodctl/serve/name_store.h"

namespace tool {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

constexpr auto kAlways = [] { return true; };

TEST(IpodText, IsLatinAndWithoutTheZerosAtItsEnd) {
  IpodText text;
  EXPECT_FALSE(text.isWritten());
  EXPECT_EQ(text.utf8(), "");
  const unsigned short units[] = {5, 'A', 0, 0xE9, 0xFF, 0};
  std::copy(std::begin(units), std::end(units), text.buffer());
  EXPECT_TRUE(text.isWritten());
  EXPECT_EQ(text.utf8(1), "A\xEF\xBF\xBD\xC3\xA9\xC3\xBF");
}

TEST(IpodText, CanFillItsBuffer) {
  IpodText text;
  std::fill_n(text.buffer(), IpodText::kSize, static_cast<unsigned short>('x'));
  EXPECT_EQ(text.utf8(), std::string(256, 'x'));
}

TEST(IpodText, IsCutBetweenCharacters) {
  EXPECT_EQ(firstCharacters("\xC3\xA9"
                            "ab",
                            2),
            "\xC3\xA9"
            "a");
  EXPECT_EQ(firstCharacters("ab", 4), "ab");
}

TEST(ListPath, IsReadAndWritten) {
  const auto path = parseListPath("artists/03/albums/all/all-tracks");
  ASSERT_TRUE(path);
  EXPECT_THAT(*path, ElementsAre(ListStep{0, IPOD_ARTISTS, false}, ListStep{3, IPOD_ALBUMS, false},
                                 ListStep{-1, IPOD_TRACKS, true}));
  EXPECT_EQ(textOf(*path), "artists/3/albums/all/all-tracks");
}

TEST(ListPath, IsRefusedWhenItIsNone) {
  for (const char* text :
       {"", "/", "artist", "artists/", "artists/1", "artists//albums", "artists/-1/albums",
        "artists/+1/albums", "artists/1x/albums", "artists/99999999999/albums", "all-tracks",
        "tracks/1/albums", "artists/1/albums/"}) {
    EXPECT_FALSE(parseListPath(text)) << text;
  }
}

TEST(NameStore, KeepsNamesOfTheConnection) {
  NameStore store;
  store.keep("albums", 7, "Tin");
  EXPECT_EQ(store.name("albums", 7), "Tin");
  EXPECT_FALSE(store.name("albums", 8));
  EXPECT_FALSE(store.name("artists", 7));
  store.clear();
  EXPECT_FALSE(store.name("albums", 7));
}

TEST(NameStore, DropsWhatWasNotUsedForTheLongestTime) {
  NameStore store;
  store.keep("albums", 0, "used");
  store.keep("albums", 100, "unused");
  for (int i = 0; i < static_cast<int>(NameStore::kMostNames) - 100; ++i)
    store.keep("tracks", i, "x");
  EXPECT_TRUE(store.name("albums", 0));
  store.keep("tracks", static_cast<int>(NameStore::kMostNames), "x");
  EXPECT_TRUE(store.name("albums", 0));
  EXPECT_FALSE(store.name("albums", 100));
}

/// Runs jobs that were queued while nobody worked.
class Workshop {
 public:
  Workshop() { queue.accept(); }
  ~Workshop() {
    for (std::thread& each : clients)
      each.join();
  }

  /// A client whose job notes its name `parts` times.
  void order(const std::string& name, Urgency urgency, int parts) {
    const size_t before = ordered++;
    clients.emplace_back([=] {
      int left = parts;
      Job job;
      job.doPart = [&] {
        done.push_back(name);
        return --left == 0;
      };
      job.isWanted = kAlways;
      job.urgency = urgency;
      isQueued = before + 1;
      queue.carryOut(job);
    });
    while (isQueued <= before)
      std::this_thread::yield();
    std::this_thread::sleep_for(milliseconds(30));  // it is in the queue
  }
  void work(int parts) {
    for (int i = 0; i < parts; ++i)
      queue.workUntil(JobQueue::Clock::now());
  }

  JobQueue queue;
  std::vector<std::string> done;

 private:
  std::vector<std::thread> clients;
  size_t ordered = 0;
  std::atomic<size_t> isQueued{0};
};

TEST(JobQueue, TakesPlaybackFirstAndThenTheNewestNames) {
  Workshop workshop;
  workshop.order("old", Urgency::kNames, 2);
  workshop.work(1);
  workshop.order("new", Urgency::kNames, 1);
  workshop.order("next", Urgency::kPlayback, 1);
  workshop.order("pause", Urgency::kPlayback, 1);
  workshop.work(4);
  EXPECT_THAT(workshop.done, ElementsAre("old", "next", "pause", "new", "old"));
}

TEST(JobQueue, DropsWhatNobodyWaitsFor) {
  JobQueue queue;
  queue.accept();
  bool wasDone = false;
  const auto note = [&] {
    wasDone = true;
    return true;
  };
  EXPECT_THROW(queue.carryOut({note, [] { return false; }}), NotWanted);
  queue.workUntil(JobQueue::Clock::now());
  EXPECT_FALSE(wasDone);
}

TEST(JobQueue, RefusesWithoutAnIpodWhatNeedsOne) {
  JobQueue queue;
  EXPECT_THROW(queue.carryOut({kAlways, kAlways}), Refused);
  queue.close();
  EXPECT_THROW(queue.carryOut({kAlways, kAlways, Urgency::kPlayback, false}), Refused);
}

TEST(JobQueue, RefusesAfterThreeOddAnswers) {
  JobQueue queue;
  queue.accept();
  int attempts = 0;
  std::thread client([&] {
    const auto fail = [&]() -> bool {
      ++attempts;
      throw OddAnswer();
    };
    try {
      queue.carryOut({fail, kAlways});
      ADD_FAILURE() << "not refused";
    } catch (const Refused& refused) {
      EXPECT_EQ(refused.refusal, Refusal::kNoAnswer);
    }
  });
  const auto limit = JobQueue::Clock::now() + std::chrono::seconds(10);
  for (int i = 0; i < 3; ++i)
    EXPECT_THROW(queue.workUntil(limit), OddAnswer);
  client.join();
  EXPECT_EQ(attempts, 3);
}

}  // namespace
}  // namespace tool
