#include "desktop/application/SettingsPage.h"

#include <algorithm>
#include <exception>
#include <functional>

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

#include "desktop/application/PreferenceChanges.h"
#include "desktop/application/WindowRemedies.h"
#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/archive/ArchiveExport.h"
#include "app/configuration/Configuration.h"
#include "app/files/FileTransfer.h"
#include "app/housekeeping/Housekeeping.h"
#include "app/input/TypedValue.h"
#include "app/session/StoreSession.h"
#include "app/settings/OfferedKinds.h"
#include "app/settings/OwnCategories.h"
#include "app/settings/ScheduleEdits.h"
#include "app/settings/Schedules.h"
#include "app/settings/Settings.h"
#include "app/sync/SyncExchange.h"
#include "app/sync/SyncSettings.h"
#include "app/sync/SyncSetup.h"
#include "app/sync/SyncStatus.h"
#include "app/text/Display.h"
#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/QuickActionConfiguration.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont {
namespace {

constexpr const char* weekdays[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
constexpr const char* weekdayNames[] = {"Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"};

QString qs(const std::string& text) { return QString::fromStdString(text); }
QString durationText(std::int64_t minutes) { return qs(Display::duration(static_cast<double>(minutes) * 60.0)); }

QString counted(long long count, const char* one, const char* many) {
  return QString::number(count) + " " + (count == 1 ? one : many);
}

DateInput::Day dayOf(const QDate& date) { return {date.year(), date.month(), date.day()}; }

QPushButton* button(const QString& text, const QString& name, QWidget* parent) {
  auto* made = new QPushButton(text, parent);
  made->setAccessibleName(name);
  return made;
}

// A row of seven short fields, one per weekday, each named by its day.
QHBoxLayout* weekRow(std::vector<QLineEdit*>& fields, const QString& what, QWidget* parent) {
  auto* row = new QHBoxLayout;
  for (int day = 0; day < 7; ++day) {
    auto* label = new QLabel(weekdays[day], parent);
    auto* field = new QLineEdit(parent);
    field->setAccessibleName(what + " " + weekdayNames[day]);
    field->setMaximumWidth(field->fontMetrics().horizontalAdvance("00:00") + 24);
    label->setBuddy(field);
    row->addWidget(label);
    row->addWidget(field);
    fields.push_back(field);
  }
  row->addStretch(1);
  return row;
}

WeekdayMinutes weekOf(const std::vector<QLineEdit*>& fields, std::string_view field) {
  std::vector<std::int64_t> minutes;
  for (const QLineEdit* day : fields) minutes.push_back(TypedValue::minutes(day->text().trimmed().toStdString(), field));
  return Settings::week(minutes, field);
}

}  // namespace

SettingsPage::SettingsPage(QWidget* parent) : SettingsPage(ApplicationPreferences(), parent) {}

SettingsPage::SettingsPage(ApplicationPreferences preferences, QWidget* parent)
    : Page(parent), preferences_(std::move(preferences)), content_(new QWidget) {
  // The running program applies appearance and tray choices at once.
  connect(this, &SettingsPage::preferencesChanged, this, [] { PreferenceChanges::notify(); });
  auto* scroll = new QScrollArea(this);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setAccessibleName("Settings");
  auto* column = new QVBoxLayout(content_);
  column->setSpacing(12);
  scroll->setWidget(content_);
  pageLayout()->addWidget(scroll, 1);

  buildBank();
  buildSchedules();
  buildBookingChoices();
  buildPreferences();
  buildSync();
  buildArchive();
  buildHolidays();
  buildErase();
  column->addStretch(1);
  showPreferences();
}

QGroupBox* SettingsPage::section(const QString& title) {
  auto* box = new QGroupBox(title, content_);
  box->setAccessibleName(title);
  static_cast<QVBoxLayout*>(content_->layout())->addWidget(box);
  return box;
}

QLabel* SettingsPage::messageLine(QGroupBox* box) {
  auto* line = new QLabel(box);
  line->setWordWrap(true);
  line->setTextInteractionFlags(Qt::TextSelectableByMouse);
  line->setAccessibleName(box->title() + " message");
  line->hide();
  messages_.emplace_back(box->title(), line);
  return line;
}

void SettingsPage::say(const QString& title, const QString& text, bool problem) {
  for (auto& [name, line] : messages_) {
    if (name != title) continue;
    line->setText(text);
    line->setForegroundRole(problem ? QPalette::BrightText : QPalette::WindowText);
    QPalette colors = line->palette();
    if (problem) colors.setColor(QPalette::BrightText, QColor(0xb3, 0x26, 0x1e));
    line->setPalette(colors);
    line->setVisible(!text.isEmpty());
  }
}

QString SettingsPage::message(const QString& title) const {
  for (const auto& [name, line] : messages_) {
    if (name == title) return line->isHidden() ? QString() : line->text();
  }
  return {};
}

bool SettingsPage::attempt(const QString& title, const std::function<void(StoreSession&)>& change) {
  try {
    {
      StoreSession session;
      change(session);
    }
    refresh();
    return true;
  } catch (const InvalidInput& invalid) {
    say(title, qs(invalid.reason()));
  } catch (const std::exception& error) {
    say(title, QString::fromUtf8(error.what()));
  }
  return false;
}

// --- the time bank ----------------------------------------------------------

void SettingsPage::buildBank() {
  QGroupBox* box = section("Time bank");
  auto* form = new QFormLayout(box);
  setUp_ = new QLabel(box);
  setUp_->setAccessibleName("Set-up");
  form->addRow("Set-up", setUp_);
  start_ = new QDateEdit(box);
  start_->setCalendarPopup(true);
  start_->setDisplayFormat("yyyy-MM-dd");
  start_->setAccessibleName("Calculation start");
  start_->setMaximumWidth(start_->fontMetrics().horizontalAdvance("0000-00-00") + 60);
  form->addRow("Calculation &start", start_);
  balance_ = new QLineEdit(box);
  balance_->setAccessibleName("Starting balance");
  balance_->setPlaceholderText("e.g. +2:30 or -45m");
  balance_->setMaximumWidth(balance_->fontMetrics().horizontalAdvance("+00000:00") + 120);
  form->addRow("Starting &balance", balance_);
  form->addRow("Planned week", weekRow(week_, "Planned", box));
  auto* quickRow = new QHBoxLayout;
  for (int i = 0; i < 4; ++i) {
    auto* choice = new QComboBox(box);
    for (const std::int64_t minutes : QuickActionConfiguration::supportedMinutes) {
      choice->addItem(qs(QuickActionConfiguration::displayName(minutes)), QVariant::fromValue<qint64>(minutes));
    }
    choice->setAccessibleName(QString("Quick action %1").arg(i + 1));
    quickRow->addWidget(choice);
    quick_.push_back(choice);
  }
  quickRow->addStretch(1);
  form->addRow("Quick actions", quickRow);
  saveBank_ = button("Save", "Save the time bank's settings", box);
  auto* actions = new QHBoxLayout;
  actions->addWidget(messageLine(box), 1);
  actions->addStretch(0);
  actions->addWidget(saveBank_);
  form->addRow(actions);
  connect(saveBank_, &QPushButton::clicked, this, [this] { saveBank(); });
}

bool SettingsPage::saveBank() {
  say("Time bank", {});
  return attempt("Time bank", [this](StoreSession& session) {
    Settings::Change change;
    change.start = dayOf(start_->date());
    change.balanceMinutes = Settings::startingBalance(TypedValue::minutes(balance_->text().trimmed().toStdString(), "balance"));
    change.week = weekOf(week_, "week");
    std::vector<std::int64_t> quick;
    for (const QComboBox* choice : quick_) quick.push_back(choice->currentData().toLongLong());
    change.quickActionMinutes = quick;
    if (session.settings().hasCompletedOnboarding()) {
      Settings::change(session, change);
    } else {
      Settings::setup(session, change);
    }
  });
}

// --- schedules ----------------------------------------------------------------

void SettingsPage::buildSchedules() {
  QGroupBox* box = section("Weekly schedules");
  auto* layout = new QVBoxLayout(box);
  schedules_ = new QTableWidget(0, 8, box);
  QStringList headers{"Effective from"};
  for (const char* day : weekdays) headers << day;
  schedules_->setHorizontalHeaderLabels(headers);
  schedules_->setAccessibleName("Weekly schedules");
  schedules_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  schedules_->setSelectionBehavior(QAbstractItemView::SelectRows);
  schedules_->setSelectionMode(QAbstractItemView::SingleSelection);
  schedules_->setAlternatingRowColors(true);
  schedules_->setShowGrid(false);
  schedules_->verticalHeader()->hide();
  schedules_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
  schedules_->horizontalHeader()->setMinimumSectionSize(schedules_->fontMetrics().horizontalAdvance("00:00") + 24);
  schedules_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
  schedules_->setMinimumHeight(schedules_->fontMetrics().height() * 5);
  schedules_->setMaximumHeight(schedules_->fontMetrics().height() * 10);
  noSchedules_ = new QLabel("No schedules: the planned week applies to every day.", box);
  noSchedules_->setForegroundRole(QPalette::PlaceholderText);
  layout->addWidget(schedules_);
  layout->addWidget(noSchedules_);

  auto* form = new QHBoxLayout;
  scheduleFrom_ = new QDateEdit(QDate::currentDate(), box);
  scheduleFrom_->setCalendarPopup(true);
  scheduleFrom_->setDisplayFormat("yyyy-MM-dd");
  scheduleFrom_->setAccessibleName("New schedule valid from");
  auto* fromLabel = new QLabel("From", box);
  fromLabel->setBuddy(scheduleFrom_);
  form->addWidget(fromLabel);
  form->addWidget(scheduleFrom_);
  form->addLayout(weekRow(scheduleWeek_, "New schedule", box), 1);
  layout->addLayout(form);
  auto* actions = new QHBoxLayout;
  actions->addWidget(messageLine(box), 1);
  actions->addStretch(0);
  auto* add = button("Add schedule", "Add schedule", box);
  auto* change = button("Change selected", "Change the selected schedule", box);
  auto* remove = button("Remove", "Remove the selected schedule", box);
  actions->addWidget(add);
  actions->addWidget(change);
  actions->addWidget(remove);
  layout->addLayout(actions);
  connect(add, &QPushButton::clicked, this, [this] { addSchedule(); });
  connect(change, &QPushButton::clicked, this, [this] { changeSchedule(); });
  connect(remove, &QPushButton::clicked, this, [this] { removeSchedule(); });
  // Choosing a schedule fills the form with its first day and week, to change it or add a copy.
  connect(schedules_, &QTableWidget::itemSelectionChanged, this, [this] {
    const int row = schedules_->currentRow();
    if (row < 0) return;
    if (const QTableWidgetItem* first = schedules_->item(row, 0)) {
      scheduleFrom_->setDate(QDate::fromString(first->text(), Qt::ISODate));
    }
    for (int day = 0; day < 7; ++day) {
      if (const QTableWidgetItem* cell = schedules_->item(row, day + 1)) scheduleWeek_[static_cast<std::size_t>(day)]->setText(cell->text());
    }
  });
}

bool SettingsPage::addSchedule() {
  say("Weekly schedules", {});
  return attempt("Weekly schedules", [this](StoreSession& session) {
    Schedules::Request request;
    request.from = dayOf(scheduleFrom_->date());
    request.week = weekOf(scheduleWeek_, "week");
    request.fromText = scheduleFrom_->date().toString(Qt::ISODate).toStdString();
    Schedules::add(session, request);
  });
}

bool SettingsPage::changeSchedule() {
  const int row = schedules_->currentRow();
  if (row < 0 || row >= static_cast<int>(scheduleIds_.size())) {
    say("Weekly schedules", "Choose the schedule to change in the list.");
    return false;
  }
  say("Weekly schedules", {});
  const std::string id = scheduleIds_[static_cast<std::size_t>(row)];
  return attempt("Weekly schedules", [this, &id](StoreSession& session) {
    Schedules::Request request;
    request.from = dayOf(scheduleFrom_->date());
    request.week = weekOf(scheduleWeek_, "week");
    ScheduleEdits::change(session, id, request);
  });
}

bool SettingsPage::removeSchedule() {
  const int row = schedules_->currentRow();
  if (row < 0 || row >= static_cast<int>(scheduleIds_.size())) {
    say("Weekly schedules", "Choose the schedule to remove in the list.");
    return false;
  }
  say("Weekly schedules", {});
  const std::string id = scheduleIds_[static_cast<std::size_t>(row)];
  return attempt("Weekly schedules", [&id](StoreSession& session) { Schedules::remove(session, id); });
}

// --- what bookings offer -----------------------------------------------------

void SettingsPage::buildBookingChoices() {
  QGroupBox* box = section("Booking categories");
  auto* layout = new QVBoxLayout(box);
  auto* kindsRow = new QHBoxLayout;
  kindsRow->addWidget(new QLabel("Offer", box));
  for (const BalanceAdjustmentKind kind : AdjustmentKindConfiguration::configurableKinds) {
    auto* check = new QCheckBox(qs(std::string(kind.title())), box);
    check->setAccessibleName("Offer " + qs(std::string(kind.title())));
    kindsRow->addWidget(check);
    kinds_.push_back(check);
    connect(check, &QCheckBox::toggled, this, [this] {
      attempt("Booking categories", [this](StoreSession& session) {
        AdjustmentKindConfiguration::KindSet chosen;
        for (std::size_t i = 0; i < kinds_.size(); ++i) {
          if (kinds_[i]->isChecked()) chosen.insert(AdjustmentKindConfiguration::configurableKinds[i]);
        }
        OfferedKinds::offer(session, chosen);
      });
    });
  }
  kindsRow->addStretch(1);
  layout->addLayout(kindsRow);
  layout->addWidget(new QLabel("Your own categories", box));
  categories_ = new QListWidget(box);
  categories_->setAccessibleName("Your own categories");
  categories_->setMaximumHeight(categories_->fontMetrics().height() * 6);
  layout->addWidget(categories_);
  auto* addRow = new QHBoxLayout;
  newCategory_ = new QLineEdit(box);
  newCategory_->setAccessibleName("New category");
  newCategory_->setPlaceholderText("New category");
  auto* add = button("Add", "Add the category", box);
  auto* remove = button("Remove", "Remove the selected category", box);
  addRow->addWidget(newCategory_, 1);
  addRow->addWidget(add);
  addRow->addWidget(remove);
  layout->addLayout(addRow);
  layout->addWidget(messageLine(box));
  const auto addCategory = [this] {
    say("Booking categories", {});
    const std::string title = newCategory_->text().toStdString();
    if (attempt("Booking categories", [&title](StoreSession& session) { OwnCategories::add(session, title); })) {
      newCategory_->clear();
    }
  };
  connect(add, &QPushButton::clicked, this, addCategory);
  connect(newCategory_, &QLineEdit::returnPressed, this, addCategory);
  connect(remove, &QPushButton::clicked, this, [this] {
    const QListWidgetItem* chosen = categories_->currentItem();
    if (chosen == nullptr) return;
    say("Booking categories", {});
    const std::string title = chosen->text().toStdString();
    attempt("Booking categories", [&title](StoreSession& session) { OwnCategories::remove(session, title); });
  });
}

// --- appearance and tray -----------------------------------------------------

void SettingsPage::buildPreferences() {
  QGroupBox* box = section("Appearance and tray");
  auto* form = new QFormLayout(box);
  form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
  appearance_ = new QComboBox(box);
  appearance_->addItems({"Like the desktop", "Light", "Dark"});
  appearance_->setAccessibleName("Appearance");
  form->addRow("&Appearance", appearance_);
  showsTray_ = new QCheckBox("Show Quillmont in the tray", box);
  showsTray_->setAccessibleName("Show in the tray");
  form->addRow(showsTray_);
  trayDisplay_ = new QComboBox(box);
  trayDisplay_->addItems({"The icon only", "The balance", "The balance and today"});
  trayDisplay_->setAccessibleName("The tray shows");
  form->addRow("The tray &shows", trayDisplay_);
  closesToTray_ = new QCheckBox("Closing the window keeps Quillmont running in the tray", box);
  closesToTray_->setAccessibleName("Closing keeps the tray");
  form->addRow(closesToTray_);
  forgottenHours_ = new QSpinBox(box);
  forgottenHours_->setRange(1, ApplicationPreferences::maximumForgottenTimerHours);
  forgottenHours_->setSuffix(" hours");
  forgottenHours_->setAccessibleName("Remind of a running timer after");
  form->addRow("Remind of a running timer after", forgottenHours_);
  form->addRow(messageLine(box));

  const auto stored = [this](bool written) {
    if (showingPreferences_) return;
    say("Appearance and tray", written ? QString() : "The preference could not be saved.");
    showPreferences();
    if (written) emit preferencesChanged();
  };
  connect(appearance_, &QComboBox::currentIndexChanged, this, [this, stored](int index) {
    if (!showingPreferences_) stored(preferences_.setAppearance(static_cast<ApplicationPreferences::Appearance>(index)));
  });
  connect(showsTray_, &QCheckBox::toggled, this, [this, stored](bool on) {
    if (!showingPreferences_) stored(preferences_.setShowsTray(on));
  });
  connect(trayDisplay_, &QComboBox::currentIndexChanged, this, [this, stored](int index) {
    if (!showingPreferences_) stored(preferences_.setTrayDisplay(static_cast<ApplicationPreferences::TrayDisplay>(index)));
  });
  connect(closesToTray_, &QCheckBox::toggled, this, [this, stored](bool on) {
    if (!showingPreferences_) stored(preferences_.setClosesToTray(on));
  });
  connect(forgottenHours_, &QSpinBox::valueChanged, this, [this, stored](int hours) {
    if (!showingPreferences_) stored(preferences_.setForgottenTimerHours(hours));
  });
}

void SettingsPage::showPreferences() {
  showingPreferences_ = true;
  appearance_->setCurrentIndex(static_cast<int>(preferences_.appearance()));
  showsTray_->setChecked(preferences_.showsTray());
  trayDisplay_->setCurrentIndex(static_cast<int>(preferences_.trayDisplay()));
  trayDisplay_->setEnabled(preferences_.showsTray());
  closesToTray_->setChecked(preferences_.closesToTray());
  closesToTray_->setEnabled(preferences_.showsTray());
  forgottenHours_->setValue(preferences_.forgottenTimerHours());
  showingPreferences_ = false;
}

// --- sync ---------------------------------------------------------------------

void SettingsPage::buildSync() {
  QGroupBox* box = section("Sync");
  auto* form = new QFormLayout(box);
  syncFolder_ = new QLineEdit(box);
  syncFolder_->setAccessibleName("Sync folder");
  auto* choose = button("Choose\u2026", "Choose the sync folder", box);
  auto* folderRow = new QHBoxLayout;
  folderRow->addWidget(syncFolder_, 1);
  folderRow->addWidget(choose);
  form->addRow("Folder", folderRow);
  syncName_ = new QLineEdit(box);
  syncName_->setAccessibleName("This machine's name");
  syncName_->setPlaceholderText("the host name");
  form->addRow("This machine's name", syncName_);
  auto* setUp = button("Set up sync", "Set up sync", box);
  auto* setUpRow = new QHBoxLayout;
  setUpRow->addStretch(1);
  setUpRow->addWidget(setUp);
  form->addRow(setUpRow);
  syncStatus_ = new QLabel(box);
  syncStatus_->setWordWrap(true);
  syncStatus_->setAccessibleName("Sync status");
  syncStatus_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  form->addRow(syncStatus_);
  syncChoice_ = new QWidget(box);
  auto* choiceRow = new QHBoxLayout(syncChoice_);
  choiceRow->setContentsMargins(0, 0, 0, 0);
  auto* adopt = button("Adopt the folder's settings", "Adopt the folder's settings", syncChoice_);
  auto* keep = button("Keep this machine's settings", "Keep this machine's settings", syncChoice_);
  choiceRow->addWidget(adopt);
  choiceRow->addWidget(keep);
  choiceRow->addStretch(1);
  syncChoice_->hide();
  form->addRow(messageLine(box));
  form->addRow(syncChoice_);
  connect(choose, &QPushButton::clicked, this, [this] {
    auto* dialog = new QFileDialog(this, "Choose the sync folder", syncFolder_->text());
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QFileDialog::fileSelected, syncFolder_, &QLineEdit::setText);
    dialog->open();
  });
  connect(setUp, &QPushButton::clicked, this, [this] { setUpSync(syncFolder_->text(), syncName_->text()); });
  connect(adopt, &QPushButton::clicked, this, [this] { chooseSync(true); });
  connect(keep, &QPushButton::clicked, this, [this] { chooseSync(false); });
}

bool SettingsPage::setUpSync(const QString& folder, const QString& name) {
  syncFolder_->setText(folder);
  syncName_->setText(name);
  return joinSync(SyncSetup::SettingsChoice::undecided);
}

bool SettingsPage::chooseSync(bool adopt) {
  return joinSync(adopt ? SyncSetup::SettingsChoice::adopt : SyncSetup::SettingsChoice::keep);
}

bool SettingsPage::joinSync(SyncSetup::SettingsChoice choice) {
  syncChoice_->hide();
  say("Sync", {});
  const UserDefaults defaults = SyncSettings::preferences();
  try {
    const SyncSetup::Result result =
        SyncSetup::setup(defaults, {syncFolder_->text().toStdString(), syncName_->text().toStdString(), choice});
    QStringList lines;
    if (result.settled) {
      lines << (*result.settled == SyncSetup::SettingsChoice::adopt ? "This machine takes the folder's settings."
                                                                    : "This machine's settings stay, on every machine.");
    }
    // The first exchange follows the set-up at once.
    for (const auto& line : SyncExchange::exchange(defaults, result.configuration).report) lines << qs(line);
    say("Sync", lines.join("\n"), false);
    refresh();
    return true;
  } catch (const SyncSetup::SettingsConflict& conflict) {
    say("Sync", QString::fromUtf8(conflict.what()));
    syncChoice_->show();
  } catch (const std::exception& error) {
    say("Sync", WindowRemedies::message(error));
  }
  showSync();
  return false;
}

void SettingsPage::showSync() {
  try {
    const auto overview = SyncStatus::overview(SyncSettings::preferences());
    if (!overview) {
      syncStatus_->setText("Sync is not set up: choose a folder that your machines share.");
      return;
    }
    if (syncFolder_->text().isEmpty()) syncFolder_->setText(QString::fromStdString(overview->configuration.folder.string()));
    if (syncName_->text().isEmpty()) syncName_->setText(qs(overview->configuration.name));
    QStringList machines;
    for (const auto& machine : overview->machinesSeen) machines << qs(machine);
    QString text = overview->folderPresent ? QString() : "The folder is missing (a drive not mounted?).\n";
    text += "Machines seen: " + (machines.isEmpty() ? QString("none yet") : machines.join(", ")) + "\n";
    text += "Last exchange: " + (overview->lastExchangeAt ? qs(Display(Calendar::autoupdatingCurrent()).dateTime(*overview->lastExchangeAt)) : QString("none yet"));
    if (overview->leftAside > 0) text += QString("\nFiles of %1 machines were left aside.").arg(overview->leftAside);
    syncStatus_->setText(text);
  } catch (const std::exception& error) {
    syncStatus_->setText(WindowRemedies::message(error));
  }
}

// --- archive, holidays, erase -------------------------------------------------

void SettingsPage::buildArchive() {
  QGroupBox* box = section("Archive");
  auto* layout = new QVBoxLayout(box);
  auto* row = new QHBoxLayout;
  auto* exportButton = button("Export\u2026", "Export the archive", box);
  auto* importButton = button("Import\u2026", "Import an archive", box);
  row->addWidget(new QLabel("Every record as one JSON file, to keep or to move to another machine.", box), 1);
  row->addWidget(exportButton);
  row->addWidget(importButton);
  layout->addLayout(row);
  importCounts_ = new QLabel(box);
  importCounts_->setWordWrap(true);
  importCounts_->setAccessibleName("What importing would do");
  importCounts_->hide();
  layout->addWidget(importCounts_);
  importConfirm_ = new QWidget(box);
  auto* confirmRow = new QHBoxLayout(importConfirm_);
  confirmRow->setContentsMargins(0, 0, 0, 0);
  auto* confirm = button("Import", "Import the archive", importConfirm_);
  auto* cancel = button("Cancel", "Cancel the import", importConfirm_);
  confirmRow->addStretch(1);
  confirmRow->addWidget(cancel);
  confirmRow->addWidget(confirm);
  importConfirm_->hide();
  layout->addWidget(importConfirm_);
  layout->addWidget(messageLine(box));
  const auto ask = [this](bool save, const QString& title, const std::function<void(const QString&)>& then) {
    auto* dialog = new QFileDialog(this, title, QString(), "JSON archives (*.json);;All files (*)");
    dialog->setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    if (save) {
      dialog->setDefaultSuffix("json");
      dialog->selectFile("Quillmont.json");
    }
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QFileDialog::fileSelected, this, then);
    dialog->open();
  };
  connect(exportButton, &QPushButton::clicked, this,
          [this, ask] { ask(true, "Export the archive", [this](const QString& path) { exportArchive(path); }); });
  connect(importButton, &QPushButton::clicked, this,
          [this, ask] { ask(false, "Import an archive", [this](const QString& path) { previewImport(path); }); });
  connect(confirm, &QPushButton::clicked, this, [this] { confirmImport(); });
  connect(cancel, &QPushButton::clicked, this, [this] {
    pendingArchive_.reset();
    importCounts_->hide();
    importConfirm_->hide();
  });
}

bool SettingsPage::exportArchive(const QString& path) {
  say("Archive", {});
  try {
    StoreSession session;
    const auto exported = ArchiveExport::toFile(session, path.toStdString());
    say("Archive",
        QString("Saved %1: %2 work entries, %3 bookings, %4 schedules.")
            .arg(path).arg(exported.workEntries).arg(exported.bookings).arg(exported.schedules),
        false);
    return true;
  } catch (const std::exception& error) {
    say("Archive", QString::fromUtf8(error.what()));
  }
  return false;
}

bool SettingsPage::previewImport(const QString& path) {
  say("Archive", {});
  pendingArchive_.reset();
  importCounts_->hide();
  importConfirm_->hide();
  try {
    TimeBankArchive archive = ArchiveImport::decode(FileTransfer::read(path.toStdString(), FileTransfer::maximumArchiveBytes),
                                                    path.toStdString());
    StoreSession session;
    const TimeBankArchiveMergeResult counts = ArchiveImport::merge(session, archive, true);
    importCounts_->setText(QString("Importing %1 would add %2, update %3 and leave %4 unchanged. "
                                   "Nothing has changed yet.")
                               .arg(path, counted(counts.inserted, "record", "records"))
                               .arg(counts.updated)
                               .arg(counts.unchanged));
    importCounts_->show();
    importConfirm_->show();
    pendingArchive_ = std::move(archive);
    return true;
  } catch (const std::exception& error) {
    say("Archive", QString::fromUtf8(error.what()));
  }
  return false;
}

bool SettingsPage::confirmImport() {
  if (!pendingArchive_) return false;
  TimeBankArchiveMergeResult counts;
  const bool done = attempt("Archive", [this, &counts](StoreSession& session) {
    counts = ArchiveImport::merge(session, *pendingArchive_, false);
  });
  if (done) {
    pendingArchive_.reset();
    importCounts_->hide();
    importConfirm_->hide();
    say("Archive", QString("Imported: %1 added, %2 updated, %3 unchanged.").arg(counts.inserted).arg(counts.updated).arg(counts.unchanged),
        false);
  }
  return done;
}

void SettingsPage::buildHolidays() {
  QGroupBox* box = section("Public holidays");
  auto* layout = new QVBoxLayout(box);
  auto* row = new QHBoxLayout;
  auto* importButton = button("Import calendar\u2026", "Import public holidays", box);
  row->addWidget(new QLabel("Nothing is planned on public holidays from an iCalendar file.", box), 1);
  row->addWidget(importButton);
  layout->addLayout(row);
  holidayCounts_ = new QLabel(box);
  holidayCounts_->setWordWrap(true);
  holidayCounts_->setAccessibleName("What importing the holidays would do");
  holidayCounts_->hide();
  layout->addWidget(holidayCounts_);
  holidayConfirm_ = new QWidget(box);
  auto* confirmRow = new QHBoxLayout(holidayConfirm_);
  confirmRow->setContentsMargins(0, 0, 0, 0);
  auto* confirm = button("Add holidays", "Add the holidays", holidayConfirm_);
  auto* cancel = button("Cancel", "Cancel the holiday import", holidayConfirm_);
  confirmRow->addStretch(1);
  confirmRow->addWidget(cancel);
  confirmRow->addWidget(confirm);
  holidayConfirm_->hide();
  layout->addWidget(holidayConfirm_);
  layout->addWidget(messageLine(box));
  connect(importButton, &QPushButton::clicked, this, [this] {
    auto* dialog = new QFileDialog(this, "Import public holidays", QString(), "iCalendar files (*.ics);;All files (*)");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) { previewHolidays(path); });
    dialog->open();
  });
  connect(confirm, &QPushButton::clicked, this, [this] { confirmHolidays(); });
  connect(cancel, &QPushButton::clicked, this, [this] {
    pendingHolidays_.reset();
    holidayCounts_->hide();
    holidayConfirm_->hide();
  });
}

bool SettingsPage::previewHolidays(const QString& path) {
  say("Public holidays", {});
  pendingHolidays_.reset();
  holidayCounts_->hide();
  holidayConfirm_->hide();
  try {
    const std::string text = FileTransfer::read(path.toStdString(), FileTransfer::maximumCalendarBytes);
    StoreSession session;
    HolidayImport::Preview preview = HolidayImport::preview(session, text);
    const Display display(session.calendar());
    QStringList days;
    for (const auto& plan : preview.plans) {
      if (plan.adds() && days.size() < 12) days << qs(plan.holiday.day) + " " + qs(plan.holiday.name);
    }
    if (preview.added > 12) days << QString("and %1 more").arg(preview.added - 12);
    holidayCounts_->setText(QString("Importing would add %1 and free %2 of planned time. Nothing has changed yet.%3")
                                .arg(counted(static_cast<long long>(preview.added), "holiday", "holidays"))
                                .arg(durationText(preview.freedMinutes))
                                .arg(days.isEmpty() ? QString() : "\n" + days.join("\n")));
    holidayCounts_->show();
    holidayConfirm_->setVisible(preview.added > 0);
    pendingHolidays_ = std::move(preview);
    return true;
  } catch (const std::exception& error) {
    say("Public holidays", QString::fromUtf8(error.what()));
  }
  return false;
}

bool SettingsPage::confirmHolidays() {
  if (!pendingHolidays_) return false;
  std::int64_t added = 0;
  const bool done = attempt("Public holidays", [this, &added](StoreSession& session) {
    added = HolidayImport::record(session, *pendingHolidays_);
  });
  if (done) {
    pendingHolidays_.reset();
    holidayCounts_->hide();
    holidayConfirm_->hide();
    say("Public holidays", "Added " + counted(added, "holiday", "holidays") + ".", false);
  }
  return done;
}

void SettingsPage::buildErase() {
  QGroupBox* box = section("Erase");
  auto* row = new QHBoxLayout(box);
  row->addWidget(new QLabel("Delete every booking, work entry, schedule and setting. Undo brings them back.", box), 1);
  auto* eraseButton = button("Erase everything\u2026", "Erase everything", box);
  row->addWidget(eraseButton);
  auto* column = new QVBoxLayout;
  row->addLayout(column);
  column->addWidget(messageLine(box));
  connect(eraseButton, &QPushButton::clicked, this, [this] { erase(); });
}

void SettingsPage::erase() {
  QString what;
  try {
    StoreSession session;
    ModelContext& context = session.context();
    what = QString("%1 bookings, %2 work entries and %3 schedules, and every setting, will be deleted.")
               .arg(context.fetch<BalanceAdjustment>().size())
               .arg(context.fetch<WorkEntry>().size())
               .arg(context.fetch<WorkSchedule>().size());
  } catch (const std::exception& error) {
    say("Erase", QString::fromUtf8(error.what()));
    return;
  }
  auto* box = new QMessageBox(QMessageBox::Warning, "Erase everything?", what, QMessageBox::Cancel, this);
  box->setInformativeText("Undo (Ctrl+Z) brings it back as long as nothing changes meanwhile.");
  QPushButton* eraseButton = box->addButton("Erase", QMessageBox::DestructiveRole);
  box->setDefaultButton(QMessageBox::Cancel);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setWindowModality(Qt::WindowModal);
  connect(box, &QMessageBox::buttonClicked, this, [this, eraseButton](QAbstractButton* clicked) {
    if (clicked != eraseButton) return;
    if (attempt("Erase", [](StoreSession& session) { Housekeeping::eraseAll(session); })) say("Erase", "Everything was erased.", false);
  });
  box->open();
}

// --- reading ------------------------------------------------------------------

QString SettingsPage::value(const QString& label) const {
  if (label == "Set-up") return setUp_->text();
  if (label == "Calculation start") return start_->date().toString(Qt::ISODate);
  if (label == "Starting balance") return balance_->text();
  if (label == "Planned week") {
    QStringList days;
    for (std::size_t i = 0; i < week_.size(); ++i) days << QString(weekdays[i]) + " " + week_[i]->text();
    return days.join("   ");
  }
  if (label == "Quick actions") {
    QStringList amounts;
    for (const QComboBox* choice : quick_) amounts << choice->currentText();
    return amounts.join(", ");
  }
  if (label == "Categories") {
    QStringList titles;
    for (int row = 0; row < categories_->count(); ++row) titles << categories_->item(row)->text();
    return titles.join(", ");
  }
  return {};
}

void SettingsPage::show(StoreSession& session) {
  const Configuration::Settings settings = Configuration::read(session);
  const Display display(session.calendar());
  setUp_->setText(settings.isSetUp ? "complete" : "not complete: choose the values below and set up");
  saveBank_->setText(settings.isSetUp ? "Save" : "Set up");
  const DateInput::Day start = DateInput::dayOf(settings.calculationStart, session.calendar());
  start_->setDate(QDate(start.year, start.month, start.day));
  balance_->setText(qs(Display::amountOfMinutes(settings.startingBalanceMinutes)));
  for (std::size_t day = 0; day < 7; ++day) week_[day]->setText(durationText(settings.week[day]));
  for (std::size_t i = 0; i < quick_.size() && i < settings.quickActionMinutes.size(); ++i) {
    const int index = quick_[i]->findData(QVariant::fromValue<qint64>(settings.quickActionMinutes[i]));
    if (index >= 0) quick_[i]->setCurrentIndex(index);
  }
  if (scheduleWeek_.front()->text().isEmpty()) {
    for (std::size_t day = 0; day < 7; ++day) scheduleWeek_[day]->setText(durationText(settings.week[day]));
  }

  const auto schedules = Schedules::list(session);
  scheduleIds_.clear();
  schedules_->setRowCount(static_cast<int>(std::min(schedules.size(), settings.schedules.size())));
  for (int row = 0; row < schedules_->rowCount(); ++row) {
    // Both lists are in the order the schedules take effect.
    const auto& schedule = *schedules[static_cast<std::size_t>(row)];
    const auto& week = settings.schedules[static_cast<std::size_t>(row)].week;
    scheduleIds_.push_back(schedule.id().uuidString());
    schedules_->setItem(row, 0, new QTableWidgetItem(qs(display.day(schedule.effectiveFrom()))));
    for (int day = 0; day < 7; ++day) {
      auto* cell = new QTableWidgetItem(durationText(week[static_cast<std::size_t>(day)]));
      cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
      schedules_->setItem(row, day + 1, cell);
    }
  }
  schedules_->setVisible(!schedules.empty());
  noSchedules_->setVisible(schedules.empty());

  const auto offered = OfferedKinds::offered(session);
  for (std::size_t i = 0; i < kinds_.size(); ++i) {
    const QSignalBlocker quiet(kinds_[i]);
    kinds_[i]->setChecked(offered.contains(AdjustmentKindConfiguration::configurableKinds[i]));
  }
  categories_->clear();
  for (const auto& title : settings.categories) categories_->addItem(qs(title));
  showPreferences();
  showSync();
}

void SettingsPage::clear() {
  setUp_->clear();
  balance_->clear();
  for (QLineEdit* day : week_) day->clear();
  schedules_->setRowCount(0);
  scheduleIds_.clear();
  categories_->clear();
}

}  // namespace quillmont
