// QuillmontPersistence: the store's schema (the four record types, version
// 1.0.0) and the one way to open it. On disk the store lives in the
// application group's shared folder when the process may use it
// (RuntimeEntitlements::hasUsableAppGroup), else in the process's own folder.
// Cloud synchronisation is not offered: the flag is accepted and ignored.
#pragma once

#include <memory>

#include "platform/store/ModelConfiguration.h"
#include "platform/store/ModelContainer.h"
#include "platform/store/Schema.h"

namespace quillmont::QuillmontPersistence {

inline constexpr std::string_view storeName = "Quillmont";

const Schema& schema();
/// The configuration makeContainer opens: no group and no cloud database in memory.
ModelConfiguration makeConfiguration(bool inMemory, bool cloudSync, bool useAppGroup);
/// Opens (creating if needed) the store; the store's errors pass through.
std::shared_ptr<ModelContainer> makeContainer(bool inMemory, bool cloudSync, bool useAppGroup);

}  // namespace quillmont::QuillmontPersistence
