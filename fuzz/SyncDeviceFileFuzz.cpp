// Any bytes as another machine's device file in the sync folder: a whole
// file or a refusal, never a crash; what is read writes out again as a file
// that reads back to the same device, name, deletions and holidays.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/sync/SyncDeviceFile.h"
#include "platform/foundation/JsonReader.h"
#include "platform/foundation/JsonWriter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillmont;
  try {
    const SyncDeviceFile file =
        SyncDeviceFile::decodeJSON(std::string_view(reinterpret_cast<const char*>(data), size));
    const SyncDeviceFile again = SyncDeviceFile::decodeJSON(file.encodedJSON());
    if (again.device != file.device || again.name != file.name || again.deletions.size() != file.deletions.size() ||
        again.holidays != file.holidays) {
      std::abort();
    }
    for (std::size_t i = 0; i < file.deletions.size(); ++i) {
      if (again.deletions[i].id != file.deletions[i].id || again.deletions[i].entity != file.deletions[i].entity) {
        std::abort();
      }
    }
  } catch (const JsonDecodingError&) {
  } catch (const JsonEncodingError&) {
  }
  return 0;
}
