// StoreError: every failure of the record store (opening, reading,
// saving). It carries a code for callers that react to the kind of failure
// and SQLite's own message.
#pragma once

#include <stdexcept>
#include <string>

namespace quillmont {

class StoreError : public std::runtime_error {
 public:
  enum class Code {
    cannotOpen,     ///< the file or its folder cannot be opened or created
    notAStore,      ///< the file is not a record store (or is damaged)
    newerVersion,   ///< written by a newer schema version than this program knows
    busy,           ///< another process kept the store locked past the busy timeout
    saveFailed,     ///< a save was refused or failed; pending changes were kept
    readOnly,       ///< the store can be read but not changed (its file or folder is read-only)
    changedSince,   ///< an undo found records changed after the action it was to undo
    other,
  };

  StoreError(Code code, const std::string& message) : std::runtime_error(message), code_(code) {}
  Code code() const { return code_; }

 private:
  Code code_;
};

}  // namespace quillmont
