// CommandFailure: a command that was understood but could not be carried out
// (a record that does not exist, a refused change, a file that cannot be
// written). The program prints the message and exits with status 1. It is
// the application layer's Refusal under the name the commands use; errors
// of the core (refused bookings, archives, the store) are reported the same way.
#pragma once

#include "app/Refusal.h"

namespace quillmont {

using CommandFailure = Refusal;

}  // namespace quillmont
