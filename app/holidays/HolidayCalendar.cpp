#include "app/holidays/HolidayCalendar.h"

#include <dlfcn.h>
#include <libical/ical.h>

#include <algorithm>
#include <memory>
#include <type_traits>

#include "app/Refusal.h"

namespace quillmont::HolidayCalendar {
namespace {

// The few functions of libical used here, looked up once.
struct LibIcal {
  decltype(&::icalparser_parse_string) parse = nullptr;
  decltype(&::icalcomponent_isa) kind = nullptr;
  decltype(&::icalcomponent_get_first_component) firstComponent = nullptr;
  decltype(&::icalcomponent_get_next_component) nextComponent = nullptr;
  decltype(&::icalcomponent_get_uid) uid = nullptr;
  decltype(&::icalcomponent_get_summary) summary = nullptr;
  decltype(&::icalcomponent_get_dtstart) start = nullptr;
  decltype(&::icalcomponent_get_dtend) end = nullptr;
  decltype(&::icalcomponent_get_first_property) firstProperty = nullptr;
  decltype(&::icalproperty_get_rrule) rule = nullptr;
  decltype(&::icalrecur_iterator_new) iteratorNew = nullptr;
  decltype(&::icalrecur_iterator_next) iteratorNext = nullptr;
  decltype(&::icalrecur_iterator_free) iteratorFree = nullptr;
  decltype(&::icaltime_is_null_time) isNull = nullptr;
  decltype(&::icalcomponent_free) free = nullptr;

  static const LibIcal& shared() {
    static const LibIcal library = load();
    return library;
  }

 private:
  static LibIcal load() {
    void* handle = dlopen("libical.so.3", RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
      throw Refusal("reading iCalendar files needs libical (the Debian package libical3): " +
                           std::string(dlerror()));
    }
    LibIcal library;
    const auto find = [&](auto& function, const char* name) {
      function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(handle, name));
      if (function == nullptr) throw Refusal(std::string("libical lacks ") + name);
    };
    find(library.parse, "icalparser_parse_string");
    find(library.kind, "icalcomponent_isa");
    find(library.firstComponent, "icalcomponent_get_first_component");
    find(library.nextComponent, "icalcomponent_get_next_component");
    find(library.uid, "icalcomponent_get_uid");
    find(library.summary, "icalcomponent_get_summary");
    find(library.start, "icalcomponent_get_dtstart");
    find(library.end, "icalcomponent_get_dtend");
    find(library.firstProperty, "icalcomponent_get_first_property");
    find(library.rule, "icalproperty_get_rrule");
    find(library.iteratorNew, "icalrecur_iterator_new");
    find(library.iteratorNext, "icalrecur_iterator_next");
    find(library.iteratorFree, "icalrecur_iterator_free");
    find(library.isNull, "icaltime_is_null_time");
    find(library.free, "icalcomponent_free");
    return library;  // the library stays loaded for the process
  }
};

// An event longer than this is no holiday; a recurrence beyond this many
// occurrences is cut.
constexpr int maximumDays = 62;
constexpr int maximumOccurrences = 1000;

DateInput::Day dayOf(const icaltimetype& time) { return DateInput::Day{time.year, time.month, time.day}; }

int daysBetween(const DateInput::Day& first, const DateInput::Day& last) {
  int count = 0;
  for (DateInput::Day day = first; day < last && count <= maximumDays; day = day.adding(1)) ++count;
  return count;
}

void addEvent(const LibIcal& ical, icalcomponent* event, const DateInput::Day& until, std::vector<Event>& events) {
  const icaltimetype start = ical.start(event);
  if (ical.isNull(start) || start.year < 1 || start.month < 1 || start.day < 1) return;
  const char* uid = ical.uid(event);
  const char* summary = ical.summary(event);
  const DateInput::Day first = dayOf(start);
  const icaltimetype end = ical.end(event);
  int length = 1;
  if (!ical.isNull(end) && end.year > 0) {
    // An all-day event ends on the day after its last; a timed one on its last.
    const DateInput::Day last = dayOf(end);
    length = std::max(1, daysBetween(first, last) + (end.is_date != 0 ? 0 : 1));
    if (length > maximumDays) return;
  }
  const auto add = [&](const DateInput::Day& day) {
    for (int offset = 0; offset < length; ++offset) {
      events.push_back({uid != nullptr ? uid : "", summary != nullptr ? summary : "", day.adding(offset)});
    }
  };
  icalproperty* rule = ical.firstProperty(event, ICAL_RRULE_PROPERTY);
  if (rule == nullptr) {
    add(first);
    return;
  }
  icalrecur_iterator* occurrences = ical.iteratorNew(ical.rule(rule), start);
  if (occurrences == nullptr) {
    add(first);
    return;
  }
  for (int count = 0; count < maximumOccurrences; ++count) {
    const icaltimetype next = ical.iteratorNext(occurrences);
    if (ical.isNull(next) || until < dayOf(next)) break;
    add(dayOf(next));
  }
  ical.iteratorFree(occurrences);
}

}  // namespace

std::vector<Event> read(const std::string& text, const DateInput::Day& until) {
  const LibIcal& ical = LibIcal::shared();
  std::unique_ptr<icalcomponent, decltype(ical.free)> root(ical.parse(text.c_str()), ical.free);
  if (!root) throw Refusal("the file is not an iCalendar file");
  std::vector<Event> events;
  if (ical.kind(root.get()) == ICAL_VEVENT_COMPONENT) {
    addEvent(ical, root.get(), until, events);
  } else {
    // A file of several calendars parses to a root that holds them.
    std::vector<icalcomponent*> calendars{root.get()};
    for (icalcomponent* calendar = ical.firstComponent(root.get(), ICAL_VCALENDAR_COMPONENT); calendar != nullptr;
         calendar = ical.nextComponent(root.get(), ICAL_VCALENDAR_COMPONENT)) {
      calendars.push_back(calendar);
    }
    for (icalcomponent* calendar : calendars) {
      for (icalcomponent* event = ical.firstComponent(calendar, ICAL_VEVENT_COMPONENT); event != nullptr;
           event = ical.nextComponent(calendar, ICAL_VEVENT_COMPONENT)) {
        addEvent(ical, event, until, events);
      }
    }
  }
  if (events.empty()) throw Refusal("the file holds no calendar events");
  return events;
}

}  // namespace quillmont::HolidayCalendar
