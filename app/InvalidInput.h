// InvalidInput: a value a person gave cannot be read or is not allowed where
// it was given (an amount, a day, a time, an unknown category). Nothing has
// changed. `field` names the input as a form names it ("amount", "category",
// "day", "note", "start", "end", "at", "from", "to", ...; empty when the
// request as a whole is wrong), `reason` says what is wrong in the system's
// own words. The command line shows it as "--field: reason" (or the
// argument's own name) and exits with status 2; a window shows the reason
// beside the field.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace quillmont {

class InvalidInput : public std::runtime_error {
 public:
  InvalidInput(std::string field, const std::string& reason)
      : std::runtime_error(reason), field_(std::move(field)) {}

  const std::string& field() const { return field_; }
  std::string reason() const { return what(); }

 private:
  std::string field_;
};

}  // namespace quillmont
