// SettingsPage: the bank's settings (set-up, calculation start, starting
// balance, the planned week, quick actions, the kinds and categories
// offered when booking) and its weekly schedules.
#pragma once

#include <vector>

#include "desktop/application/Page.h"

class QFormLayout;
class QLabel;
class QTableWidget;

namespace quillmont {

class SettingsPage final : public Page {
  Q_OBJECT

 public:
  explicit SettingsPage(QWidget* parent = nullptr);

  /// The shown value of a setting by its label ("Starting balance", ...).
  QString value(const QString& label) const;
  QTableWidget& schedules() const { return *schedules_; }

 protected:
  void show(StoreSession& session) override;
  void clear() override;

 private:
  QLabel* addValue(QFormLayout* form, const QString& label);

  std::vector<QLabel*> values_;
  QTableWidget* schedules_;
  QLabel* noSchedules_;
};

}  // namespace quillmont
