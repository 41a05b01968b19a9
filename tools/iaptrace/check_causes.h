// The causes that `iaptrace check` reports.
#pragma once

#include <string>
#include <string_view>

namespace iaptrace::checking {

struct Cause {
  std::string_view id;       ///< ends in '-' when the name of a stage follows
  std::string_view meaning;  ///< two sentences
  std::string_view whatToTry;
};

/// Returns the cause with this id, which is one of the list.
const Cause& causeOf(std::string_view id);

/// Returns words in lines of a width that a person reads, each with an indentation.
std::string wrapped(std::string_view words);

/// Returns what the cause means and what to try, in lines.
std::string explanationOf(const Cause& cause);

/// Returns all ids, each with its meaning, and the stages.
std::string causesHelp();

}  // namespace iaptrace::checking
