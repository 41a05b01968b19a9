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

/// Runs a check for each trace of a list; a failure says which.
template <typename Check>
void forEach(const std::vector<std::string>& names, Check check) {
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    check(name, contentOf(traceOf(name)));
  }
}

std::string inLowercaseWithCrLf(const std::string& text) {
  std::string changed;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const size_t data = line.find(" < ");
    if (data != std::string::npos) {
      std::transform(line.begin() + static_cast<ptrdiff_t>(data), line.end(),
                     line.begin() + static_cast<ptrdiff_t>(data),
                     [](unsigned char one) { return static_cast<char>(std::tolower(one)); });
    }
    changed += line + "\r\n";
  }
  return changed;
}

trace::Trace laterAndOnAnotherDevice(trace::Trace records) {
  for (trace::Record& record : records) {
    record.at += std::chrono::hours(30);
    if (record.device == "IPD1:") record.device = "IPD7:";
  }
  return records;
}

TEST(EachTrace, HasItsDiagnosis) {
  forEach(recordedNames(), [](const std::string& name, const std::string& text) {
    EXPECT_EQ(textOf(diagnose(trace::parseTrace(text))), contentOf(diagnosisOf(name)));
  });
}

TEST(EachTrace, HasTheCallsThatMadeIt) {
  forEach(recordedNames(), [](const std::string& name, const std::string&) {
    const auto calls = contentOf(std::filesystem::path(TRACES_FOLDER) / (name + ".calls"));
    EXPECT_EQ(calls.rfind("IpodConnect() = ", 0), 0u);
  });
}

TEST(EachTrace, HasTheSameCausesInLowercaseWithCrLf) {
  forEach(recordedNames(), [](const std::string&, const std::string& text) {
    EXPECT_EQ(causesOf(inLowercaseWithCrLf(text)), causesOf(text));
  });
}

TEST(EachTrace, HasTheSameCausesHoweverTheBytesAreRead) {
  forEach(recordedNames(), [](const std::string&, const std::string& text) {
    const trace::Trace records = trace::parseTrace(text);
    EXPECT_EQ(causesOf(inSingleBytes(records)), causesOf(records));
    EXPECT_EQ(causesOf(joined(records)), causesOf(records));
  });
}

TEST(EachTrace, HasTheSameCausesLaterAndOnAnotherDevice) {
  forEach(recordedNames(), [](const std::string&, const std::string& text) {
    const trace::Trace records = trace::parseTrace(text);
    EXPECT_EQ(causesOf(laterAndOnAnotherDevice(records)), causesOf(records));
  });
}

TEST(EachTrace, HasTheSameDiagnosisWhenItIsRedacted) {
  forEach(recordedNames(), [](const std::string& name, const std::string& text) {
    EXPECT_EQ(textOf(diagnose(trace::parseTrace(redacted(text)))), contentOf(diagnosisOf(name)));
  });
}

TEST(HealthyTrace, HasNoFaultWhereverTheRecordingIsCut) {
  forEach(healthyNames(), [](const std::string&, const std::string& text) {
    constexpr size_t kStep = 11;
    for (size_t size = 20; size < text.size(); size += kStep)
      ASSERT_THAT(causesOf(text.substr(0, size)), IsEmpty()) << "cut after " << size << " bytes";
  });
}

TEST(HealthyTrace, HasNoFaultWhereverTheRecordingBegins) {
  forEach(healthyNames(), [](const std::string&, const std::string& text) {
    const trace::Trace whole = trace::parseTrace(text);
    for (size_t first = 0; first < whole.size(); ++first) {
      const trace::Trace rest(whole.begin() + static_cast<ptrdiff_t>(first), whole.end());
      ASSERT_THAT(causesOf(rest), IsEmpty()) << "begun at line " << whole[first].line;
    }
  });
}

TEST(HealthyTrace, HasNoFaultWhereverLinesAreLost) {
  forEach(healthyNames(), [](const std::string&, const std::string& text) {
    const trace::Trace whole = trace::parseTrace(text);
    for (size_t first = 1; first + 3 < whole.size(); ++first) {
      trace::Trace rest = whole;
      const auto lost = rest.begin() + static_cast<ptrdiff_t>(first);
      const size_t gap = lost->line;
      rest.erase(lost, lost + 3);
      const Diagnosis diagnosis = diagnose(rest, {gap});
      ASSERT_TRUE(diagnosis.findings.empty())
          << diagnosis.findings[0].cause << " without line " << gap;
    }
  });
}

TEST(Corpus, HasEnoughBrokenAndHealthySessions) {
  constexpr size_t kBroken = 16;
  constexpr size_t kHealthy = 30;
  EXPECT_GE(healthyNames().size(), kHealthy);
  EXPECT_GE(recordedNames().size() - healthyNames().size(), kBroken);
}

}  // namespace
}  // namespace iaptrace::checking::corpus
