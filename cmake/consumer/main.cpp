// A program outside the project, built against the installed package.
#include <core/ledger/DurationFormatting.h>
#include <core/ledger/QuickActionConfiguration.h>

int main() {
  return quillmont::DurationFormatting::clock(27000, true) == "+7:30" &&
                 quillmont::QuickActionConfiguration::displayName(90) == "1 hr 30 min"
             ? 0
             : 1;
}
