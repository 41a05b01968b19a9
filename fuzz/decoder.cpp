// The payload of a frame, decoded field by field.

#include <algorithm>
#include <string>

#include "support/require.h"
#include "wire/command_names.h"
#include "wire/fields.h"
#include "wire/printable.h"

namespace {

using namespace simulator;

/// Returns whether every byte of the data is in one field or in the rest, in order.
bool hasAllBytes(const Fields& decoded, const Bytes& data) {
  Bytes joined;
  for (const Field& field : decoded.all)
    joined.insert(joined.end(), field.bytes.begin(), field.bytes.end());
  joined.insert(joined.end(), decoded.rest.begin(), decoded.rest.end());
  return joined == data;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto message = parseMessage({data, size});
  const std::string text(data, data + size);
  const std::string shown = printable(text);
  require(printable(shown) == shown, "a printable text that is not printable");
  if (!message) return 0;
  require(hasAllBytes(fieldsOf(*message), message->data), "bytes that are in no field");
  const std::string fields = fieldsText(*message);
  require(printable(fields) == fields, "fields that are not printable");
  return 0;
}
