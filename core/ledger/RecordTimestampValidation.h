// RecordTimestampValidation: keeps creation and modification times of
// records that arrive from elsewhere (another device, an archive) sane: no
// modification far in the future, no creation after the modification.
#pragma once

#include "platform/foundation/Date.h"

namespace quillmont::RecordTimestampValidation {

inline constexpr TimeInterval maximumFutureSkew = 300;

/// `now` when `modifiedAt` lies more than maximumFutureSkew after `now`;
/// otherwise `modifiedAt` unchanged (the past is never changed).
constexpr Date normalizedModifiedAt(Date modifiedAt, Date now) {
  return modifiedAt > now + maximumFutureSkew ? now : modifiedAt;
}

/// The earlier of the two; pass the already normalised modification time.
constexpr Date normalizedCreatedAt(Date createdAt, Date modifiedAt) {
  return modifiedAt < createdAt ? modifiedAt : createdAt;
}

}  // namespace quillmont::RecordTimestampValidation
