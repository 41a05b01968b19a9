#include "faults/fault_text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "faults/fault_table.h"

namespace simulator {

namespace {

constexpr double kMostPercent = 100;

[[noreturn]] void refuseFault(const std::string& text, const std::string& why) {
  throw std::invalid_argument("fault '" + text + "': " + why);
}

/// Returns the parts before and after the first separator; the second is empty when there is none.
std::pair<std::string, std::string> cutAt(const std::string& text, char separator) {
  const size_t place = text.find(separator);
  if (place == std::string::npos) return {text, ""};
  return {text.substr(0, place), text.substr(place + 1)};
}

bool has(const std::string& text, char separator) {
  return text.find(separator) != std::string::npos;
}

long long parseInteger(const std::string& number, int base, const std::string& text) {
  char* end = nullptr;
  const long long value = std::strtoll(number.c_str(), &end, base);
  const bool isWhole = !number.empty() && *end == '\0' && number.find(' ') == std::string::npos;
  if (!isWhole) refuseFault(text, "'" + number + "' is not a number");
  return value;
}

uint32_t parseNumber(const std::string& number, const std::string& text) {
  const bool isHexadecimal = number.rfind("0x", 0) == 0;
  const long long value = parseInteger(number, isHexadecimal ? 16 : 10, text);
  if (value < INT32_MIN || value > UINT32_MAX) refuseFault(text, "'" + number + "' is too large");
  return static_cast<uint32_t>(value);
}

std::optional<uint16_t> parseId(const std::string& id, long long most, const std::string& text) {
  if (id == "*") return std::nullopt;
  const long long value = parseInteger(id, 16, text);
  if (value < 0 || value > most) refuseFault(text, "'" + id + "' is not an id");
  return static_cast<uint16_t>(value);
}

void parseOrdinal(const std::string& ordinal, FaultTarget& target, const std::string& text) {
  const bool isOnwards = !ordinal.empty() && ordinal.back() == '+';
  const std::string digits = isOnwards ? ordinal.substr(0, ordinal.size() - 1) : ordinal;
  const long long number = parseInteger(digits, 10, text);
  if (number < 1 || number > INT32_MAX) refuseFault(text, "replies are counted from 1");
  target = isOnwards ? target.from(static_cast<uint32_t>(number))
                     : target.nth(static_cast<uint32_t>(number));
}

FaultTarget parseTarget(const std::string& address, const std::string& text) {
  const auto [command, ordinal] = cutAt(address, '#');
  if (!has(command, ':')) refuseFault(text, "write the reply as LINGO:COMMAND, like 04:001A");
  const auto [lingo, id] = cutAt(command, ':');
  FaultTarget target;
  const std::optional<uint16_t> lingoId = parseId(lingo, 0xFF, text);
  if (lingoId) target.lingo = static_cast<uint8_t>(*lingoId);
  target.command = parseId(id, 0xFFFF, text);
  if (has(address, '#')) parseOrdinal(ordinal, target, text);
  return target;
}

const FaultRow& parseKind(const std::string& name, const std::string& text) {
  const FaultRow* row = findFaultRow(name);
  if (row == nullptr) refuseFault(text, "there is no fault '" + name + "'");
  return *row;
}

void parseValues(const FaultRow& row, const std::string& values, Fault& fault,
                 const std::string& text) {
  if (*row.values == '\0') refuseFault(text, std::string(row.name) + " takes no value");
  const auto [first, second] = cutAt(values, '/');
  fault.value = parseNumber(first, text);
  if (has(values, '/')) fault.value2 = parseNumber(second, text);
}

/// Returns how to write a fault, such as "lost", "late=MS" or "corrupt[=N]".
std::string usageOf(const FaultRow& row) {
  const std::string values = row.values;
  if (values.empty()) return row.name;
  return row.name + (values.front() == '[' ? "[=" + values.substr(1) : "=" + values);
}

/// Returns the text of the numbers; empty for a fault without a number, and for a number that is
/// optional.
std::string valueText(const Fault& fault) {
  const std::string values = faultRow(fault.kind).values;
  const bool isLeftOut = values.empty() || (values.front() == '[' && fault.value == 0);
  if (isLeftOut) return "";
  const bool isSigned = fault.kind == FaultKind::kDrift;
  const std::string value =
      isSigned ? std::to_string(static_cast<int32_t>(fault.value)) : std::to_string(fault.value);
  return "=" + value + (fault.value2 == 0 ? "" : "/" + std::to_string(fault.value2));
}

std::string idText(std::optional<uint16_t> id, size_t bytes) {
  if (!id) return "*";
  char digits[8];
  std::snprintf(digits, sizeof digits, "%0*X", static_cast<int>(2 * bytes), *id);
  return digits;
}

std::string targetText(const FaultTarget& target) {
  const bool isAny = !target.lingo && !target.command;
  if (isAny && target.first == 1 && target.last != 1) return "";
  const std::string address = "@" + idText(target.lingo, 1) + ":" +
                              idText(target.command, commandWidth(target.lingo.value_or(0)));
  if (target.first == target.last) return address + "#" + std::to_string(target.first);
  return target.first == 1 ? address : address + "#" + std::to_string(target.first) + "+";
}

RandomFaults parseRandom(const std::string& values, const std::string& text) {
  const auto [percent, names] = cutAt(values, '/');
  char* end = nullptr;
  const double chance = std::strtod(percent.c_str(), &end);
  const bool isValid = !percent.empty() && *end == '\0' && chance >= 0 && chance <= kMostPercent;
  if (!isValid) refuseFault(text, "write the chance in percent, from 0 to 100");
  RandomFaults faults;
  faults.perThousand = static_cast<uint32_t>(std::lround(chance * 10));
  std::istringstream list(names);
  for (std::string name; std::getline(list, name, ',');) {
    const FaultRow& row = parseKind(name, text);
    if (row.stage != FaultStage::kReply) refuseFault(text, name + " cannot strike at random");
    faults.kinds.push_back(row.kind);
  }
  return faults;
}

std::string randomText(const RandomFaults& faults) {
  const uint32_t tenths = faults.perThousand % 10;
  std::string text = "random=" + std::to_string(faults.perThousand / 10) +
                     (tenths == 0 ? "" : "." + std::to_string(tenths));
  for (size_t i = 0; i < faults.kinds.size(); ++i)
    text += (i == 0 ? "/" : ",") + std::string(faultRow(faults.kinds[i]).name);
  return text;
}

}  // namespace

Fault parseFault(const std::string& text) {
  const auto [what, address] = cutAt(text, '@');
  const auto [name, values] = cutAt(what, '=');
  const FaultRow& row = parseKind(name, text);
  Fault fault;
  fault.kind = row.kind;
  if (has(what, '=')) {
    parseValues(row, values, fault, text);
  } else if (*row.values != '\0' && *row.values != '[') {
    refuseFault(text, "write it as " + usageOf(row));
  }
  if (has(text, '@')) fault.target = parseTarget(address, text);
  return fault;
}

void addFault(FaultPlan& plan, const std::string& text) {
  const std::string random = "random=";
  if (text.rfind(random, 0) == 0) {
    plan.strikeAtRandom(parseRandom(text.substr(random.size()), text));
  } else {
    plan.add(parseFault(text));
  }
}

std::string faultText(const Fault& fault) {
  return faultRow(fault.kind).name + valueText(fault) + targetText(fault.target);
}

std::vector<std::string> faultTexts(const FaultPlan& plan) {
  std::vector<std::string> texts;
  for (const Fault& fault : plan.added())
    texts.push_back(faultText(fault));
  if (plan.atRandom().perThousand > 0) texts.push_back(randomText(plan.atRandom()));
  return texts;
}

std::string faultHelp() {
  constexpr size_t kColumn = 28;
  std::string help;
  for (const FaultRow* row = faultRowsBegin(); row != faultRowsEnd(); ++row) {
    std::string usage = "  " + usageOf(*row);
    usage.resize(std::max(kColumn, usage.size() + 1), ' ');
    help += usage + row->meaning + "\n";
  }
  return help;
}

}  // namespace simulator
