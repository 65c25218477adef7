// WidgetConfiguration: a widget as its host sees it: kind, display name,
// description, the families it supports, and its provider's three requests
// with every entry already turned into the content to draw. A host needs
// nothing of the widget's own types; the entry itself travels along in
// `RenderedEntry::entry` for hosts that also show its figures as text.
//
// WidgetBundle: the widgets one extension offers, in order.
#pragma once

#include <any>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/widgets/TimelineProvider.h"
#include "platform/widgets/View.h"
#include "platform/widgets/WidgetFamily.h"

namespace quillmont {

struct RenderedEntry {
  Date date;
  /// The provider's own entry value.
  std::any entry;
  WidgetContent content;
};

struct WidgetConfiguration {
  std::string kind;
  std::string displayName;
  std::string description;
  std::vector<WidgetFamily> supportedFamilies;

  std::function<RenderedEntry(const TimelineProviderContext&)> placeholder;
  std::function<RenderedEntry(const TimelineProviderContext&)> snapshot;
  std::function<Timeline<RenderedEntry>(const TimelineProviderContext&)> timeline;

  bool supports(WidgetFamily family) const {
    for (const WidgetFamily supported : supportedFamilies) {
      if (supported == family) return true;
    }
    return false;
  }

  /// A configuration without options: `content(entry, family)` draws each
  /// entry of `provider` (a TimelineProvider) in the family the host asks for.
  template <class Provider, class Content>
  static WidgetConfiguration makeStatic(std::string kind, std::shared_ptr<const Provider> provider, Content content,
                                        std::string displayName, std::string description,
                                        std::vector<WidgetFamily> families) {
    using Entry = typename Provider::Entry;
    auto render = [content](const Entry& entry, WidgetFamily family) {
      return RenderedEntry{entry.date, std::any(entry), content(entry, family)};
    };
    WidgetConfiguration configuration{std::move(kind), std::move(displayName), std::move(description),
                                      std::move(families), {}, {}, {}};
    configuration.placeholder = [provider, render](const TimelineProviderContext& context) {
      return render(provider->placeholder(context), context.family);
    };
    configuration.snapshot = [provider, render](const TimelineProviderContext& context) {
      RenderedEntry result;
      provider->getSnapshot(context, [&](Entry entry) { result = render(entry, context.family); });
      return result;
    };
    configuration.timeline = [provider, render](const TimelineProviderContext& context) {
      Timeline<RenderedEntry> result;
      provider->getTimeline(context, [&](Timeline<Entry> provided) {
        result.policy = provided.policy;
        for (const Entry& entry : provided.entries) result.entries.push_back(render(entry, context.family));
      });
      return result;
    };
    return configuration;
  }
};

class WidgetBundle {
 public:
  virtual ~WidgetBundle() = default;
  virtual std::vector<WidgetConfiguration> body() const = 0;

  /// The bundle's widget of `kind`; nothing when it has none.
  std::optional<WidgetConfiguration> widget(std::string_view kind) const {
    for (auto& configuration : body()) {
      if (configuration.kind == kind) return configuration;
    }
    return std::nullopt;
  }
};

}  // namespace quillmont
