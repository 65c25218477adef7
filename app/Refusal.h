// Refusal: a use case that was understood but cannot be carried out: a
// record that does not exist, a change the ledger's rules refuse, a file
// that cannot be read or written. The message is the fact in the system's
// own words; when a person can do something about it (keep the change on
// purpose, choose a sync folder, finish the set-up), `remedy` says what,
// and each host words that for its own controls (the command line prints
// the sentence and exits with status 1; a window shows it beside the
// action). When one input's value is what the rules refuse (an amount on
// the wrong side of zero for its category), `field` names that input as
// InvalidInput does, so that a form can show the sentence beside it; it is
// empty otherwise.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "app/Remedy.h"

namespace quillmont {

class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  Refusal(const std::string& message, std::string field) : std::runtime_error(message), field_(std::move(field)) {}
  Refusal(const std::string& fact, Remedy remedy) : std::runtime_error(fact), remedy_(std::move(remedy)) {}

  const std::string& field() const { return field_; }
  const Remedy& remedy() const { return remedy_; }

 private:
  std::string field_;
  Remedy remedy_;
};

}  // namespace quillmont
