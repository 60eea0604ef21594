// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace addon::project {

/// A pattern for paths, with the rules of gitignore.
///
/// `*` and `?` do not match '/', a component `**` does; `[a-z]`, `[!a]` and `[[:alpha:]]` match one
/// character; `\` makes the next character literal. A '/' at the beginning or in the middle anchors
/// the pattern at the top; one at the end restricts it to folders; a leading '!' negates it.
/// Characters are Unicode code points. Matching takes at most time proportional to the product of
/// the lengths.
class Pattern {
 public:
  explicit Pattern(std::string_view text);

  const std::string& text() const { return text_; }  ///< as given
  bool isNegated() const { return isNegated_; }

  /// Whether it matches exactly this path, which has '/' between names but not at the ends.
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
  /// Whether a token cannot stand for the character that this byte is of.
  static bool differs(const Token& token, char byte);
  static bool matchesOne(const Token& token, char32_t c);
  static bool matchesName(const std::vector<Token>& tokens, std::u32string_view name);
  bool matchesSegments(const std::vector<std::u32string>& names) const;

  std::string text_;
  std::vector<Segment> segments_;
  bool isNegated_ = false;
  bool foldersOnly_ = false;
  bool isAnchored_ = false;
  bool isBroken_ = false;  // an unclosed bracket or a final backslash: matches nothing
};

/// An ordered list of patterns, of which the last one that matches decides.
class PatternList {
 public:
  void add(std::string_view pattern) { patterns_.push_back({Pattern(pattern), {}}); }
  /// Adds the lines of an ignore file. Empty lines and lines that begin with '#' are ignored, and
  /// so are trailing blanks without a backslash. The patterns apply below `folder` only, which is
  /// their top; "" is the top of the tree.
  void addLines(std::string_view text, std::string_view folder = {});

  bool isEmpty() const { return patterns_.empty(); }

  /// The last pattern that matches a path, or null.
  const Pattern* deciding(std::string_view path, bool isFolder) const;
  /// Whether the path is excluded, provided that no folder above it is.
  bool excludes(std::string_view path, bool isFolder) const;

 private:
  struct Entry {
    Pattern pattern;
    std::string folder;
    bool matches(std::string_view path, bool isFolder) const;
  };
  std::vector<Entry> patterns_;
};

/// Adds what authors never intend to ship: files of version control systems, operating systems and
/// editors.
void addDefaultExcludes(PatternList& list);

}  // namespace addon::project
