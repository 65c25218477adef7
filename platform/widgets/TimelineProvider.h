// TimelineProvider: what a widget's host asks of the widget. Three requests,
// each synchronous and answering through its completion exactly once before
// it returns:
// - placeholder: a sample entry to draw while nothing real is known;
// - getSnapshot: the one entry to show now (also for a gallery preview);
// - getTimeline: the entries to show and when to ask again.
// Requests may come on any thread; a provider keeps no mutable state.
#pragma once

#include <functional>

#include "platform/widgets/Timeline.h"
#include "platform/widgets/WidgetFamily.h"

namespace quillmont {

/// What the host tells a provider about the request.
struct TimelineProviderContext {
  WidgetFamily family = WidgetFamily::systemSmall;
  /// Whether the entry is for a preview (the widget gallery), not a placed widget.
  bool isPreview = false;
};

template <class EntryType>
class TimelineProvider {
 public:
  using Entry = EntryType;
  virtual ~TimelineProvider() = default;

  virtual Entry placeholder(const TimelineProviderContext& context) const = 0;
  virtual void getSnapshot(const TimelineProviderContext& context,
                           const std::function<void(Entry)>& completion) const = 0;
  virtual void getTimeline(const TimelineProviderContext& context,
                           const std::function<void(Timeline<Entry>)>& completion) const = 0;
};

}  // namespace quillmont
