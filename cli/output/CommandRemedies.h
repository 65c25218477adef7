// CommandRemedies: how this program words what a person can do about a
// refusal: the options and commands that carry it out (`--force`, the day
// typed with `--end`, `quillmont sync setup DIR`, `quillmont setup`). Every
// refusal and invalid input the program prints goes through here, so the
// wording lives in one place.
#pragma once

#include <exception>
#include <string>

#include "app/Remedy.h"

namespace quillmont::CommandRemedies {

/// The fact followed by its remedy as the command line offers it; the fact
/// alone when there is none.
std::string sentence(const std::string& fact, const Remedy& remedy);

/// An error's message as printed: a Refusal's or an InvalidInput's fact
/// with its remedy (without the input's name), anything else as it says.
std::string message(const std::exception& error);

}  // namespace quillmont::CommandRemedies
