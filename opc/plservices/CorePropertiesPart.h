// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "opc/Streams.h"
#include "opc/model/FaultSink.h"

namespace opc::plservices {

/// The properties of the standard part that are plain text.
enum class TextProperty : std::size_t {
  Category,
  ContentStatus,
  ContentType,  ///< of the first edition only; read with a warning, never written
  Creator,
  Description,
  Identifier,
  Language,
  LastModifiedBy,
  Revision,
  Subject,
  Title,
  Version,
};
inline constexpr std::size_t kTextProperties = 12;

enum class DateProperty : std::size_t { Created, LastPrinted, Modified };
inline constexpr std::size_t kDateProperties = 3;

/// The keywords: text mixed with `value` elements, each of which may have a language of its own.
struct Keywords {
  struct Piece {
    std::u16string text;
    bool isValue = false;
    std::optional<std::u16string> language = std::nullopt;
  };
  std::vector<Piece> pieces;
  std::optional<std::u16string> language;
};

/// A deviation in the part that does not prevent reading it.
struct PropertyWarning {
  std::string rule;  ///< such as "CP-12"
  std::string text;
};

/// The standard core properties part (ISO/IEC 29500-2, 8) as a value: fifteen properties, each of
/// which may be absent.
class CorePropertiesPart {
 public:
  static constexpr std::string_view kContentType =
      "application/vnd.openxmlformats-package.core-properties+xml";

  /// Throws InvalidXMLDocument. Properties that break a rule (CP-4 to CP-13, XM-4) go to `faults`.
  static CorePropertiesPart read(InputStream& stream,
                                 model::FaultSink& faults = model::FaultSink::refusing());

  /// Throws InvalidXMLDocument for text that XML cannot carry and Exception for an invalid
  /// date, before it writes to `stream`.
  void write(OutputStream& stream) const;

  const std::optional<std::u16string>& text(TextProperty property) const {
    return texts_[static_cast<std::size_t>(property)];
  }
  void setText(TextProperty property, std::optional<std::u16string> text) {
    texts_[static_cast<std::size_t>(property)] = std::move(text);
  }

  /// UTC, in whole seconds.
  const std::optional<boost::posix_time::ptime>& date(DateProperty property) const {
    return dates_[static_cast<std::size_t>(property)];
  }
  void setDate(DateProperty property, std::optional<boost::posix_time::ptime> date) {
    dates_[static_cast<std::size_t>(property)] = date;
    distantDates_[static_cast<std::size_t>(property)].clear();
  }
  /// The text of a date in a year that the calendar of boost does not support (before 1400 or after
  /// 9999); "" if there is none. date() is then absent, and write() writes this text. setDate()
  /// clears it.
  const std::u16string& distantDate(DateProperty property) const {
    return distantDates_[static_cast<std::size_t>(property)];
  }
  void setDistantDate(DateProperty property, std::u16string text) {
    dates_[static_cast<std::size_t>(property)].reset();
    distantDates_[static_cast<std::size_t>(property)] = std::move(text);
  }

  const std::optional<Keywords>& keywords() const { return keywords_; }
  void setKeywords(std::optional<Keywords> keywords) { keywords_ = std::move(keywords); }

  /// The deviations that were found when the part was read.
  const std::vector<PropertyWarning>& warnings() const { return warnings_; }
  void addWarning(std::string rule, std::string text) {
    warnings_.push_back({std::move(rule), std::move(text)});
  }

 private:
  std::u16string dateText(DateProperty property) const;

  std::array<std::optional<std::u16string>, kTextProperties> texts_;
  std::array<std::optional<boost::posix_time::ptime>, kDateProperties> dates_;
  std::array<std::u16string, kDateProperties> distantDates_;
  std::optional<Keywords> keywords_;
  std::vector<PropertyWarning> warnings_;
};

}  // namespace opc::plservices
