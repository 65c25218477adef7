// CommandFailure: a command that was understood but could not be carried out
// (a record that does not exist, a refused change, a file that cannot be
// written). The program prints the message and exits with status 1. Errors of
// the core (refused bookings, archives, the store) are reported the same way.
#pragma once

#include <stdexcept>

namespace quillmont {

class CommandFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quillmont
