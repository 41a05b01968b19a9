#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

/// A row of a table of tests. Its name says what the row shows, in upper camel case.
struct NamedRow {
  const char* name;
};

inline std::ostream& operator<<(std::ostream& out, const NamedRow& row) { return out << row.name; }

/// Names a test of a table after its row.
template <class Row>
std::string rowName(const testing::TestParamInfo<Row>& row) {
  return row.param.name;
}
