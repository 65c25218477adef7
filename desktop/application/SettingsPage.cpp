#include "desktop/application/SettingsPage.h"

#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

#include "app/configuration/Configuration.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "core/ledger/QuickActionConfiguration.h"

namespace quillmont {
namespace {

constexpr const char* weekdays[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};

QString joined(const std::vector<std::string>& parts, const QString& none) {
  QStringList list;
  for (const auto& part : parts) list << QString::fromStdString(part);
  return list.isEmpty() ? none : list.join(", ");
}

QString weekText(const WeekdayMinutes& week) {
  QStringList days;
  for (std::size_t i = 0; i < week.size(); ++i) {
    days << QString(weekdays[i]) + " " + QString::fromStdString(Display::duration(static_cast<double>(week[i]) * 60.0));
  }
  return days.join("   ");
}

}  // namespace

SettingsPage::SettingsPage(QWidget* parent)
    : Page(parent), schedules_(new QTableWidget(0, 8, this)), noSchedules_(new QLabel(this)) {
  auto* form = new QFormLayout;
  form->setLabelAlignment(Qt::AlignRight);
  form->setHorizontalSpacing(16);
  for (const char* label : {"Set-up", "Calculation start", "Starting balance", "Planned week", "Quick actions",
                            "Booking kinds", "Categories"}) {
    addValue(form, label);
  }

  auto* title = new QLabel("Weekly schedules", this);
  QFont bold = title->font();
  bold.setBold(true);
  title->setFont(bold);

  QStringList headers{"Effective from"};
  for (const char* day : weekdays) headers << day;
  schedules_->setHorizontalHeaderLabels(headers);
  schedules_->setAccessibleName("Weekly schedules");
  schedules_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  schedules_->setSelectionBehavior(QAbstractItemView::SelectRows);
  schedules_->setAlternatingRowColors(true);
  schedules_->setShowGrid(false);
  schedules_->verticalHeader()->hide();
  schedules_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
  schedules_->horizontalHeader()->setStretchLastSection(true);
  noSchedules_->setText("No schedules: the planned week applies to every day.");
  noSchedules_->setForegroundRole(QPalette::PlaceholderText);
  noSchedules_->hide();

  QVBoxLayout* layout = pageLayout();
  layout->addLayout(form);
  layout->addSpacing(12);
  layout->addWidget(title);
  layout->addWidget(schedules_, 1);
  layout->addWidget(noSchedules_);
  layout->addStretch(0);
}

QLabel* SettingsPage::addValue(QFormLayout* form, const QString& label) {
  auto* value = new QLabel(this);
  value->setAccessibleName(label);
  value->setObjectName(label);
  value->setWordWrap(true);
  value->setTextInteractionFlags(Qt::TextSelectableByMouse);
  form->addRow(label, value);
  values_.push_back(value);
  return value;
}

QString SettingsPage::value(const QString& label) const {
  for (const QLabel* shown : values_) {
    if (shown->objectName() == label) return shown->text();
  }
  return {};
}

void SettingsPage::show(StoreSession& session) {
  const Configuration::Settings settings = Configuration::read(session);
  const Display display(session.calendar());
  const auto set = [this](const QString& label, const QString& text) {
    for (QLabel* shown : values_) {
      if (shown->objectName() == label) shown->setText(text);
    }
  };
  set("Set-up", settings.isSetUp ? "complete" : "not complete (see quillmont setup --help)");
  set("Calculation start", QString::fromStdString(display.day(settings.calculationStart)));
  set("Starting balance", QString::fromStdString(Display::amountOfMinutes(settings.startingBalanceMinutes)));
  set("Planned week", weekText(settings.week));
  std::vector<std::string> quick;
  for (const std::int64_t minutes : settings.quickActionMinutes) {
    quick.push_back(QuickActionConfiguration::displayName(minutes));
  }
  set("Quick actions", joined(quick, "none"));
  set("Booking kinds", joined(settings.visibleKinds, "none"));
  set("Categories", joined(settings.categories, "none of your own"));

  schedules_->setRowCount(static_cast<int>(settings.schedules.size()));
  for (int row = 0; row < schedules_->rowCount(); ++row) {
    const auto& schedule = settings.schedules[static_cast<std::size_t>(row)];
    schedules_->setItem(row, 0, new QTableWidgetItem(QString::fromStdString(display.day(schedule.effectiveFrom))));
    for (int day = 0; day < 7; ++day) {
      auto* cell = new QTableWidgetItem(
          QString::fromStdString(Display::duration(static_cast<double>(schedule.week[static_cast<std::size_t>(day)]) * 60.0)));
      cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
      schedules_->setItem(row, day + 1, cell);
    }
  }
  const bool none = settings.schedules.empty();
  schedules_->setVisible(!none);
  noSchedules_->setVisible(none);
}

void SettingsPage::clear() {
  for (QLabel* shown : values_) shown->clear();
  schedules_->setRowCount(0);
  noSchedules_->hide();
}

}  // namespace quillmont
