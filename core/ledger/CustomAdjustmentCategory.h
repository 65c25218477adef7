// CustomAdjustmentCategory: a category of adjustments that the user named.
// Its raw value is "custom:" followed by the base64 of the UTF-8 title; the
// title is normalised (white space collapsed to single blanks, trimmed, at
// most 40 characters), so a raw value decodes to its canonical form.
// Every custom category behaves as a debit.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillmont {

class CustomAdjustmentCategory {
 public:
  static constexpr std::size_t maximumTitleLength = 40;
  static constexpr std::size_t maximumCount = 20;
  static constexpr std::string_view rawValuePrefix = "custom:";

  /// A category for a title; nothing when the normalised title is empty.
  static std::optional<CustomAdjustmentCategory> fromTitle(std::string_view title);
  /// The category a raw value names, in canonical form; nothing when the text
  /// lacks the prefix, is not strict base64, not UTF-8, or names a blank title.
  static std::optional<CustomAdjustmentCategory> fromRawValue(std::string_view rawValue);

  /// Splits at white-space characters, joins the pieces with one blank and
  /// keeps the first 40 characters (no trim after the cut).
  static std::string normalizedTitle(std::string_view title);

  const std::string& title() const { return title_; }
  const std::string& rawValue() const { return rawValue_; }
  const std::string& id() const { return rawValue_; }

  friend bool operator==(const CustomAdjustmentCategory&, const CustomAdjustmentCategory&) = default;

 private:
  explicit CustomAdjustmentCategory(std::string title);
  std::string title_;
  std::string rawValue_;
};

}  // namespace quillmont
