// SPDX-License-Identifier: MIT
#include "addon/project/detail/LicenseGuess.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>
#include <vector>

#include "addon/project/PlainText.h"
#include "opc/Text.h"

namespace addon::project::detail {

namespace {

constexpr std::string_view kOther = "Other";

/// Lower case, with one blank between words and without Markdown characters, so that layout and
/// line breaks do not matter.
std::string normalized(std::string_view text) {
  constexpr std::string_view kMarks = "#*_>=\"";
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    if (kMarks.find(c) != kMarks.npos) continue;
    if (!isAsciiSpace(c)) {
      result += opc::toLowerAscii(c);
    } else if (!result.empty() && result.back() != ' ') {
      result += ' ';
    }
  }
  return result;
}

bool hasAll(const std::string& text, std::initializer_list<std::string_view> phrases) {
  const auto isThere = [&](std::string_view phrase) { return text.find(phrase) != text.npos; };
  return std::all_of(phrases.begin(), phrases.end(), isThere);
}

bool hasAny(const std::string& text, std::initializer_list<std::string_view> phrases) {
  const auto isThere = [&](std::string_view phrase) { return text.find(phrase) != text.npos; };
  return std::any_of(phrases.begin(), phrases.end(), isThere);
}

struct Phrase {
  std::string_view text;
  std::string_view type;
};

/// The type for the phrase that occurs first in the text; "" if there is none.
std::string_view firstOf(const std::string& text, std::initializer_list<Phrase> phrases) {
  std::size_t first = text.npos;
  std::string_view type;
  for (const Phrase& phrase : phrases) {
    const std::size_t at = text.find(phrase.text);
    if (at >= first) continue;
    first = at;
    type = phrase.type;
  }
  return type;
}

/// The texts of this family mention each other, but each begins with its own title.
std::string_view gnuTypeByTitle(const std::string& text) {
  return firstOf(text, {{"gnu affero general public license version 3", "AGPL-3.0"},
                        {"gnu lesser general public license version 3", "LGPL-3.0"},
                        {"gnu lesser general public license version 2.1", "LGPL-2.1"},
                        {"gnu library general public license version 2", kOther},
                        {"gnu general public license version 3", "GPL-3.0"},
                        {"gnu general public license version 2", "GPL-2.0"},
                        {"gnu general public license version 1", kOther}});
}

/// The notice in programs under one of these licenses.
std::string_view gnuTypeByNotice(const std::string& text) {
  constexpr std::string_view kPublished = " as published by the free software foundation";
  const std::size_t at = text.find(kPublished);
  if (at == text.npos) return {};
  const std::string before = text.substr(0, at);
  const std::string after = text.substr(at, 200);
  const bool isThird = hasAny(after, {"version 3 of the license", "version 3."});
  if (before.ends_with("gnu affero general public license")) return isThird ? "AGPL-3.0" : kOther;
  if (before.ends_with("gnu lesser general public license")) {
    if (isThird) return "LGPL-3.0";
    return hasAny(after, {"version 2.1 of the license"}) ? "LGPL-2.1" : kOther;
  }
  if (!before.ends_with("gnu general public license")) return kOther;
  if (isThird) return "GPL-3.0";
  return hasAny(after, {"version 2 of the license"}) ? "GPL-2.0" : kOther;
}

std::string_view gnuType(const std::string& text) {
  const std::string_view type = gnuTypeByTitle(text);
  return type.empty() ? gnuTypeByNotice(text) : type;
}

std::string_view bsdType(const std::string& text) {
  if (!hasAll(text, {"redistribution and use in source and binary forms, with or without "
                     "modification, are permitted"})) {
    return {};
  }
  if (hasAny(text, {"all advertising materials mentioning", "no express or implied licenses"})) {
    return kOther;
  }
  if (!hasAll(text, {"redistributions of source code must retain",
                     "redistributions in binary form must reproduce"})) {
    return kOther;
  }
  return hasAll(text, {"may be used to endorse or promote"}) ? "BSD-3-Clause" : "BSD-2-Clause";
}

std::string_view mitType(const std::string& text) {
  if (!hasAll(text, {"permission is hereby granted, free of charge, to any person obtaining a "
                     "copy"})) {
    return {};
  }
  if (hasAny(text, {"except as contained in this notice"})) return kOther;
  return hasAll(text, {"the above copyright notice and this permission notice"}) ? "MIT" : kOther;
}

std::string_view iscType(const std::string& text) {
  if (!hasAny(text, {"permission to use, copy, modify, and/or distribute this software for any "
                     "purpose with or without fee is hereby granted",
                     "permission to use, copy, modify, and distribute this software for any "
                     "purpose with or without fee is hereby granted"})) {
    return {};
  }
  return hasAll(text, {"is hereby granted, provided that the above copyright notice and this "
                       "permission notice appear in all copies"})
             ? "ISC"
             : kOther;
}

std::string_view titledType(const std::string& text, std::initializer_list<std::string_view> titles,
                            std::string_view type) {
  return hasAny(text, titles) ? type : std::string_view{};
}

}  // namespace

std::string_view licenseTypeOf(std::string_view license) {
  const std::string text = normalized(license);
  const std::array found{
      gnuType(text),
      bsdType(text),
      mitType(text),
      iscType(text),
      titledType(text, {"apache license version 2.0", "the apache license, version 2.0"},
                 "Apache-2.0"),
      titledType(text, {"mozilla public license version 2.0", "mozilla public license, v. 2.0"},
                 "MPL-2.0"),
      titledType(text, {"free and unencumbered software released into the public domain"},
                 "Unlicense"),
      titledType(text, {"cc0 1.0 universal"}, "CC0-1.0"),
      titledType(text, {"boost software license - version 1.0"}, "BSL-1.0")};
  std::string_view type;
  for (const std::string_view one : found) {
    if (one.empty()) continue;
    if (!type.empty()) return kOther;
    type = one;
  }
  return type.empty() ? kOther : type;
}

}  // namespace addon::project::detail
