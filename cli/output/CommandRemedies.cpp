#include "cli/output/CommandRemedies.h"

#include "app/InvalidInput.h"
#include "app/Refusal.h"

namespace quillmont::CommandRemedies {
namespace {

/// The option that types the remedy's input again, with the value quoted
/// as a shell reads it.
std::string typed(const Remedy& remedy) { return "--" + remedy.field + " \"" + remedy.text + "\""; }

std::string advice(const Remedy& remedy) {
  switch (remedy.kind) {
    case Remedy::Kind::none:
      return {};
    case Remedy::Kind::confirmLength:
      return "; an entry longer than 24 hours needs --force";
    case Remedy::Kind::confirmOverlap:
      return "; add --force if that is meant (time covered twice counts once).";
    case Remedy::Kind::writeTheDay:
      return "; if that is meant, write the day: " + typed(remedy);
    case Remedy::Kind::writeYesterday:
      return "; for yesterday, type " + typed(remedy);
    case Remedy::Kind::setUpSync:
      return "; run `quillmont sync setup DIR` with the folder your sync service shares between your machines";
    case Remedy::Kind::chooseSyncFolder:
      return "; run `quillmont sync setup DIR` to choose another";
    case Remedy::Kind::finishSetup:
      return "; finish with `quillmont setup` first";
  }
  return {};
}

}  // namespace

std::string sentence(const std::string& fact, const Remedy& remedy) { return fact + advice(remedy); }

std::string message(const std::exception& error) {
  if (const auto* refusal = dynamic_cast<const Refusal*>(&error)) return sentence(refusal->what(), refusal->remedy());
  if (const auto* invalid = dynamic_cast<const InvalidInput*>(&error)) {
    return sentence(invalid->reason(), invalid->remedy());
  }
  return error.what();
}

}  // namespace quillmont::CommandRemedies
