// QuillmontWindow: the application window. It only switches between its
// pages, one per route (overview, history, reports, settings), and in front
// of them the set-up form while the time bank is not set up. Each page reads
// its own figures through the application layer when it is shown and
// whenever the store changes (the widgets' reload signal) or the day does.
//
// The window remembers its size and last page in the application's
// preferences. Its shortcuts: Ctrl+1 to Ctrl+4 the pages, Ctrl+N a new
// booking, Ctrl+F the activity filter, Ctrl+Z undo, F5 read again, Ctrl+W
// close, Ctrl+Q quit. Ctrl+N puts the keyboard on the overview's booking
// form, Ctrl+F on the activity's filter.
#pragma once

#include <vector>

#include <QDateTime>
#include <QMainWindow>
#include <QTimer>

#include "core/persistence/AppRoute.h"

class QAction;
class QStackedWidget;
class QTabWidget;

namespace quillmont {

class Page;
class OverviewPage;
class HistoryPage;
class ReportsPage;
class SetupForm;
class SettingsPage;

class QuillmontWindow final : public QMainWindow {
  Q_OBJECT

 public:

  explicit QuillmontWindow(QWidget* parent = nullptr);
  ~QuillmontWindow() override;

  /// Shows the route's page (or the set-up form while the bank is not set
  /// up), raising the window.
  void open(AppRoute route);
  /// Opens the page the window showed last.
  void openLast();
  AppRoute currentRoute() const;
  /// Whether the set-up form stands in front of the pages.
  bool showsSetup() const;

  OverviewPage& overviewPage() const { return *overview_; }
  HistoryPage& historyPage() const { return *history_; }
  ReportsPage& reportsPage() const { return *reports_; }
  SettingsPage& settingsPage() const { return *settings_; }
  SetupForm& setupForm() const { return *setup_; }
  Page& page(AppRoute route) const;
  /// Takes back the store's last journaled change (Ctrl+Z); pages may put
  /// it in their toolbars.
  QAction& undoAction() const { return *undo_; }
  /// Whether the window keeps its page and size in the preferences (not
  /// while it only draws pictures).
  void setRemembering(bool remembers) { remembers_ = remembers; }
  /// What the status line says now (the outcome of an undo).
  QString statusText() const;

  /// Milliseconds from `now` to just after the next local midnight.
  static qint64 millisecondsToNextDay(const QDateTime& now);

 public slots:
  /// Reads the page on show again; the others are read when they are shown.
  void refresh();
  /// Takes back the last journaled change and says what it did or why not.
  void undo();

 signals:
  /// The window was closed (not merely hidden by a minimise).
  void closed();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void goTo(AppRoute route);
  /// Shows the set-up form when the bank is not set up; true when it is.
  bool checkSetup();
  void rememberGeometry() const;
  void scheduleDayChange();

  QStackedWidget* stack_;
  QTabWidget* tabs_;
  SetupForm* setup_;
  OverviewPage* overview_;
  HistoryPage* history_;
  ReportsPage* reports_;
  SettingsPage* settings_;
  QAction* undo_;
  std::vector<Page*> pages_;
  /// Pages read since the store last changed.
  std::vector<bool> current_;
  QTimer dayChange_;
  bool remembers_ = true;
};

}  // namespace quillmont
