#include "faults/fault_text.h"

#include <gtest/gtest.h>

#include "faults/fault_table.h"

namespace simulator {
namespace {

const Cause kCount{0x04, 0x0018};
const Cause kName{0x00, 0x07};

class FaultTextTest : public testing::Test {
 protected:
  void add(const std::string& text) { addFault(plan, text); }
  // Returns the names of the faults of the next reply to this request.
  std::string strike(Cause cause) {
    Outgoing outgoing;
    outgoing.message = {cause.lingo, 0x08, {0x41, 0x00}};
    outgoing.cause = cause;
    outgoing.textOffset = 0;
    return plan.decide(outgoing, FrameKind::kUsb).note;
  }
  std::string refusal(const std::string& text) {
    try {
      add(text);
    } catch (const std::invalid_argument& refused) {
      return refused.what();
    }
    return "accepted";
  }

  Random random{1};
  FaultPlan plan{random};
};

TEST_F(FaultTextTest, WithoutATargetStrikesEveryReply) {
  add("lost");
  EXPECT_EQ(strike(kCount), "lost");
  EXPECT_EQ(strike(kName), "lost");
}

TEST_F(FaultTextTest, StrikesRepliesToOneCommand) {
  add("doubled@04:0018");
  EXPECT_EQ(strike(kName), "");
  EXPECT_EQ(strike(kCount), "doubled");
  EXPECT_EQ(strike(kCount), "doubled");
}

TEST_F(FaultTextTest, StrikesTheNthReplyOnly) {
  add("lost@04:18#2");
  EXPECT_EQ(strike(kCount), "");
  EXPECT_EQ(strike(kName), "");
  EXPECT_EQ(strike(kCount), "lost");
  EXPECT_EQ(strike(kCount), "");
}

TEST_F(FaultTextTest, StrikesFromTheNthReplyOn) {
  add("lost@00:07#2+");
  EXPECT_EQ(strike(kName), "");
  EXPECT_EQ(strike(kName), "lost");
  EXPECT_EQ(strike(kName), "lost");
}

TEST_F(FaultTextTest, StarIsAnyLingoOrCommand) {
  add("lost@04:*#2");
  EXPECT_EQ(strike(kName), "");
  EXPECT_EQ(strike(kCount), "");
  EXPECT_EQ(strike(kCount), "lost");
  plan.clear();
  add("lost@*:07");
  EXPECT_EQ(strike(kCount), "");
  EXPECT_EQ(strike(kName), "lost");
}

TEST_F(FaultTextTest, SeveralFaultsStrikeTogether) {
  add("late=20@00:07");
  add("noise=3");
  EXPECT_EQ(strike(kName), "late, noise");
}

TEST_F(FaultTextTest, ValuesAreDecimalHexadecimalOrNegative) {
  add("drift=-2");
  EXPECT_EQ(plan.drift(kCount), 0xFFFFFFFEu);
  plan.clear();
  add("drift=0x10");
  EXPECT_EQ(plan.drift(kCount), 16u);
}

TEST_F(FaultTextTest, SecondValueFollowsASlash) {
  add("noise=3/0xAA");
  Outgoing outgoing;
  const Fate fate = plan.decide(outgoing, FrameKind::kUsb);
  EXPECT_EQ(fate.noise, (Bytes{0xAA, 0xAA, 0xAA}));
}

TEST_F(FaultTextTest, RandomFaultsHaveAChanceAndKinds) {
  add("random=100/lost");
  EXPECT_EQ(strike(kName), "lost");
  plan.clear();
  add("random=0");
  EXPECT_EQ(strike(kName), "");
  plan.clear();
  add("random=100");
  EXPECT_NE(strike(kName), "");
}

TEST_F(FaultTextTest, CorruptNeedsNoValue) {
  add("corrupt");
  EXPECT_EQ(strike(kName), "corrupt");
}

TEST_F(FaultTextTest, RefusalsSayWhatIsWrong) {
  EXPECT_EQ(refusal("slow=3"), "fault 'slow=3': there is no fault 'slow'");
  EXPECT_EQ(refusal("late"), "fault 'late': write it as late=MS");
  EXPECT_EQ(refusal("late=abc"), "fault 'late=abc': 'abc' is not a number");
  EXPECT_EQ(refusal("late="), "fault 'late=': '' is not a number");
  EXPECT_EQ(refusal("late=99999999999"), "fault 'late=99999999999': '99999999999' is too large");
  EXPECT_EQ(refusal("lost=3"), "fault 'lost=3': lost takes no value");
  EXPECT_EQ(refusal("lost@0418"),
            "fault 'lost@0418': write the reply as LINGO:COMMAND, like 04:001A");
  EXPECT_EQ(refusal("lost@104:18"), "fault 'lost@104:18': '104' is not an id");
  EXPECT_EQ(refusal("lost@04:xx"), "fault 'lost@04:xx': 'xx' is not a number");
  EXPECT_EQ(refusal("lost@04:18#0"), "fault 'lost@04:18#0': replies are counted from 1");
  EXPECT_EQ(refusal("lost@04:18#"), "fault 'lost@04:18#': '' is not a number");
  EXPECT_EQ(refusal("random=101"),
            "fault 'random=101': write the chance in percent, from 0 to 100");
  EXPECT_EQ(refusal("random=5/drift"), "fault 'random=5/drift': drift cannot strike at random");
  EXPECT_EQ(refusal(""), "fault '': there is no fault ''");
}

std::string writtenAgain(const std::string& text) { return faultText(parseFault(text)); }

TEST(FaultText, IsTheTextOfTheUser) {
  for (const char* text :
       {"lost", "lost@04:0018", "lost@04:0018#2", "lost@04:0018#2+", "lost@00:07#1", "lost@0A:04",
        "lost@04:*#2", "lost@*:07", "lost@*:*#1", "late=200@04:001A#3", "noise=3", "noise=3/170",
        "split=4/50@00:07#1", "corrupt", "corrupt=8", "drift=-2@04:0018#1", "drift=2147483647",
        "unplug-sent=12", "text-length=0"}) {
    EXPECT_EQ(writtenAgain(text), text);
  }
}

TEST(FaultText, HasOneFormForEquivalentTexts) {
  EXPECT_EQ(writtenAgain("lost@4:18"), "lost@04:0018");
  EXPECT_EQ(writtenAgain("noise=0x10/0xAA"), "noise=16/170");
  EXPECT_EQ(writtenAgain("lost@00:07#1+"), "lost@00:07");
  EXPECT_EQ(writtenAgain("corrupt=0"), "corrupt");
  EXPECT_EQ(writtenAgain("drift=0xFFFFFFFE"), "drift=-2");
}

TEST(FaultHelp, NamesEveryKindOnASeparateLine) {
  const std::string help = faultHelp();
  for (const FaultRow* row = faultRowsBegin(); row != faultRowsEnd(); ++row) {
    EXPECT_NE(help.find("  " + std::string(row->name)), std::string::npos) << row->name;
    EXPECT_EQ(&faultRow(row->kind), row);
  }
}

}  // namespace
}  // namespace simulator
