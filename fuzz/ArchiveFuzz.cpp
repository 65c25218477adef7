// Any bytes as an archive: decoding and validation either accept the
// document or refuse it with their own errors, and an accepted archive
// encodes and decodes to the same records.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/archive/TimeBankArchive.h"
#include "core/archive/TimeBankArchiveError.h"
#include "platform/foundation/JsonReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillmont;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    const TimeBankArchive archive = TimeBankArchive::decodeJSON(text);
    const TimeBankArchive again = TimeBankArchive::decodeJSON(archive.encodedJSON());
    if (again.encodedJSON() != archive.encodedJSON()) std::abort();
  } catch (const JsonDecodingError&) {
  } catch (const TimeBankArchiveError&) {
  }
  return 0;
}
