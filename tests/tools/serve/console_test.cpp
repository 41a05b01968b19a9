#include "ipodctl/serve/console.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "ipodctl/serve/event_log.h"

namespace tool {
namespace {

using testing::ElementsAre;

/// The lines that are published while `print` writes to standard output.
std::vector<std::string> linesOf(void (*print)()) {
  EventLog log;
  const auto reader = log.read({Topic::kConsole});
  {
    const Console console(log);
    print();
  }
  std::vector<std::string> lines;
  while (const auto event = reader->next(std::chrono::milliseconds(0)))
    lines.push_back(nlohmann::json::parse(event->data)["line"]);
  return lines;
}

TEST(Console, PublishesEachLineOfStandardOutput) {
  const auto print = [] {
    std::printf("\nIPod connected\nIpodConnect");
    std::printf(" end\nthe last one");
  };
  EXPECT_THAT(linesOf(print), ElementsAre("IPod connected", "IpodConnect end", "the last one"));
}

TEST(Console, PublishesWhatIsNotUtf8AndControlCharacters) {
  const auto print = [] { std::printf("genre \x05 \xE9\"\n"); };
  EXPECT_THAT(linesOf(print), ElementsAre("genre \x05 \xEF\xBF\xBD\""));
}

TEST(Console, CutsALineThatDoesNotEnd) {
  const auto print = [] { std::printf("%2500s\n", "x"); };
  const std::vector<std::string> lines = linesOf(print);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0], std::string(1000, ' '));
  EXPECT_EQ(lines[2], std::string(499, ' ') + "x");
}

TEST(Console, LeavesStandardOutputAsItWas) {
  int ends[2] = {};
  ASSERT_EQ(pipe(ends), 0);
  std::fflush(stdout);
  const int before = dup(STDOUT_FILENO);
  dup2(ends[1], STDOUT_FILENO);
  EventLog log;
  {
    const Console console(log);
    EXPECT_EQ(write(console.original(), "own ", 4), 4);
  }
  std::printf("after");
  std::fflush(stdout);
  dup2(before, STDOUT_FILENO);
  close(before);
  close(ends[1]);
  char text[16] = {};
  EXPECT_EQ(read(ends[0], text, sizeof text), 9);
  EXPECT_STREQ(text, "own after");
  close(ends[0]);
}

}  // namespace
}  // namespace tool
