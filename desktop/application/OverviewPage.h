// OverviewPage: the balance in large digits and today's figures below it:
// what was credited and debited today, the time worked, the timer, what
// is not settled yet, and a note while set-up is not complete. While the
// timer runs, the page reads its figures again every minute.
#pragma once

#include "app/overview/Overview.h"
#include "desktop/application/Page.h"

class QLabel;
class QTimer;

namespace quillmont {

class OverviewPage final : public Page {
  Q_OBJECT

 public:
  explicit OverviewPage(QWidget* parent = nullptr);

  /// The figures last shown.
  const Overview::Figures& figures() const { return figures_; }
  QString balanceText() const;
  QString todayText() const;
  QString workedText() const;
  QString timerText() const;
  QString unsettledText() const;

 protected:
  void show(StoreSession& session) override;
  void clear() override;

 private:
  Overview::Figures figures_;
  QLabel* balance_;
  QLabel* today_;
  QLabel* worked_;
  QLabel* timer_;
  QLabel* unsettledLabel_;
  QLabel* unsettled_;
  QLabel* setUp_;
  /// Reads again each minute while a timer runs and the page is shown.
  QTimer* tick_;
};

}  // namespace quillmont
