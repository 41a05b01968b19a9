// The dissector for Wireshark: its table of commands, and what tshark prints with it.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "iaptrace/capture_file.h"
#include "typed_trace.h"
#include "wire/command_layout.h"

namespace iaptrace::dissector_test {
namespace {

using testing::HasSubstr;

std::string dissector() {
  std::ifstream file(DISSECTOR);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

TEST(Dissector, HasTheNamesOfAllCommands) {
  std::map<uint32_t, std::string> inLua;
  const std::string text = dissector();
  const std::regex row("\\[0x([0-9A-F]{6})\\] = \"(\\w+)\",");
  for (std::sregex_iterator found(text.begin(), text.end(), row), end; found != end; ++found)
    inLua[static_cast<uint32_t>(std::stoul((*found)[1], nullptr, 16))] = (*found)[2];
  std::map<uint32_t, std::string> expected;
  for (const simulator::CommandLayout& layout : simulator::commandLayouts())
    expected[static_cast<uint32_t>(layout.lingo) << 16 | layout.command] = layout.name;
  EXPECT_EQ(inLua, expected);
}

std::string outputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = popen(command.c_str(), "r");
  char part[4096];
  while (std::fgets(part, sizeof part, pipe) != nullptr)
    output += part;
  const int status = pclose(pipe);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? output : "failed: " + output;
}

std::string dissected(const std::string& lines, const std::string& options) {
  char name[] = "/tmp/dissector_test_XXXXXX";
  const std::filesystem::path folder = mkdtemp(name);
  const std::string file = folder / "a.pcapng";
  std::ofstream(file, std::ios::binary) << captureOf(trace::parseTrace(traceText(lines)));
  const std::string output =
      outputOf("HOME=" + folder.string() + " timeout 60 tshark -X lua_script:" DISSECTOR " -r " +
               file + " " + options + " 2>" + file + ".errors");
  std::filesystem::remove_all(folder);
  return output;
}

constexpr char kSession[] =
    "0.1 IPD1: > FF 55 04 04 00 18 02 DE\n"
    "0.2 IPD1: < 55 07 04 00 19 00 00 00 53 89\n"
    "0.3 IPD1: < 55 06 00 08 50 6F 64 00 CF\n"
    "0.4 IPD1: < 55 04 00 02 00 05 F5\n"
    "0.5 IPD1: < 55 04 00 02 00 05 F6\n"
    "0.6 IPD1: < 13 A9\n";

TEST(Dissector, ShowsCommandsByNameInTshark) {
  EXPECT_EQ(dissected(kSession, "-T fields -e _ws.col.Source -e _ws.col.Info"),
            "host\tGetNumberCategorizedDbRecords\n"
            "iPod\tReturnNumberCategorizedDbRecords\n"
            "iPod\tReturniPodName \"Pod\"\n"
            "iPod\tiPodAck EnterRemoteUIMode ok\n"
            "iPod\tiPodAck EnterRemoteUIMode ok [wrong checksum]\n"
            "iPod\tnot a whole frame\n");
}

TEST(Dissector, HasFieldsToFilterFor) {
  EXPECT_EQ(dissected(kSession,
                      "-Y 'ipod_iap.name == \"iPodAck\" && ipod_iap.status == 0' -T fields -e "
                      "frame.number -e ipod_iap.acknowledged"),
            "4\tEnterRemoteUIMode\n5\tEnterRemoteUIMode\n");
}

TEST(Dissector, ShowsCommentsAndTimes) {
  EXPECT_EQ(
      dissected(kSession, "-Y 'frame.number == 6' -T fields -e frame.time_epoch -e frame.comment"),
      "0.600000000\tnoise\n");
}

TEST(Dissector, ShowsEventsAsComments) {
  EXPECT_EQ(dissected("# 0.1 IPD1: open ok\n0.2 IPD1: > 55 03 00 08 50 A5\n# 0.3 IPD1: close\n",
                      "-T fields -E separator=/t -E aggregator=/s -e frame.comment"),
            "open ok no answer close\n");
}

TEST(CaptureFile, HasTheEventsOfADeviceWithoutPackets) {
  const std::string file = captureOf(trace::parseTrace(traceText("# 0.1 IPD1: open failed 2\n")));
  EXPECT_NE(file.find("open failed 2"), std::string::npos);
}

}  // namespace
}  // namespace iaptrace::dissector_test
