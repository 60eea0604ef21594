// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace addon::project {

/// One pattern for paths, by the rules of gitignore.
///
/// `*` and `?` stop at '/', a component `**` does not; `[a-z]`, `[!a]` and `[[:alpha:]]` are one
/// character; `\` quotes. A '/' at the beginning or in the middle ties the pattern to the top; one
/// at the end makes it match folders only; '!' in front takes back. Characters are Unicode ones.
/// Matching takes time in the product of the lengths at most.
class Pattern {
 public:
  explicit Pattern(std::string_view text);

  const std::string& text() const { return text_; }  ///< as given
  bool takesBack() const { return takesBack_; }

  /// Whether it matches this very path ('/' between names, none at the ends).
  bool matches(std::string_view path, bool isFolder) const;

 private:
  struct AnyText {};       // *
  struct AnyCharacter {};  // ?
  struct Range {
    char32_t first;
    char32_t last;
  };
  struct Set {  // [...]
    bool isNegated = false;
    std::vector<Range> ranges;
    bool contains(char32_t c) const;
  };
  using Token = std::variant<char32_t, AnyText, AnyCharacter, Set>;
  struct Segment {
    bool isAnyDepth = false;  // **
    std::vector<Token> tokens;
  };

  class Compiler;
  static bool matchesOne(const Token& token, char32_t c);
  static bool matchesName(const std::vector<Token>& tokens, std::u32string_view name);
  bool matchesSegments(const std::vector<std::u32string>& names) const;

  std::string text_;
  std::vector<Segment> segments_;
  bool takesBack_ = false;
  bool foldersOnly_ = false;
  bool isAnchored_ = false;
  bool isBroken_ = false;  // an open bracket or a final backslash: matches nothing
};

/// Patterns in order: the last one that matches decides.
class PatternList {
 public:
  void add(std::string_view pattern) { patterns_.push_back({Pattern(pattern), {}}); }
  /// The lines of an ignore file: empty ones and those that begin with '#' do not count, blanks at
  /// the end are dropped unless quoted. They are for paths below `folder` alone, which is their
  /// top; "" is the top of all.
  void addLines(std::string_view text, std::string_view folder = {});

  bool isEmpty() const { return patterns_.empty(); }

  /// The pattern that decides about a path, the last one that matches; null when none does.
  const Pattern* deciding(std::string_view path, bool isFolder) const;
  /// Whether the path is one to leave out, given that no folder above it is.
  bool excludes(std::string_view path, bool isFolder) const;

 private:
  struct Entry {
    Pattern pattern;
    std::string folder;
    bool matches(std::string_view path, bool isFolder) const;
  };
  std::vector<Entry> patterns_;
};

/// What authors never mean to ship: files of version control, of systems and of editors.
void addDefaultExcludes(PatternList& list);

}  // namespace addon::project
