// WindowRemedies: how the window words what a person can do about a
// refusal, in terms of its own controls: the work entry dialog's "Save
// anyway" check box, the field to type the day into, the Settings page's
// sync folder, the set-up form. Every form and page that shows a refusal
// goes through here, so the wording lives in one place.
#pragma once

#include <exception>
#include <string>

#include <QString>

#include "app/Remedy.h"

namespace quillmont::WindowRemedies {

/// The fact followed by its remedy as the window offers it; the fact alone
/// when there is none.
QString sentence(const std::string& fact, const Remedy& remedy);

/// An error's text as shown: a Refusal's or an InvalidInput's fact with
/// its remedy, anything else as it says.
QString message(const std::exception& error);

}  // namespace quillmont::WindowRemedies
