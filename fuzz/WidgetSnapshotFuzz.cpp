// Any bytes as a stored widget snapshot: a whole snapshot or nothing, and a
// snapshot read back encodes to a document that reads the same.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/widgetstate/WidgetSnapshot.h"
#include "platform/foundation/JsonReader.h"
#include "platform/foundation/JsonWriter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillmont;
  try {
    const WidgetSnapshot snapshot =
        WidgetSnapshot::decoded(std::string_view(reinterpret_cast<const char*>(data), size));
    if (snapshot.quickActionMinutes.size() != 4) std::abort();
    if (!(snapshot == WidgetSnapshot::decoded(snapshot.encodedJSON()))) std::abort();
  } catch (const JsonDecodingError&) {
  } catch (const JsonEncodingError&) {
  }
  return 0;
}
