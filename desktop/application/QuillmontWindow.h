// QuillmontWindow: the application window that links open. It only switches
// between its pages, one per route (overview, history, reports, settings);
// each page reads its own figures through the application layer when it is
// shown and whenever the store changes (the widgets' reload signal).
#pragma once

#include <vector>

#include <QMainWindow>

#include "core/persistence/AppRoute.h"

class QTabWidget;

namespace quillmont {

class Page;
class OverviewPage;
class HistoryPage;
class ReportsPage;
class SettingsPage;

class QuillmontWindow final : public QMainWindow {
  Q_OBJECT

 public:
  explicit QuillmontWindow(QWidget* parent = nullptr);

  /// Shows the route's page, raising the window.
  void open(AppRoute route);
  AppRoute currentRoute() const;

  OverviewPage& overviewPage() const { return *overview_; }
  HistoryPage& historyPage() const { return *history_; }
  ReportsPage& reportsPage() const { return *reports_; }
  SettingsPage& settingsPage() const { return *settings_; }
  Page& page(AppRoute route) const;

 public slots:
  /// Reads the page on show again; the others are read when they are shown.
  void refresh();

 private:
  QTabWidget* tabs_;
  OverviewPage* overview_;
  HistoryPage* history_;
  ReportsPage* reports_;
  SettingsPage* settings_;
  std::vector<Page*> pages_;
  /// Pages read since the store last changed.
  std::vector<bool> current_;
};

}  // namespace quillmont
