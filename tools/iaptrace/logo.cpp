#include "iaptrace/logo.h"

#include "wire/fields.h"

namespace iaptrace {
namespace {

using simulator::Field;

void addPacket(const Message& message, Logo& logo) {
  for (const Field& field : simulator::fieldsOf(message).all) {
    const std::string name = field.layout->name;
    if (name == "width") logo.width = static_cast<uint16_t>(field.number);
    if (name == "height") logo.height = static_cast<uint16_t>(field.number);
    if (name == "format") logo.format = valueText(field, message);
    if (name == "pixels") logo.pixelBytes += field.bytes.size();
  }
}

void addAnswers(const Conversation& items, const Exchange& exchange, Logo& logo) {
  logo.answers.insert(logo.answers.end(), exchange.replies.begin(), exchange.replies.end());
  if (!exchange.isAnswered()) return;
  const auto status = statusOf(items[exchange.replies.back()].message);
  if (!status) return;
  (*status == 0 ? logo.acknowledged : logo.refused) += 1;
}

bool isFirstPacket(const Message& message) {
  return message.data.size() >= 2 && message.data[0] == 0 && message.data[1] == 0;
}

std::string resultOf(const Logo& logo) {
  const size_t all = logo.packets.size();
  if (logo.acknowledged == all) return "all acknowledged";
  const std::string refused =
      logo.refused > 0 ? ", " + std::to_string(logo.refused) + " refused" : "";
  return std::to_string(logo.acknowledged) + " acknowledged" + refused;
}

}  // namespace

std::vector<Logo> logosOf(const Conversation& items, const Exchanges& exchanges) {
  std::vector<Logo> all;
  for (const Exchange& exchange : exchanges.all) {
    const Message& message = items[exchange.request].message;
    if (!message.is(simulator::Lingo::kExtendedInterface, simulator::kSetDisplayImage)) continue;
    if (all.empty() || isFirstPacket(message)) all.emplace_back();
    all.back().packets.push_back(exchange.request);
    addPacket(message, all.back());
    addAnswers(items, exchange, all.back());
  }
  std::vector<Logo> found;
  for (Logo& logo : all) {
    if (logo.packets.size() > 1) found.push_back(std::move(logo));
  }
  return found;
}

std::string describe(const Logo& logo) {
  const std::string size =
      std::to_string(logo.width) + "x" + std::to_string(logo.height) + " " + logo.format;
  return std::to_string(logo.packets.size()) + " packets, " +
         (logo.format.empty() ? "without the first one" : size) + ", " +
         std::to_string(logo.pixelBytes) + " bytes, " + resultOf(logo);
}

}  // namespace iaptrace
