// SPDX-License-Identifier: MIT
// Writes index.html and terms.js with made-up add-ons: front_page_writer FOLDER SEQUENCE COUNT.
#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

#include "addon/gallery/FrontPage.h"

namespace {

using addon::gallery::Card;

constexpr std::array kSubjects{"Wave", "Signal", "Matrix", "Ocean", "Spectrum", "Filter", "Orbit"};
constexpr std::array kKinds{"Tools", "Kit", "Viewer", "Solver", "Reader"};
constexpr std::array kAuthors{"Ada Lind", "Zo\u00eb \u00c5berg", "\u5c71\u7530 \u592a\u90ce"};

/// The same for the same number.
Card makeCard(std::uint64_t number) {
  Card card;
  const std::string id = std::to_string(number);
  card.name = std::string(kSubjects.at(number % kSubjects.size())) + " " +
              kKinds.at(number % kKinds.size()) + " " + id;
  card.version = std::to_string(number % 9) + "." + std::to_string(number % 4);
  card.summary = "Measures, filters and shows what the add-on " + id +
                 " is about, with examples and a reference of all functions.";
  card.author = kAuthors.at(number % kAuthors.size());
  card.organization = number % 4 == 0 ? "Wave Laboratory" : "";
  card.license = number % 3 == 0 ? "MIT" : "";
  // Every order of the dates differs from that of the names.
  card.modified = "20" + std::to_string(10 + number * 7 % 16) + "-0" +
                  std::to_string(1 + number % 9) + "-11T10:00:00Z";
  card.page = "pages/" + id + "/1.0/index.html";
  return card;
}

}  // namespace

int main(int count, char** words) {
  if (count != 4) return 2;
  const std::string folder = words[1];
  addon::gallery::FrontPage list;
  list.sequence = std::stoull(words[2]);
  list.addons = std::stoull(words[3]);
  list.visit = [&](const auto& add) {
    for (std::uint64_t i = 0; i < list.addons; ++i) add(makeCard(i));
  };
  std::ofstream page(folder + "/index.html", std::ios::binary);
  std::ofstream terms(folder + "/terms.js", std::ios::binary);
  addon::gallery::writeFrontPage(
      list, [&](std::string_view piece) { page << piece; },
      [&](std::string_view piece) { terms << piece; });
  return page.flush() && terms.flush() ? 0 : 1;
}
