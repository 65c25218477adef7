// PreferenceChanges: the word that the application's preferences changed
// (appearance, tray), so that the running program applies them at once. The
// control that writes a preference calls notify(); the host listens.
#pragma once

#include <QObject>

namespace quillmont {

class PreferenceChanges final : public QObject {
  Q_OBJECT

 public:
  /// The one instance of the running program.
  static PreferenceChanges& instance();
  /// Says that a preference changed.
  static void notify();

 signals:
  void changed();

 private:
  PreferenceChanges() = default;
};

}  // namespace quillmont
