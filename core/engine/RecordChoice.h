// RecordChoice: how the system picks one record among duplicates: the
// greatest under an ordered list of keys, scanning in the given order and
// replacing the choice only when a later record is strictly greater, so
// among full ties the first one seen wins.
#pragma once

#include <memory>
#include <vector>

namespace quillmont::RecordChoice {

/// `key(record)` returns a comparable value, typically a std::tuple of the keys in order.
template <class Record, class Key>
std::shared_ptr<Record> greatest(const std::vector<std::shared_ptr<Record>>& records, Key key) {
  std::shared_ptr<Record> chosen;
  for (const auto& record : records) {
    if (!chosen || key(*chosen) < key(*record)) chosen = record;
  }
  return chosen;
}

}  // namespace quillmont::RecordChoice
