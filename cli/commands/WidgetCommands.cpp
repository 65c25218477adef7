#include "cli/commands/WidgetCommands.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <any>
#include <array>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "app/Refusal.h"
#include "app/session/StoreSession.h"
#include "cli/tree/CommandSet.h"
#include "app/text/Display.h"
#include "cli/output/Terminal.h"
#include "cli/output/ViewTreeJSON.h"
#include "cli/output/WidgetTerminalRendering.h"
#include "core/ledger/DurationFormatting.h"
#include "core/ledger/WorkEntry.h"
#include "core/persistence/QuillmontPersistence.h"
#include "core/persistence/RuntimeEntitlements.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/JsonWriter.h"
#include "platform/store/ModelContext.h"
#include "platform/store/RowFilter.h"
#include "platform/widgets/WallClockAlarm.h"
#include "platform/widgets/WidgetReloadWatcher.h"
#include "widget/AdjustTimeBankIntent.h"
#include "widget/QuillmontWidgets.h"
#include "widget/TimeBankWidget.h"
#include "widget/TimeBankWidgetView.h"

namespace quillmont::WidgetCommands {
namespace {

struct ShowOptions {
  std::string size = "medium";
  std::string format = "text";
  bool follow = false;
};

WidgetConfiguration timeBankWidget() {
  auto widget = QuillmontWidgets().widget(TimeBankWidget().kind);
  if (!widget) throw Refusal("the widget bundle has no time-bank widget");
  return *widget;
}

// The work the timer is recording, if any: the running entry that started
// last by now. The status-bar line and the JSON rendering show it beside the
// widget's figures; the store is only read, and one that cannot be read (or
// does not exist yet) has no timer running.
struct RunningTimer {
  Date since;
  std::string note;
  bool operator==(const RunningTimer&) const = default;
};

std::optional<RunningTimer> runningTimer() {
  try {
    if (!std::filesystem::is_regular_file(StoreSession::storePath())) return std::nullopt;
    ModelContext context(QuillmontPersistence::makeContainer(false, false, RuntimeEntitlements::hasUsableAppGroup()));
    const Date now = Date::now();
    std::optional<RunningTimer> found;
    const RowFilter running = RowFilter::allOf({{"endedAt", RowFilter::Op::isNull, {}}});
    for (const auto& entry : context.fetch<WorkEntry>(running)) {
      if (!entry->isRunning() || entry->startedAt() > now) continue;
      if (!found || entry->startedAt() > found->since) found = RunningTimer{entry->startedAt(), entry->note()};
    }
    return found;
  } catch (...) {
    return std::nullopt;  // the widget's figures are shown all the same
  }
}

// Wakes when a change to the record store is committed: the store's
// rollback journal is deleted at the end of every write transaction (reads
// leave none), so a command that only reads wakes nothing. Without a store
// folder yet it watches nothing, and is asked to try again later.
class StoreChangeWatch {
 public:
  StoreChangeWatch() : inotify_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) { attach(); }
  ~StoreChangeWatch() {
    if (inotify_ >= 0) ::close(inotify_);
  }
  StoreChangeWatch(const StoreChangeWatch&) = delete;
  StoreChangeWatch& operator=(const StoreChangeWatch&) = delete;

  /// Starts watching when the store's folder exists by now.
  void attach() {
    if (attached_ || inotify_ < 0) return;
    const auto folder = StoreSession::storePath().parent_path();
    attached_ = ::inotify_add_watch(inotify_, folder.c_str(), IN_DELETE | IN_MOVED_TO) >= 0;
  }
  int fileDescriptor() const { return attached_ ? inotify_ : -1; }
  /// Consumes what arrived; whether the store changed.
  bool takeChanges() {
    alignas(inotify_event) std::array<char, 4096> buffer;
    const std::string store = StoreSession::storePath().filename().string();
    bool changed = false;
    for (;;) {
      const ssize_t count = ::read(inotify_, buffer.data(), buffer.size());
      if (count <= 0) break;
      for (ssize_t offset = 0; offset < count;) {
        const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + offset);
        if (event->len > 0 && std::string_view(event->name).starts_with(store)) changed = true;
        if (event->mask & IN_Q_OVERFLOW) changed = true;
        offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
      }
    }
    return changed;
  }

 private:
  int inotify_;
  bool attached_ = false;
};

const WidgetSnapshot& snapshotOf(const RenderedEntry& entry) {
  return std::any_cast<const TimeBankTimelineEntry&>(entry.entry).snapshot;
}

std::string textRendering(const RenderedEntry& entry, WidgetFamily family) {
  std::string text;
  for (const auto& line : WidgetTerminalRendering::render(entry.content, family, Terminal::standardOutputHasColour())) {
    text += line;
    text += '\n';
  }
  return text;
}

std::string jsonRendering(const Timeline<RenderedEntry>& timeline, WidgetFamily family, bool compact,
                          const std::optional<RunningTimer>& timer) {
  const RenderedEntry& entry = timeline.entries.front();
  const WidgetSnapshot& snapshot = snapshotOf(entry);
  const Display display(Calendar::autoupdatingCurrent());
  std::string text;
  JsonWriter writer(text, JsonWriter::Options{.prettyPrinted = !compact, .escapeSlashes = false});
  writer.beginObject();
  writer.key("kind");
  writer.string(TimeBankWidget().kind);
  writer.key("family");
  writer.string(name(family));
  writer.key("date");
  writer.string(display.timestamp(entry.date));
  writer.key("reloadAt");
  if (const auto reload = timeline.nextReload()) {
    writer.string(display.timestamp(*reload));
  } else {
    writer.null();
  }
  writer.key("snapshot");
  writer.beginObject();
  writer.key("balanceSeconds");
  writer.number(snapshot.balanceSeconds);
  writer.key("todayWorkedSeconds");
  writer.number(snapshot.todayWorkedSeconds);
  writer.key("todayExpectedSeconds");
  writer.number(snapshot.todayExpectedSeconds);
  writer.key("isConfigured");
  writer.boolean(snapshot.isConfigured);
  writer.key("updatedAt");
  writer.string(display.timestamp(snapshot.updatedAt));
  writer.endObject();
  writer.key("content");
  ViewTreeJSON::write(writer, entry.content);
  if (timer) {
    writer.key("timer");
    writer.beginObject();
    writer.key("runningSince");
    writer.string(display.timestamp(timer->since));
    writer.key("note");
    writer.string(timer->note);
    writer.endObject();
  }
  writer.endObject();
  text += '\n';
  return text;
}

// One line for a waybar custom module with `return-type: json`. A running
// timer adds its time so far to the text and its start and note to the
// tooltip, and makes the class a list that also holds "timer-running".
std::string waybarRendering(const RenderedEntry& entry, const std::optional<RunningTimer>& timer) {
  const WidgetSnapshot& snapshot = snapshotOf(entry);
  std::string text;
  JsonWriter writer(text, JsonWriter::Options{.prettyPrinted = false, .escapeSlashes = false});
  writer.beginObject();
  if (snapshot.isConfigured) {
    const std::string balance = DurationFormatting::clock(snapshot.balanceSeconds, true);
    std::string shown = balance;
    std::string tooltip = "Time bank " + balance + "\n" + TimeBankWidgetView::todayText(snapshot) + " (+" +
                          DurationFormatting::clock(snapshot.todayWorkedSeconds, false) + " added, \u2212" +
                          DurationFormatting::clock(snapshot.todayExpectedSeconds, false) + " subtracted)";
    const std::string sign = balance.starts_with("\u2212") ? "negative" : "positive";
    if (timer) {
      const std::string worked = DurationFormatting::clock(std::max(0.0, Date::now() - timer->since), false);
      shown += " \u25B6 " + worked;
      tooltip += "\nTimer running since " + Display(Calendar::autoupdatingCurrent()).time(timer->since) + ", " +
                 worked + " so far" + (timer->note.empty() ? std::string() : ": " + timer->note);
    }
    writer.key("text");
    writer.string(shown);
    writer.key("tooltip");
    writer.string(tooltip);
    writer.key("class");
    if (timer) {
      writer.beginArray();
      writer.string(sign);
      writer.string("timer-running");
      writer.endArray();
    } else {
      writer.string(sign);
    }
  } else {
    writer.key("text");
    writer.string("Set up");
    writer.key("tooltip");
    writer.string("Set up your time bank\nOpen Quillmont to begin.");
    writer.key("class");
    writer.string("not-set-up");
  }
  writer.endObject();
  text += '\n';
  return text;
}

// Why a follower wakes: the widget reloads (or its reload instant or the
// timer's next minute came), the store changed, which may have started or
// stopped the timer, or the program reading the output went away (a pipe's
// reader that closed), so a desktop's feed does not outlive its desktop.
enum class Wake { redraw, storeChanged, readerGone };

Wake waitForChange(WidgetReloadWatcher& reloads, StoreChangeWatch& store, std::optional<Date> until) {
  if (reloads.takeRequests()) return Wake::redraw;
  if (until && *until <= Date::now()) return Wake::redraw;
  std::optional<WallClockAlarm> alarm;
  if (until) alarm.emplace().arm(*until);
  std::array<pollfd, 4> watched{pollfd{reloads.fileDescriptor(), POLLIN, 0},
                                pollfd{store.fileDescriptor(), POLLIN, 0},
                                pollfd{alarm ? alarm->fileDescriptor() : -1, POLLIN, 0},
                                pollfd{STDOUT_FILENO, 0, 0}};
  for (;;) {
    if (::poll(watched.data(), watched.size(), -1) < 0) {
      if (errno == EINTR) continue;
      throw std::system_error(errno, std::generic_category(), "waiting for widget reloads");
    }
    if (watched[0].revents != 0 && reloads.takeRequests()) return Wake::redraw;
    if (watched[1].revents != 0 && store.takeChanges()) return Wake::storeChanged;
    if (alarm && watched[2].revents != 0 && alarm->take() != WallClockAlarm::Ring::notYet) return Wake::redraw;
    if (watched[3].revents & (POLLERR | POLLHUP)) return Wake::readerGone;
  }
}

// When the timer's time so far, rounded to the minute, next shows another minute.
Date nextTimerMinute(const RunningTimer& timer) {
  const double elapsed = std::max(0.0, Date::now() - timer.since);
  return timer.since + (std::floor((elapsed + 30.0) / 60.0) * 60.0 + 30.0 + 0.05);
}

void show(const ShowOptions& options) {
  const WidgetFamily family = widgetFamilyNamed(options.size).value_or(WidgetFamily::systemMedium);
  const WidgetConfiguration widget = timeBankWidget();
  // Watching starts before the first drawing, so no reload in between is missed.
  std::unique_ptr<WidgetReloadWatcher> watcher;
  if (options.follow) watcher = std::make_unique<WidgetReloadWatcher>();
  // The JSON and status-bar renderings show the timer too, so they also
  // follow the store, and draw again when the timer starts or stops.
  const bool showsTimer = options.format == "json" || options.format == "waybar";
  std::unique_ptr<StoreChangeWatch> storeWatch;
  if (options.follow && showsTimer) storeWatch = std::make_unique<StoreChangeWatch>();
  std::optional<RunningTimer> timer = showsTimer ? runningTimer() : std::nullopt;
  const bool clearScreen = options.follow && options.format == "text" && Terminal::standardOutputHasColour();
  for (;;) {
    const Timeline<RenderedEntry> timeline = widget.timeline(TimelineProviderContext{family, false});
    if (timeline.entries.empty()) throw Refusal("the widget gave no entry to show");
    const RenderedEntry& entry = timeline.entries.front();
    std::string output;
    if (options.format == "json") {
      output = jsonRendering(timeline, family, options.follow, timer);
    } else if (options.format == "waybar") {
      output = waybarRendering(entry, timer);
    } else {
      output = (clearScreen ? "\x1b[H\x1b[2J" : "") + textRendering(entry, family);
      if (options.follow && !clearScreen) output += '\n';
    }
    Terminal::write(output);
    if (!options.follow) return;
    std::cout.flush();
    if (!std::cout) return;  // the reader went away
    if (!storeWatch) {
      watcher->wait(timeline.nextReload());
      continue;
    }
    for (;;) {
      storeWatch->attach();  // the store's folder may have come since
      std::optional<Date> until = timeline.nextReload();
      if (timer && options.format == "waybar") {
        const Date minute = nextTimerMinute(*timer);
        if (!until || minute < *until) until = minute;
      }
      const Wake wake = waitForChange(*watcher, *storeWatch, until);
      if (wake == Wake::readerGone) return;
      std::optional<RunningTimer> now = runningTimer();
      if (wake == Wake::redraw || now != timer) {
        timer = std::move(now);
        break;
      }
    }
  }
}

void press(const std::string& button) {
  const AdjustTimeBankIntent intent(button == "add" ? 60 : -60);
  const auto result = intent.adjust();
  if (result.outcome != AdjustTimeBankIntent::AdjustmentOutcome::recorded) throw Refusal(result.dialog);
  Terminal::message(result.dialog);
}

void info() {
  const WidgetConfiguration widget = timeBankWidget();
  std::string sizes;
  for (const WidgetFamily family : widget.supportedFamilies) {
    if (!sizes.empty()) sizes += ", ";
    sizes += name(family);
  }
  const auto row = [](std::string_view label, const std::string& value) {
    Terminal::print(Terminal::styled(label, Terminal::Style::dim) + std::string(13 - label.size(), ' ') + value);
  };
  row("Kind", widget.kind);
  row("Name", widget.displayName);
  row("Description", widget.description);
  row("Sizes", sizes);
}

}  // namespace

void install(CommandSet& commands) {
  CLI::App* widget = commands.addGroup(commands.root(), "widget", "The desktop widget in a terminal or a status bar");
  const auto builds = commands.subcommands({"show", "press", "info"});

  if (builds("show")) {
    auto options = std::make_shared<ShowOptions>();
    CLI::App* showCommand =
        commands.add(*widget, "show",
                     "Draw the widget from its last snapshot (json and waybar also show a running timer)",
                     [options] { show(*options); });
    commands
        .oneOf(showCommand->add_option("--size", options->size, "small or medium (default medium)"),
               {"small", "medium"})
        ->type_name("SIZE");
    commands
        .oneOf(showCommand->add_option("--format", options->format,
                                       "text (the widget as drawn), json (its view tree) or waybar (a status-bar "
                                       "module line)"),
               {"text", "json", "waybar"})
        ->type_name("FORMAT");
    showCommand->add_flag("--follow,-f", options->follow,
                          "Keep running and draw again whenever the widget reloads (one JSON object per line)");
  }

  if (builds("press")) {
    auto button = std::make_shared<std::string>();
    CLI::App* pressCommand = commands.add(*widget, "press", "Press the widget's button: add or subtract 60 minutes",
                                          [button] { press(*button); });
    commands
        .oneOf(pressCommand->add_option("BUTTON", *button, "add (+60 minutes) or subtract (\u221260 minutes)"),
               {"add", "subtract"})
        ->required();
  }

  if (builds("info")) commands.add(*widget, "info", "The widget's kind, name, description and sizes", [] { info(); });
}

}  // namespace quillmont::WidgetCommands
