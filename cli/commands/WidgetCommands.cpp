#include "cli/commands/WidgetCommands.h"

#include <any>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "app/Refusal.h"
#include "cli/tree/CommandSet.h"
#include "app/text/Display.h"
#include "cli/output/Terminal.h"
#include "cli/output/ViewTreeJSON.h"
#include "cli/output/WidgetTerminalRendering.h"
#include "core/ledger/DurationFormatting.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/JsonWriter.h"
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

std::string jsonRendering(const Timeline<RenderedEntry>& timeline, WidgetFamily family, bool compact) {
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
  writer.endObject();
  text += '\n';
  return text;
}

// One line for a waybar custom module with `return-type: json`.
std::string waybarRendering(const RenderedEntry& entry) {
  const WidgetSnapshot& snapshot = snapshotOf(entry);
  std::string text;
  JsonWriter writer(text, JsonWriter::Options{.prettyPrinted = false, .escapeSlashes = false});
  writer.beginObject();
  if (snapshot.isConfigured) {
    const std::string balance = DurationFormatting::clock(snapshot.balanceSeconds, true);
    writer.key("text");
    writer.string(balance);
    writer.key("tooltip");
    writer.string("Time bank " + balance + "\n" + TimeBankWidgetView::todayText(snapshot) + " (+" +
                  DurationFormatting::clock(snapshot.todayWorkedSeconds, false) + " added, \u2212" +
                  DurationFormatting::clock(snapshot.todayExpectedSeconds, false) + " subtracted)");
    writer.key("class");
    writer.string(balance.starts_with("\u2212") ? "negative" : "positive");
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

void show(const ShowOptions& options) {
  const WidgetFamily family = widgetFamilyNamed(options.size).value_or(WidgetFamily::systemMedium);
  const WidgetConfiguration widget = timeBankWidget();
  // Watching starts before the first drawing, so no reload in between is missed.
  std::unique_ptr<WidgetReloadWatcher> watcher;
  if (options.follow) watcher = std::make_unique<WidgetReloadWatcher>();
  const bool clearScreen = options.follow && options.format == "text" && Terminal::standardOutputHasColour();
  for (;;) {
    const Timeline<RenderedEntry> timeline = widget.timeline(TimelineProviderContext{family, false});
    if (timeline.entries.empty()) throw Refusal("the widget gave no entry to show");
    const RenderedEntry& entry = timeline.entries.front();
    std::string output;
    if (options.format == "json") {
      output = jsonRendering(timeline, family, options.follow);
    } else if (options.format == "waybar") {
      output = waybarRendering(entry);
    } else {
      output = (clearScreen ? "\x1b[H\x1b[2J" : "") + textRendering(entry, family);
      if (options.follow && !clearScreen) output += '\n';
    }
    Terminal::write(output);
    if (!options.follow) return;
    std::cout.flush();
    if (!std::cout) return;  // the reader went away
    watcher->wait(timeline.nextReload());
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
        commands.add(*widget, "show", "Draw the widget from its last snapshot (never opens the store)",
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
