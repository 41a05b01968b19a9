#include "ipodctl/serve/event_log.h"

#include <gmock/gmock.h>

#include <thread>

namespace tool {
namespace {

using std::chrono::milliseconds;

TEST(EventLog, DeliversToEachReaderWhatIsPublishedAfterItsConstruction) {
  EventLog log;
  log.publish(Topic::kConsole, "0");
  const auto first = log.read({Topic::kConsole});
  log.publish(Topic::kConsole, "1");
  const auto second = log.read({Topic::kConsole});
  log.publish(Topic::kConsole, "2");
  EXPECT_EQ(first->next(milliseconds(0))->data, "1");
  EXPECT_EQ(first->next(milliseconds(0))->data, "2");
  EXPECT_EQ(second->next(milliseconds(0))->data, "2");
  EXPECT_FALSE(second->next(milliseconds(0)));
  EXPECT_FALSE(second->isClosed());
}

TEST(EventLog, NumbersAllEventsAndDeliversTheChosenTopics) {
  EventLog log;
  const auto reader = log.read({Topic::kState, Topic::kWire});
  log.publish(Topic::kState, "a");
  log.publish(Topic::kConsole, "b");
  log.publish(Topic::kWire, "c");
  const auto state = reader->next(milliseconds(0));
  const auto wire = reader->next(milliseconds(0));
  ASSERT_TRUE(state && wire);
  EXPECT_EQ(wire->id, state->id + 2);
  EXPECT_EQ(wire->topic, Topic::kWire);
}

TEST(EventLog, ClosesAReaderThatIsTooLateAndNoOther) {
  EventLog log;
  const auto slow = log.read({Topic::kConsole});
  const auto quick = log.read({Topic::kConsole});
  for (size_t i = 0; i < EventLog::kMostLate; ++i) {
    log.publish(Topic::kConsole, "x");
    EXPECT_TRUE(quick->next(milliseconds(0)));
  }
  EXPECT_FALSE(slow->isClosed());
  log.publish(Topic::kConsole, "x");
  EXPECT_TRUE(slow->isClosed());
  EXPECT_FALSE(slow->next(milliseconds(0)));
  EXPECT_TRUE(quick->next(milliseconds(0)));
}

TEST(EventLog, ClosesAllReadersAlsoThoseThatWait) {
  EventLog log;
  const auto reader = log.read({Topic::kState});
  std::thread closer([&] { log.close(); });
  EXPECT_FALSE(reader->next(std::chrono::seconds(10)));
  closer.join();
  EXPECT_TRUE(reader->isClosed());
  EXPECT_TRUE(log.read({Topic::kState})->isClosed());
}

TEST(EventLog, WakesAReaderThatWaits) {
  EventLog log;
  const auto reader = log.read({Topic::kState});
  std::thread publisher([&] { log.publish(Topic::kState, "now"); });
  const auto event = reader->next(std::chrono::seconds(10));
  publisher.join();
  ASSERT_TRUE(event);
  EXPECT_EQ(event->data, "now");
}

}  // namespace
}  // namespace tool
