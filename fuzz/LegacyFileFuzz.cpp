// Any bytes as the prototype's balance-entry file: entries or a decoding
// error, and entries survive their own encoding.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/archive/LegacyPrototypeImport.h"
#include "platform/foundation/JsonReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillmont;
  try {
    const auto entries = LegacyPrototypeImport::decode(std::string_view(reinterpret_cast<const char*>(data), size));
    const auto again = LegacyPrototypeImport::decode(LegacyPrototypeImport::encode(entries));
    if (again.size() != entries.size()) std::abort();
  } catch (const JsonDecodingError&) {
  }
  return 0;
}
