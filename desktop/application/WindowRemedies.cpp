#include "desktop/application/WindowRemedies.h"

#include "app/InvalidInput.h"
#include "app/Refusal.h"

namespace quillmont::WindowRemedies {
namespace {

QString quoted(const std::string& text) { return "\u201C" + QString::fromStdString(text) + "\u201D"; }

QString advice(const Remedy& remedy) {
  switch (remedy.kind) {
    case Remedy::Kind::none:
      return {};
    case Remedy::Kind::confirmLength:
      return "; to keep an entry longer than 24 hours, check \u201CSave anyway\u201D";
    case Remedy::Kind::confirmOverlap:
      return "; check \u201CSave anyway\u201D if that is meant (time covered twice counts once).";
    case Remedy::Kind::writeTheDay:
      return "; if that is meant, write the day: " + quoted(remedy.text);
    case Remedy::Kind::writeYesterday:
      return "; for yesterday, type " + quoted(remedy.text);
    case Remedy::Kind::setUpSync:
      return "; under Sync in Settings, choose the folder your sync service shares between your machines";
    case Remedy::Kind::chooseSyncFolder:
      return "; choose another under Sync in Settings";
    case Remedy::Kind::finishSetup:
      return "; finish the set-up form first";
  }
  return {};
}

}  // namespace

QString sentence(const std::string& fact, const Remedy& remedy) {
  return QString::fromStdString(fact) + advice(remedy);
}

QString message(const std::exception& error) {
  if (const auto* refusal = dynamic_cast<const Refusal*>(&error)) return sentence(refusal->what(), refusal->remedy());
  if (const auto* invalid = dynamic_cast<const InvalidInput*>(&error)) {
    return sentence(invalid->reason(), invalid->remedy());
  }
  return QString::fromUtf8(error.what());
}

}  // namespace quillmont::WindowRemedies
