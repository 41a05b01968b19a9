#include "coredll/comm_timeouts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>

namespace {

using coredll::TimeLimit;
using coredll::TransferPlan;

constexpr TimeLimit kNone = std::nullopt;

struct PlanRow {
  const char* name;
  COMMTIMEOUTS timeouts;
  DWORD count;
  DWORD enough;
  TimeLimit total;
  TimeLimit interval;
};

void PrintTo(const PlanRow& row, std::ostream* out) { *out << row.name; }

void expectPlan(const TransferPlan& plan, const PlanRow& row) {
  EXPECT_EQ(plan.enough, row.enough);
  EXPECT_EQ(plan.total, row.total);
  EXPECT_EQ(plan.interval, row.interval);
}

class ReadPlan : public testing::TestWithParam<PlanRow> {};

TEST_P(ReadPlan, FollowsTheTimeouts) {
  expectPlan(coredll::readPlan(GetParam().timeouts, GetParam().count), GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    With, ReadPlan,
    testing::Values(PlanRow{"NoTimeouts", {0, 0, 0, 7, 7}, 10, 10, kNone, kNone},
                    PlanRow{"Constant", {0, 0, 50, 0, 0}, 10, 10, 50, kNone},
                    PlanRow{"Multiplier", {0, 3, 0, 0, 0}, 10, 10, 30, kNone},
                    PlanRow{"BothTotals", {0, 3, 50, 0, 0}, 10, 10, 80, kNone},
                    PlanRow{"GreatestTotals",
                            {0, MAXDWORD, MAXDWORD, 0, 0},
                            MAXDWORD,
                            MAXDWORD,
                            0xffffffff00000000u,
                            kNone},
                    PlanRow{"Interval", {20, 0, 0, 0, 0}, 10, 10, kNone, 20},
                    PlanRow{"IntervalAndTotals", {20, 3, 50, 0, 0}, 10, 10, 80, 20},
                    PlanRow{"ImpatientInterval", {MAXDWORD, 0, 0, 7, 7}, 10, 0, kNone, kNone},
                    PlanRow{
                        "ImpatientMultiplier", {MAXDWORD, MAXDWORD, 50, 0, 0}, 10, 1, 50, kNone},
                    PlanRow{"ImpatientConstant", {MAXDWORD, 0, 50, 0, 0}, 10, 1, 50, kNone},
                    PlanRow{"ImpatientTotals", {MAXDWORD, 3, 50, 0, 0}, 10, 1, 80, kNone}));

class WritePlan : public testing::TestWithParam<PlanRow> {};

TEST_P(WritePlan, FollowsTheTimeouts) {
  expectPlan(coredll::writePlan(GetParam().timeouts, GetParam().count), GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    With, WritePlan,
    testing::Values(PlanRow{"NoTimeouts", {MAXDWORD, 7, 7, 0, 0}, 10, 10, kNone, kNone},
                    PlanRow{"Constant", {0, 0, 0, 0, 50}, 10, 10, 50, kNone},
                    PlanRow{"Multiplier", {0, 0, 0, 3, 0}, 10, 10, 30, kNone},
                    PlanRow{"BothTotals", {0, 0, 0, 3, 50}, 10, 10, 80, kNone}));

TEST(CommTimeouts, AreUnusableOnlyWhenEveryReadTimeoutIsTheMaximum) {
  EXPECT_FALSE(coredll::areUsable({MAXDWORD, MAXDWORD, MAXDWORD, 0, 0}));
  EXPECT_TRUE(coredll::areUsable({MAXDWORD, MAXDWORD, MAXDWORD - 1, 0, 0}));
  EXPECT_TRUE(coredll::areUsable({0, MAXDWORD, MAXDWORD, 0, 0}));
  EXPECT_TRUE(coredll::areUsable({MAXDWORD, 0, 0, MAXDWORD, MAXDWORD}));
}

}  // namespace
