// Remedy: what a person can do about a refusal, named by what it is, not by
// how a host offers it. The application layer states the fact (a Refusal's
// or an InvalidInput's message) and attaches the remedy; each host words
// it for its own controls in one place: the command line names its options
// and commands, the window its check boxes, pages and forms.
#pragma once

#include <string>
#include <utility>

namespace quillmont {

struct Remedy {
  enum class Kind {
    none,
    /// Keep a work entry longer than 24 hours on purpose.
    confirmLength,
    /// Keep work that overlaps other work on purpose (time covered twice
    /// counts once).
    confirmOverlap,
    /// A time alone was read on a day that may not be meant: type it again
    /// with its day, as `text` shows, in `field`.
    writeTheDay,
    /// A time alone today is still to come: for yesterday, type `text` in
    /// `field`.
    writeYesterday,
    /// Sync is not set up here: choose the folder the machines share.
    setUpSync,
    /// The chosen sync folder is missing: choose another.
    chooseSyncFolder,
    /// The time bank's set-up is not finished.
    finishSetup,
  };

  Remedy() = default;
  Remedy(Kind what, std::string input = {}, std::string typed = {})
      : kind(what), field(std::move(input)), text(std::move(typed)) {}

  Kind kind = Kind::none;
  /// The input to type again, as InvalidInput names it ("end", "at").
  std::string field;
  /// The value to type there ("2026-03-04 23:30").
  std::string text;

  bool operator==(const Remedy&) const = default;
};

}  // namespace quillmont
