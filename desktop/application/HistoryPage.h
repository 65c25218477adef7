// HistoryPage: every booking and work entry, newest first, with the balance
// after each booking, in one table view over a HistoryModel.
#pragma once

#include "desktop/application/Page.h"

class QTableView;
class QLabel;

namespace quillmont {

class HistoryModel;

class HistoryPage final : public Page {
  Q_OBJECT

 public:
  explicit HistoryPage(QWidget* parent = nullptr);

  HistoryModel& model() const { return *model_; }
  QTableView& view() const { return *view_; }

 protected:
  void show(StoreSession& session) override;
  void clear() override;

 private:
  HistoryModel* model_;
  QTableView* view_;
  QLabel* empty_;
};

}  // namespace quillmont
