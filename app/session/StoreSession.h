// StoreSession: the record store as every command that reads or changes it
// opens it: the container where the entitlements put it, a fresh context,
// the user's calendar and the present instant, and the maintenance writers
// (activity, configuration, ledger migration) run and saved before the
// command sees anything. The settings record is the one maintenance chose.
// A store that cannot be written opens read-only: maintenance then changes
// only what the session holds, and any save says the store is read-only.
//
// When the session ends and anything was saved through it (by the command or
// by maintenance), it rebuilds the widget snapshot; when that shows anything
// other than the stored one (a figure, or another day), it saves it and asks
// every widget to reload, so no widget shows figures older than the store.
// A refresh that fails leaves the widget its last figures and is reported
// through the host's warning handler (the command line prints it).
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "app/input/DateInput.h"
#include "core/ledger/TimeBankSettings.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/store/ModelContainer.h"
#include "platform/store/ModelContext.h"

namespace quillmont {

class StoreSession {
 public:
  /// Opens and repairs the store; the store's errors pass through.
  StoreSession();
  /// Refreshes the widget when the store changed; never throws.
  ~StoreSession();
  StoreSession(const StoreSession&) = delete;
  StoreSession& operator=(const StoreSession&) = delete;

  /// Receives what a session could not do but did not fail for (a widget
  /// snapshot that could not be written); a host installs it once. Without
  /// one, such warnings are dropped.
  using WarningHandler = std::function<void(const std::string&)>;
  static void setWarningHandler(WarningHandler handler);

  /// Where the store a session opens lives (or will live); asking creates nothing.
  static std::filesystem::path storePath();

  ModelContext& context() { return *context_; }
  const std::shared_ptr<ModelContainer>& container() const { return container_; }
  const Calendar& calendar() const { return calendar_; }
  Date now() const { return now_; }
  TimeBankSettings& settings() { return *settings_; }
  /// Today in the user's time zone.
  DateInput::Day today() const { return DateInput::dayOf(now_, calendar_); }

  /// Marks the settings as changed now and saves the context.
  void saveSettings();
  /// Journals what the command saves from now on as one action, so that
  /// `quillmont undo` can take it back; `action` is how undo names it.
  void journal(std::string action) { context_->setUndoAction(std::move(action)); }

  /// Rebuilds the widget snapshot when the store changed since the last
  /// refresh, and saves it and asks the widgets to reload when the widgets
  /// would draw it differently from the stored one today. A snapshot that
  /// cannot be built or written is reported to the warning handler; the widget
  /// keeps its last one.
  void refreshWidget() noexcept;

 private:
  /// Runs maintenance; the settings record it chose.
  std::shared_ptr<TimeBankSettings> repaired();

  Calendar calendar_;
  Date now_;
  std::shared_ptr<ModelContainer> container_;
  std::unique_ptr<ModelContext> context_;
  std::shared_ptr<TimeBankSettings> settings_;
  std::uint64_t refreshedAtSave_ = 0;
};

}  // namespace quillmont
