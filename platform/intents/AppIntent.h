// AppIntent: an action a host can run without opening the application (a
// widget's button, a shortcut). It says what it is (title, its parameters
// with their metadata, a one-line summary of what it will do) and does it:
// perform() returns the short dialog to show, or throws when it failed, in
// which case the host shows the error's own words.
#pragma once

#include <string>
#include <vector>

namespace quillmont {

struct IntentParameterMetadata {
  enum class Control { automatic, stepper, textField, toggle };
  std::string title;
  Control control = Control::automatic;

  friend bool operator==(const IntentParameterMetadata&, const IntentParameterMetadata&) = default;
};

struct IntentResult {
  /// The confirmation the host shows.
  std::string dialog;
};

class AppIntent {
 public:
  virtual ~AppIntent() = default;

  virtual std::string title() const = 0;
  virtual std::vector<IntentParameterMetadata> parameters() const = 0;
  /// The action in one line with its parameter values filled in.
  virtual std::string parameterSummary() const = 0;
  /// Runs the action on the caller's (main) thread; throws on failure.
  virtual IntentResult perform() const = 0;
};

}  // namespace quillmont
