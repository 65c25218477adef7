// QuillmontWindow: the plain application window that links open: one page
// per route (overview, history, reports, settings) showing what the command
// line shows for it, read afresh when the page is shown and whenever the
// store changes (the widgets' reload signal).
#pragma once

#include <QMainWindow>
#include <vector>

#include "core/persistence/AppRoute.h"

class QPlainTextEdit;
class QTabWidget;

namespace quillmont {

class QuillmontWindow final : public QMainWindow {
  Q_OBJECT

 public:
  explicit QuillmontWindow(QWidget* parent = nullptr);

  /// Shows the route's page, raising the window.
  void open(AppRoute route);
  AppRoute currentRoute() const;
  /// The text on the route's page.
  QString pageText(AppRoute route) const;

 public slots:
  /// Reads every page again.
  void refresh();

 private:
  void refreshPage(int index);

  QTabWidget* tabs_;
  std::vector<QPlainTextEdit*> pages_;
};

}  // namespace quillmont
