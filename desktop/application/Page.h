// Page: one page of the Quillmont window. It reads its figures through the
// application layer in a store session of its own each time it is
// refreshed (when shown, and whenever the store changes); a store that
// cannot be opened or read leaves the page empty with the reason above it.
#pragma once

#include <QString>
#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace quillmont {

class StoreSession;

class Page : public QWidget {
  Q_OBJECT

 public:
  explicit Page(QWidget* parent = nullptr);

  /// Reads the page afresh; never throws.
  void refresh();
  /// Why the last refresh failed; empty when it did not.
  QString problem() const;

 protected:
  /// Reads the figures of an open store and shows them.
  virtual void show(StoreSession& session) = 0;
  /// Empties the page after a failed read.
  virtual void clear() = 0;
  /// Where a page puts its widgets, below the problem line.
  QVBoxLayout* pageLayout() const { return layout_; }

 private:
  QVBoxLayout* layout_;
  QLabel* problem_;
};

}  // namespace quillmont
