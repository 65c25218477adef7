// Refusal: a use case that was understood but cannot be carried out: a
// record that does not exist, a change the ledger's rules refuse, a file
// that cannot be read or written. The message is the system's own sentence,
// ready to show as it stands (the command line prints it and exits with
// status 1; a window shows it beside the action).
#pragma once

#include <stdexcept>

namespace quillmont {

class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quillmont
