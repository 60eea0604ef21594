// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/Pieces.h"

#include "addon/gallery/detail/PlainAddress.h"
#include "text/ByteCount.h"

namespace addon::gallery::detail {

namespace {

constexpr std::size_t kDayLength = 10;  // "2026-02-01"

}  // namespace

std::string counted(std::uint64_t count, std::string_view noun) {
  return text::counted(count, noun, text::Digits::Grouped);
}

std::string_view lastName(std::string_view path) {
  return path.substr(path.find_last_of('/') + 1);
}

void writeIsolated(HtmlWriter& html, std::string_view text) {
  html.element("bdi", text);
}

void writeCode(HtmlWriter& html, std::string_view text) {
  html.element("code", [&] { writeIsolated(html, text); });
}

std::string_view dayOf(std::string_view date) {
  const std::string_view day = date.substr(0, kDayLength);
  const bool isDay = isPlainDate(day) && (date == day || date[kDayLength] == 'T');
  return isDay ? day : std::string_view();
}

void writeDate(HtmlWriter& html, std::string_view date) {
  const std::string_view day = dayOf(date);
  if (day.empty()) return writeIsolated(html, date);
  html.element("time", {{"datetime", date}}, day);
}

void writeContact(HtmlWriter& html, std::string_view contact) {
  const std::string link = linkOf(contact);
  if (link.empty()) return writeIsolated(html, contact);
  writeAnchor(html, link, [&] { writeIsolated(html, contact); });
}

}  // namespace addon::gallery::detail
