// Any text as base64: whatever the strict decoder accepts re-encodes to a
// canonical text of the same length that decodes to the same bytes (unused
// low bits of the last symbol are ignored), and any bytes round-trip.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/foundation/Base64.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillmont;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (const auto bytes = Base64::decode(text)) {
    const std::string canonical = Base64::encode(*bytes);
    if (canonical.size() != text.size() || Base64::decode(canonical) != bytes) std::abort();
  }
  if (Base64::decode(Base64::encode(text)) != std::string(text)) std::abort();
  return 0;
}
