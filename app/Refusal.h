// Refusal: a use case that was understood but cannot be carried out: a
// record that does not exist, a change the ledger's rules refuse, a file
// that cannot be read or written. The message is the system's own sentence,
// ready to show as it stands (the command line prints it and exits with
// status 1; a window shows it beside the action). When one input's value is
// what the rules refuse (an amount on the wrong side of zero for its
// category), `field` names that input as InvalidInput does, so that a form
// can show the sentence beside it; it is empty otherwise.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace quillmont {

class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  Refusal(const std::string& message, std::string field) : std::runtime_error(message), field_(std::move(field)) {}

  const std::string& field() const { return field_; }

 private:
  std::string field_;
};

}  // namespace quillmont
