#include "core/ledger/NoteValidation.h"

#include "platform/foundation/Text.h"

namespace quillmont::NoteValidation {

std::string normalized(std::string_view note) {
  return std::string(Text::prefix(Text::trimmingWhitespaceAndNewlines(note), maximumCharacterCount));
}

std::string limited(std::string_view note) { return std::string(Text::prefix(note, maximumCharacterCount)); }

}  // namespace quillmont::NoteValidation
