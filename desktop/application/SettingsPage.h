// SettingsPage: every setting of the bank and the application, in sections
// one below the other: the time bank (calculation start, starting balance,
// the planned week, quick actions; the set-up when it is not complete), the
// weekly schedules, what bookings offer (the built-in kinds, the person's
// own categories), appearance and the tray, folder sync, the archive,
// public holidays and erasing. Every change goes through its use case; a
// refusal is shown in the section it came from. Imports show what they
// would do first and change nothing until confirmed.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "app/archive/ArchiveImport.h"
#include "app/holidays/HolidayImport.h"
#include "app/preferences/ApplicationPreferences.h"
#include "app/sync/SyncSetup.h"
#include "desktop/application/Page.h"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QFormLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class QTableWidget;

namespace quillmont {

class SettingsPage final : public Page {
  Q_OBJECT

 public:
  explicit SettingsPage(QWidget* parent = nullptr);
  /// Application preferences kept in `preferences` (tests).
  SettingsPage(ApplicationPreferences preferences, QWidget* parent);

  /// The shown value of a setting by its label ("Starting balance", ...).
  QString value(const QString& label) const;
  QTableWidget& schedules() const { return *schedules_; }

  /// Saves the time bank section (or completes the set-up); false when refused.
  bool saveBank();
  /// Adds a schedule from the form beside the list; false when refused.
  bool addSchedule();
  /// Gives the schedule of the table's selected row the form's first day and week.
  bool changeSchedule();
  /// Removes the schedule of the table's selected row.
  bool removeSchedule();

  /// Reads the archive at `path` and shows what importing it would do;
  /// nothing changes yet. False when it cannot be read.
  bool previewImport(const QString& path);
  /// Imports the previewed archive.
  bool confirmImport();
  bool exportArchive(const QString& path);
  bool previewHolidays(const QString& path);
  bool confirmHolidays();
  /// Sets sync up with the folder and name typed; a conflict of settings
  /// shows the choice between adopting and keeping.
  bool setUpSync(const QString& folder, const QString& name);
  bool chooseSync(bool adopt);

  /// The text of a section's message line by the section's title.
  QString message(const QString& section) const;

 signals:
  /// An application preference (appearance, the tray) changed.
  void preferencesChanged();

 protected:
  void show(StoreSession& session) override;
  void clear() override;

 private:
  QGroupBox* section(const QString& title);
  QLabel* messageLine(QGroupBox* box);
  void say(const QString& section, const QString& text, bool problem = true);
  void buildBank();
  void buildSchedules();
  void buildBookingChoices();
  void buildPreferences();
  void buildSync();
  void buildArchive();
  void buildHolidays();
  void buildErase();
  void showPreferences();
  void showSync();
  /// Sets sync up with the folder and name in the form and runs the first exchange.
  bool joinSync(SyncSetup::SettingsChoice choice);
  void erase();
  /// Runs `change` in a session of its own; a refusal is said in `section`.
  bool attempt(const QString& section, const std::function<void(StoreSession&)>& change);

  ApplicationPreferences preferences_;
  QWidget* content_;
  std::vector<std::pair<QString, QLabel*>> messages_;
  QLabel* setUp_;
  QDateEdit* start_;
  QLineEdit* balance_;
  std::vector<QLineEdit*> week_;
  std::vector<QComboBox*> quick_;
  QPushButton* saveBank_;
  QTableWidget* schedules_;
  QLabel* noSchedules_;
  std::vector<std::string> scheduleIds_;
  QDateEdit* scheduleFrom_;
  std::vector<QLineEdit*> scheduleWeek_;
  std::vector<QCheckBox*> kinds_;
  QListWidget* categories_;
  QLineEdit* newCategory_;
  QComboBox* appearance_;
  QCheckBox* showsTray_;
  QComboBox* trayDisplay_;
  QCheckBox* closesToTray_;
  QSpinBox* forgottenHours_;
  QLineEdit* syncFolder_;
  QLineEdit* syncName_;
  QLabel* syncStatus_;
  QWidget* syncChoice_;
  QLabel* importCounts_;
  QWidget* importConfirm_;
  std::optional<TimeBankArchive> pendingArchive_;
  QLabel* holidayCounts_;
  QWidget* holidayConfirm_;
  std::optional<HolidayImport::Preview> pendingHolidays_;
  bool showingPreferences_ = false;
};

}  // namespace quillmont
