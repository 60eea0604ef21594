// SPDX-License-Identifier: MIT
#include "addon/project/Patterns.h"

#include <algorithm>
#include <array>
#include <optional>

#include "opc/Text.h"

namespace addon::project {

namespace {

/// One character of UTF-8; a byte that does not belong to one stands for itself.
char32_t nextCharacter(std::string_view text, std::size_t& at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(at++);
  const std::size_t more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
  if (more == 0 || at + more > text.size()) return first;
  char32_t c = first & (0x3Fu >> more);
  for (std::size_t i = 0; i < more; ++i) {
    if (!opc::isUtf8Continuation(text[at + i])) return first;
    c = (c << 6) | (byte(at + i) & 0x3Fu);
  }
  at += more;
  return c;
}

std::u32string toCharacters(std::string_view text) {
  std::u32string characters;
  characters.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) characters += nextCharacter(text, at);
  return characters;
}

std::vector<std::u32string> split(std::string_view path) {
  std::vector<std::u32string> names;
  while (true) {
    const std::size_t slash = path.find('/');
    names.push_back(toCharacters(path.substr(0, slash)));
    if (slash == std::string_view::npos) return names;
    path.remove_prefix(slash + 1);
  }
}

struct NamedClass {
  std::string_view name;
  std::string_view ranges;  // pairs of first and last
};

constexpr std::array<NamedClass, 12> kClasses{{{"alnum", "09AZaz"},
                                               {"alpha", "AZaz"},
                                               {"blank", "  \t\t"},
                                               {"cntrl", {"\0\x1f\x7f\x7f", 4}},
                                               {"digit", "09"},
                                               {"graph", "!~"},
                                               {"lower", "az"},
                                               {"print", " ~"},
                                               {"punct", "!/:@[`{~"},
                                               {"space", "\t\r  "},
                                               {"upper", "AZ"},
                                               {"xdigit", "09AFaf"}}};

}  // namespace

/// Compiles the text of a pattern into segments.
class Pattern::Compiler {
 public:
  Compiler(Pattern& pattern, std::string_view text)
      : pattern_(pattern), text_(toCharacters(text)) {}

  void run() {
    startSegment();
    while (at_ < text_.size() && !pattern_.isBroken_) readToken();
    finishSegment();
  }

 private:
  std::vector<Token>& tokens() { return pattern_.segments_.back().tokens; }

  void startSegment() {
    pattern_.segments_.emplace_back();
    segmentBegin_ = at_;
  }

  void finishSegment() {
    if (text_.substr(segmentBegin_, at_ - segmentBegin_) != U"**") return;
    pattern_.segments_.back().isAnyDepth = true;
    tokens().clear();
  }

  void readToken() {
    const char32_t c = text_[at_];
    if (c == U'/') return readSlash();
    ++at_;
    if (c == U'*') return readStar();
    if (c == U'?') return tokens().emplace_back(AnyCharacter{}), void();
    if (c == U'[') return readSet();
    if (c != U'\\') return tokens().emplace_back(c), void();
    if (at_ == text_.size()) {
      pattern_.isBroken_ = true;
    } else if (text_[at_] != U'/') {  // a quoted slash is a slash
      tokens().emplace_back(text_[at_++]);
    }
  }

  void readSlash() {
    finishSegment();
    ++at_;
    startSegment();
  }

  void readStar() {
    const bool isRepeated = !tokens().empty() && std::holds_alternative<AnyText>(tokens().back());
    if (!isRepeated) tokens().emplace_back(AnyText{});
  }

  void readSet() {
    Set set;
    if (at_ < text_.size() && (text_[at_] == U'!' || text_[at_] == U'^')) {
      set.isNegated = true;
      ++at_;
    }
    // A ']' at the beginning is literal.
    for (bool isFirst = true; at_ < text_.size() && (isFirst || text_[at_] != U']');
         isFirst = false) {
      readSetMember(set);
      if (pattern_.isBroken_) return;
    }
    if (at_ >= text_.size()) {
      pattern_.isBroken_ = true;
      return;
    }
    ++at_;
    tokens().emplace_back(std::move(set));
  }

  void readSetMember(Set& set) {
    if (readNamedClass(set)) return;
    const std::optional<char32_t> first = readSetCharacter();
    if (!first) return;
    const bool isRange = at_ + 1 < text_.size() && text_[at_] == U'-' && text_[at_ + 1] != U']';
    // Also on its own if a range follows: "[b-a]" is an empty range, but matches "b".
    set.ranges.push_back({*first, *first});
    if (!isRange) return;
    ++at_;
    const std::optional<char32_t> last = readSetCharacter();
    if (last) set.ranges.push_back({*first, *last});
  }

  std::optional<char32_t> readSetCharacter() {
    if (text_[at_] == U'\\') ++at_;
    if (at_ < text_.size()) return text_[at_++];
    pattern_.isBroken_ = true;
    return std::nullopt;
  }

  bool readNamedClass(Set& set) {
    if (text_.compare(at_, 2, U"[:") != 0) return false;
    const std::size_t end = text_.find(U']', at_ + 2);
    if (end == std::u32string::npos) return false;
    // "[:" without ":]" is two characters of the set.
    if (end < at_ + 3 || text_[end - 1] != U':') return false;
    const std::u32string name = text_.substr(at_ + 2, end - at_ - 3);
    const auto found = std::find_if(kClasses.begin(), kClasses.end(), [&](const NamedClass& c) {
      return std::equal(name.begin(), name.end(), c.name.begin(), c.name.end(),
                        [](char32_t a, char b) { return a == static_cast<unsigned char>(b); });
    });
    if (found == kClasses.end()) {
      pattern_.isBroken_ = true;
      return true;
    }
    for (std::size_t i = 0; i < found->ranges.size(); i += 2) {
      set.ranges.push_back({static_cast<unsigned char>(found->ranges[i]),
                            static_cast<unsigned char>(found->ranges[i + 1])});
    }
    at_ = end + 1;
    return true;
  }

  Pattern& pattern_;
  std::u32string text_;
  std::size_t at_ = 0;
  std::size_t segmentBegin_ = 0;
};

Pattern::Pattern(std::string_view text) : text_(text) {
  if (text.starts_with('!')) {
    isNegated_ = true;
    text.remove_prefix(1);
  }
  if (text.ends_with('/')) {
    foldersOnly_ = true;
    text.remove_suffix(1);
  }
  isAnchored_ = text.find('/') != std::string_view::npos;
  if (text.starts_with('/')) text.remove_prefix(1);
  isBroken_ = text.empty();
  Compiler(*this, text).run();
}

bool Pattern::Set::contains(char32_t c) const {
  const bool isInside = std::any_of(ranges.begin(), ranges.end(), [c](const Range& range) {
    return range.first <= c && c <= range.last;
  });
  return isInside != isNegated;
}

bool Pattern::matchesOne(const Token& token, char32_t c) {
  if (const auto* literal = std::get_if<char32_t>(&token)) return *literal == c;
  if (const auto* set = std::get_if<Set>(&token)) return set->contains(c);
  return std::holds_alternative<AnyCharacter>(token);
}

bool Pattern::differs(const Token& token, char c) {
  const auto* literal = std::get_if<char32_t>(&token);
  const auto byte = static_cast<unsigned char>(c);
  return literal != nullptr && *literal < 0x80 && byte < 0x80 && *literal != byte;
}

bool Pattern::matchesName(const std::vector<Token>& tokens, std::u32string_view name) {
  // Backtracking to the last star is enough: what earlier stars matched does not matter.
  std::size_t token = 0;
  std::size_t at = 0;
  std::optional<std::size_t> star;
  std::size_t starAt = 0;
  while (at < name.size()) {
    if (token < tokens.size() && std::holds_alternative<AnyText>(tokens[token])) {
      star = token++;
      starAt = at;
    } else if (token < tokens.size() && matchesOne(tokens[token], name[at])) {
      ++token;
      ++at;
    } else if (star) {
      token = *star + 1;
      at = ++starAt;
    } else {
      return false;
    }
  }
  while (token < tokens.size() && std::holds_alternative<AnyText>(tokens[token])) ++token;
  return token == tokens.size();
}

bool Pattern::matchesSegments(const std::vector<std::u32string>& names) const {
  std::size_t segment = 0;
  std::size_t at = 0;
  std::optional<std::size_t> deep;
  std::size_t deepAt = 0;
  while (at < names.size()) {
    if (segment < segments_.size() && segments_[segment].isAnyDepth) {
      // At the end it matches at least one name: "a/**" is what is inside a, not a.
      if (segment + 1 == segments_.size()) return true;
      deep = segment++;
      deepAt = at;
    } else if (segment < segments_.size() && matchesName(segments_[segment].tokens, names[at])) {
      ++segment;
      ++at;
    } else if (deep) {
      segment = *deep + 1;
      at = ++deepAt;
    } else {
      return false;
    }
  }
  return segment == segments_.size();
}

bool Pattern::matches(std::string_view path, bool isFolder) const {
  if (isBroken_ || (foldersOnly_ && !isFolder)) return false;
  if (isAnchored_) return matchesSegments(split(path));
  if (segments_[0].isAnyDepth) return true;
  const std::size_t slash = path.rfind('/');
  const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
  const std::vector<Token>& tokens = segments_[0].tokens;
  // Most names differ from most patterns in their first or last character.
  const bool hasEnds = !name.empty() && !tokens.empty();
  if (hasEnds && (differs(tokens.front(), name.front()) || differs(tokens.back(), name.back()))) {
    return false;
  }
  return matchesName(tokens, toCharacters(name));
}

void PatternList::addLines(std::string_view text, std::string_view folder) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    while (line.ends_with(' ') && !line.ends_with("\\ ")) line.remove_suffix(1);
    if (line.empty() || line[0] == '#') continue;
    patterns_.push_back({Pattern(line), std::string(folder)});
  }
}

bool PatternList::Entry::matches(std::string_view path, bool isFolder) const {
  if (folder.empty()) return pattern.matches(path, isFolder);
  const bool isBelow =
      path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
  return isBelow && pattern.matches(path.substr(folder.size() + 1), isFolder);
}

const Pattern* PatternList::deciding(std::string_view path, bool isFolder) const {
  for (auto entry = patterns_.rbegin(); entry != patterns_.rend(); ++entry) {
    if (entry->matches(path, isFolder)) return &entry->pattern;
  }
  return nullptr;
}

bool PatternList::excludes(std::string_view path, bool isFolder) const {
  const Pattern* pattern = deciding(path, isFolder);
  return pattern != nullptr && !pattern->isNegated();
}

void addDefaultExcludes(PatternList& list) {
  static constexpr std::array<std::string_view, 22> kPatterns{
      ".git*",         ".svn/",     ".hg/",         ".bzr/",         "CVS/",        ".DS_Store",
      "._*",           "__MACOSX/", "Thumbs.db",    "ehthumbs.db",   "desktop.ini", "*~",
      "*.swp",         "*.swo",     ".#*",          ".idea/",        ".vscode/",    "__pycache__/",
      "node_modules/", ".venv/",    "kraddon.toml", ".kraddonignore"};
  for (const std::string_view pattern : kPatterns) list.add(pattern);
  list.add("*.kraddon");
}

}  // namespace addon::project
