#include "api/api_test.h"

#include <sstream>

#include "api/list_rules.h"

using namespace ipodctl;

std::string word(std::uint32_t value) {
  Bytes bytes;
  for (int shift = 24; shift >= 0; shift -= 8)
    bytes.push_back(static_cast<std::uint8_t>(value >> shift));
  return ' ' + payloadText(bytes);
}

std::string levelText(const BrowseTree& tree, int level) {
  std::ostringstream text;
  text << "type=" << typeOfCategory(tree.levels[level].type)
       << " count=" << tree.levels[level].count.get() << " index=" << tree.levels[level].index.get()
       << " start=" << tree.levels[level].start.get() << " end=" << tree.levels[level].end.get()
       << " tab=" << tree.levels[level].tab.get() << " tabs=" << tree.levels[level].tabCount.get()
       << " shown=" << int{tree.levels[level].tabsShown.get()}
       << " split=" << int{tree.levels[level].isTabbed.get()}
       << " playAll=" << int{tree.levels[level].hasPlayAll.get()};
  return text.str();
}

std::vector<std::string> treeText(const BrowseTree& tree) {
  std::vector<std::string> lines = {"level " + std::to_string(tree.level.get())};
  for (int level = 0; level < 8; ++level)
    lines.push_back(levelText(tree, level));
  return lines;
}

Units untouched(std::size_t size) { return Units(size, kUntouchedUnit); }

Units holding(const std::string& text, std::size_t size) {
  Units units = untouched(size);
  for (std::size_t i = 0; i < text.size(); ++i)
    units.at(i) = static_cast<unsigned char>(text[i]);
  return units;
}

bool libraryLockIsFree() {
  if (WaitForSingleObject(libraryLock.handle(), 0) != WAIT_OBJECT_0) return false;
  return ReleaseSemaphore(libraryLock.handle(), 1, nullptr) != FALSE;
}

void ApiTest::SetUp() {
  IpodSetSameIpod(0);
  ipodPlayDelayFlag = 0;
}

void ApiTest::TearDown() {
  IpodDisconnect();
  EXPECT_TRUE(libraryLock.handle() == nullptr || libraryLockIsFree());
}

std::vector<std::string> ApiTest::events() {
  ipod.settle();
  return log.eventsWithout({"Sleep("});
}

std::vector<std::string> ApiTest::requests() {
  ipod.settle();
  return log.eventsWithout(
      {"Sleep(", "PostMessageW(", "Select", "StartIpod", "StopIpod", "IpodAudio"});
}

void ApiTest::forgetEvents() {
  ipod.settle();
  log.clear();
}

void ApiTest::count(const std::string& category, std::uint32_t records) {
  ipod.answer(kCountRecords + " " + category, {"04 00 19" + word(records)});
}

void ApiTest::playState(const std::string& state, std::uint32_t position) {
  ipod.answer(kGetPlayStatus, {"04 00 1D 00 03 0D 40" + word(position) + ' ' + state});
}

void ApiTest::playingIndex(std::uint32_t index) {
  ipod.answer(kGetCurrentTrackIndex, {"04 00 1F" + word(index)});
}

void ApiTest::record(const std::string& category, std::uint32_t index, const std::string& name) {
  ipod.answer(kRetrieveRecords + " " + category + word(index) + " 00 00 00 01",
              {"04 00 1B" + word(index) + textBytes(name)});
}

void ApiTest::openTree(int type, std::uint32_t records) {
  constexpr const char* kTopCategories[] = {"", "01", "02", "03", "04", "05", "07", "08", "06"};
  count(kTopCategories[type], records);
  ASSERT_NE(IpodGetFirstItem(0, type, 0), nullptr);
  forgetEvents();
}

void ConnectedApiTest::SetUp() {
  ApiTest::SetUp();
  ASSERT_EQ(IpodConnect(), 1);
  forgetEvents();
}
