#include <cstdio>

#include "platform/foundation/Calendar.h"

int main() {
  const auto calendar = quillmont::Calendar::autoupdatingCurrent();
  std::printf("Quillmont example: time zone %s\n", calendar.timeZoneIdentifier().c_str());
}
