// UsageError: the command line asked for something that cannot be read (a
// duration, a day, an unknown category or link). The program prints the
// message and exits with status 2, having changed nothing.
#pragma once

#include <stdexcept>

namespace quillmont {

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quillmont
