// InvalidInput: a value a person gave cannot be read or is not allowed where
// it was given (an amount, a day, a time, an unknown category). Nothing has
// changed. `field` names the input as a form names it ("amount", "category",
// "day", "note", "start", "end", "at", "from", "to", ...; empty when the
// request as a whole is wrong), `reason` says what is wrong in the system's
// own words, and `remedy` what a person can do about it when there is
// something (see Remedy; each host words it). The command line shows it as
// "--field: reason" (or the argument's own name) and exits with status 2; a
// window shows the reason beside the field.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "app/Remedy.h"

namespace quillmont {

class InvalidInput : public std::runtime_error {
 public:
  InvalidInput(std::string field, const std::string& reason, Remedy remedy = {})
      : std::runtime_error(reason), field_(std::move(field)), remedy_(std::move(remedy)) {}

  const std::string& field() const { return field_; }
  std::string reason() const { return what(); }
  const Remedy& remedy() const { return remedy_; }

 private:
  std::string field_;
  Remedy remedy_;
};

}  // namespace quillmont
