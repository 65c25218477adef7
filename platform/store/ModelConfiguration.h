// ModelConfiguration: how a container opens its store: the store's name
// (the file is "<name>.store"), the schema, in memory or on disk, and the
// folder: the application group's shared container when one is named, the
// process's own container otherwise. A cloud database name is accepted for
// compatibility and ignored: stores are never synchronised here.
#pragma once

#include <optional>
#include <string>

#include "platform/store/Schema.h"

namespace quillmont {

struct ModelConfiguration {
  std::string name;
  Schema schema;
  bool isStoredInMemoryOnly = false;
  bool allowsSave = true;
  std::optional<std::string> groupContainer;
  std::optional<std::string> cloudKitDatabase;
};

}  // namespace quillmont
