// The recorded traces: what `iaptrace check` says about each, whole, cut and written differently.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "iaptrace/check_diagnosis.h"
#include "iaptrace/redaction.h"
#include "trace/trace_parser.h"

namespace iaptrace::checking::corpus {
namespace {

using ::testing::IsEmpty;
using Names = std::set<std::string>;

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

std::filesystem::path traceOf(const std::string& name) {
  return std::filesystem::path(TRACES_FOLDER) / (name + ".trace");
}

std::filesystem::path diagnosisOf(const std::string& name) {
  return std::filesystem::path(TRACES_FOLDER) / (name + ".diagnosis");
}

std::vector<std::string> recordedNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(TRACES_FOLDER)) {
    if (entry.path().extension() == ".trace") names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool isHealthy(const std::string& name) {
  return contentOf(diagnosisOf(name)).rfind("no fault found", 0) == 0;
}

std::vector<std::string> healthyNames() {
  std::vector<std::string> names = recordedNames();
  names.erase(std::remove_if(names.begin(), names.end(),
                             [](const std::string& name) { return !isHealthy(name); }),
              names.end());
  return names;
}

Names causesOf(const trace::Trace& records) {
  Names causes;
  for (const Finding& finding : diagnose(records).findings)
    causes.insert(finding.cause);
  return causes;
}

Names causesOf(const std::string& text) { return causesOf(trace::parseTrace(text)); }

/// Every record of data as one record for each byte.
trace::Trace inSingleBytes(const trace::Trace& records) {
  trace::Trace split;
  for (const trace::Record& record : records) {
    if (!record.isData()) split.push_back(record);
    for (const uint8_t byte : record.bytes) {
      trace::Record one = record;
      one.bytes = {byte};
      split.push_back(one);
    }
  }
  return split;
}

/// Data that follows data of the same direction within a tenth of a second is in its record.
trace::Trace joined(const trace::Trace& records) {
  trace::Trace together;
  for (const trace::Record& record : records) {
    const bool follows = !together.empty() && together.back().kind == record.kind &&
                         record.isData() &&
                         record.at - together.back().at < std::chrono::milliseconds(100);
    if (!follows) {
      together.push_back(record);
    } else {
      together.back().bytes.insert(together.back().bytes.end(), record.bytes.begin(),
                                   record.bytes.end());
    }
  }
  return together;
}

class EachTrace : public ::testing::TestWithParam<std::string> {
 protected:
  std::string text() const { return contentOf(traceOf(GetParam())); }
};

class HealthyTrace : public EachTrace {};

TEST_P(EachTrace, HasItsDiagnosis) {
  EXPECT_EQ(textOf(diagnose(trace::parseTrace(text()))), contentOf(diagnosisOf(GetParam())));
}

TEST_P(EachTrace, HasTheCallsThatMadeIt) {
  const std::string calls =
      contentOf(std::filesystem::path(TRACES_FOLDER) / (GetParam() + ".calls"));
  EXPECT_EQ(calls.rfind("IpodConnect() = ", 0), 0u);
}

TEST_P(EachTrace, HasTheSameCausesInLowercaseWithCrLf) {
  std::string changed;
  for (const char one : text()) {
    if (one == '\n') changed += '\r';
    changed += one;
  }
  for (size_t data = changed.find(" < "); data != std::string::npos;
       data = changed.find(" < ", data + 1)) {
    const size_t end = changed.find('\r', data);
    std::transform(changed.begin() + static_cast<ptrdiff_t>(data),
                   changed.begin() + static_cast<ptrdiff_t>(end),
                   changed.begin() + static_cast<ptrdiff_t>(data),
                   [](unsigned char one) { return static_cast<char>(std::tolower(one)); });
  }
  EXPECT_EQ(causesOf(changed), causesOf(text()));
}

TEST_P(EachTrace, HasTheSameCausesHoweverTheBytesAreRead) {
  const trace::Trace records = trace::parseTrace(text());
  EXPECT_EQ(causesOf(inSingleBytes(records)), causesOf(records));
  EXPECT_EQ(causesOf(joined(records)), causesOf(records));
}

TEST_P(EachTrace, HasTheSameCausesLaterAndOnAnotherDevice) {
  trace::Trace records = trace::parseTrace(text());
  const Names before = causesOf(records);
  for (trace::Record& record : records) {
    record.at += std::chrono::hours(30);
    if (record.device == "IPD1:") record.device = "IPD7:";
  }
  EXPECT_EQ(causesOf(records), before);
}

TEST_P(EachTrace, HasTheSameDiagnosisWhenItIsRedacted) {
  EXPECT_EQ(textOf(diagnose(trace::parseTrace(redacted(text())))),
            contentOf(diagnosisOf(GetParam())));
}

TEST_P(HealthyTrace, HasNoFaultWhereverTheRecordingIsCut) {
  const std::string whole = text();
  constexpr size_t kStep = 11;
  for (size_t size = 20; size < whole.size(); size += kStep)
    ASSERT_THAT(causesOf(whole.substr(0, size)), IsEmpty()) << "cut after " << size << " bytes";
}

TEST_P(HealthyTrace, HasNoFaultWhereverTheRecordingBegins) {
  const trace::Trace whole = trace::parseTrace(text());
  for (size_t first = 0; first < whole.size(); ++first) {
    const trace::Trace rest(whole.begin() + static_cast<ptrdiff_t>(first), whole.end());
    ASSERT_THAT(causesOf(rest), IsEmpty()) << "begun at line " << whole[first].line;
  }
}

std::string testName(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Corpus, EachTrace, ::testing::ValuesIn(recordedNames()), testName);
INSTANTIATE_TEST_SUITE_P(Corpus, HealthyTrace, ::testing::ValuesIn(healthyNames()), testName);

TEST(Corpus, HasEnoughBrokenAndHealthySessions) {
  constexpr size_t kBroken = 16;
  constexpr size_t kHealthy = 30;
  EXPECT_GE(healthyNames().size(), kHealthy);
  EXPECT_GE(recordedNames().size() - healthyNames().size(), kBroken);
}

}  // namespace
}  // namespace iaptrace::checking::corpus
