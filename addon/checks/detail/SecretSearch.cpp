// SPDX-License-Identifier: MIT
#include "addon/checks/detail/SecretSearch.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>

#include "addon/checks/detail/SecretFormats.h"
#include "addon/checks/detail/SecretPlaces.h"
#include "opc/Text.h"
#include "text/Lines.h"

namespace addon::checks::detail {

namespace {

constexpr std::size_t kReadSize = std::size_t{64} << 10;
constexpr std::size_t kProbe = 8192;      // a text has no NUL in these first bytes
constexpr std::size_t kMaxSecrets = 100;  // secrets of a file

/// By its first bytes, UTF-16.
bool isWide(std::string_view text) {
  return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
}

bool isText(std::string_view content) {
  return content.substr(0, kProbe).find('\0') == content.npos;
}

/// Reads a text in blocks.
class TextBlocks {
 public:
  /// `block` is room for one, as large as a block.
  TextBlocks(opc::InputStream& stream, std::string& block) : stream_(stream), block_(block) {}

  /// Appends the next block; false at the end, and for what is not a text.
  bool appendTo(std::string& text) {
    std::size_t size = 0;
    while (size < block_.size()) {
      auto* bytes = reinterpret_cast<unsigned char*>(block_.data());
      const std::size_t count = stream_.read(bytes + size, block_.size() - size);
      if (count == 0) break;
      size += count;
    }
    std::string_view block = std::string_view(block_).substr(0, size);
    if (isFirst_) isWide_ = isWide(block);
    const bool isGood = !isFirst_ || isWide_ || isText(block);
    isFirst_ = false;
    if (!isGood) return false;
    const auto end = block_.begin() + static_cast<std::ptrdiff_t>(size);
    // Tokens are ASCII, whose other byte is NUL.
    if (isWide_)
      std::remove_copy(block_.begin(), end, std::back_inserter(text), '\0');
    else
      text.append(block);
    return size == block_.size();
  }

 private:
  opc::InputStream& stream_;
  std::string& block_;
  bool isFirst_ = true;
  bool isWide_ = false;
};

/// What begins at a place of a text.
struct Match {
  std::string_view name;
  std::size_t length = 0;
};

const SecretPlaces& places() {
  static const SecretPlaces all;
  return all;
}

Match matchAt(std::string_view text, std::size_t at, SecretFile kind) {
  if (text.substr(at).starts_with(kKeyBegin)) {
    return {"a private key", matchPrivateKey(text, at, kind != SecretFile::Key)};
  }
  for (const SecretFormat* format : places().formatsWith(text[at])) {
    if (format->pattern[1] != text[at + 1]) continue;
    if (const std::size_t length = matchSecret(*format, text, at)) return {format->name, length};
  }
  return {};
}

/// Searches a text that comes in blocks, each appended to `text`.
class Search {
 public:
  Search(std::string& text, SecretFile kind) : text_(text), kind_(kind) {}

  const std::vector<Secret>& found() const { return found_; }
  bool isFull() const { return found_.size() >= kMaxSecrets; }

  /// Searches the text but for what needs the next block, which the last one does not have.
  void run(bool isLast) {
    const std::size_t margin = isLast ? 1 : kLookAhead;
    const std::size_t end = text_.size() - std::min(text_.size(), margin);
    while (!isFull() && (at_ = places().next(text_, at_, end)) < end) {
      const Match match = matchAt(text_, at_, kind_);
      if (match.length != 0) found_.push_back({match.name, lineOf(at_)});
      at_ += std::max<std::size_t>(match.length, 1);
    }
    forget();
  }

 private:
  std::size_t lineOf(std::size_t at) {
    line_ += text::countLineFeeds(std::string_view(text_).substr(counted_, at - counted_));
    counted_ = at;
    return line_;
  }

  void forget() {
    if (at_ <= kLookBehind) return;
    const std::size_t done = at_ - kLookBehind;
    if (counted_ < done) lineOf(done);
    text_.erase(0, done);
    at_ -= done;
    counted_ -= done;
  }

  std::string& text_;
  SecretFile kind_;
  std::size_t at_ = 0;       // the next place to look at
  std::size_t counted_ = 0;  // where line_ is
  std::size_t line_ = 1;
  std::vector<Secret> found_;
};

/// "KEY = VALUE" or "KEY: VALUE" with a value that is written down.
bool assigns(std::string_view line, std::span<const std::string_view> keys) {
  const std::size_t sign = line.find('=');
  if (sign == line.npos || line.starts_with(';') || line.starts_with('#')) return false;
  std::string_view key = text::trimmed(line.substr(0, sign));
  key.remove_prefix(key.rfind(':') + 1);  // npos + 1 is 0
  const std::string_view value = text::trimmed(line.substr(sign + 1));
  return std::find(keys.begin(), keys.end(), key) != keys.end() && !value.empty() &&
         !value.starts_with("${") && value != "\"\"";
}

bool hasPassword(std::string_view line) {
  constexpr std::array<std::string_view, 4> kKeys{"_auth", "_authToken", "_password", "password"};
  constexpr std::string_view kWord = "password";
  line = text::trimmed(line);
  if (assigns(line, kKeys)) return true;
  const std::size_t word = line.find(kWord);  // of a .netrc
  if (word == line.npos || line.starts_with('#')) return false;
  const std::string_view rest = line.substr(word + kWord.size());
  const bool isWord = (word == 0 || opc::isAsciiSpace(line[word - 1])) && !rest.empty() &&
                      opc::isAsciiSpace(rest.front());
  const std::string_view value = text::trimmed(rest);
  return isWord && !value.empty() && !value.starts_with('=');
}

void addPasswords(std::string_view text, std::vector<Secret>& found) {
  std::size_t number = 0;
  for (const std::string_view line : text::linesOf(text)) {
    ++number;
    if (hasPassword(line)) return found.push_back({"a password", number});
  }
}

}  // namespace

SecretFile secretFileOf(std::string_view name, std::string_view folder) {
  constexpr std::array<std::string_view, 6> kKeyNames{"id_rsa",     "id_dsa",      "id_ecdsa",
                                                      "id_ed25519", "id_ecdsa_sk", "id_ed25519_sk"};
  constexpr std::array<std::string_view, 3> kStores{".pfx", ".p12", ".ppk"};
  constexpr std::array<std::string_view, 3> kSamples{".example", ".sample", ".template"};
  constexpr std::array<std::string_view, 4> kSettings{".netrc", "_netrc", ".npmrc", ".pypirc"};
  const std::string lower = opc::toLowerAscii(name);
  const auto is = [&](std::string_view one) { return lower == one; };
  const auto endsWith = [&](std::string_view one) { return lower.ends_with(one); };
  const bool isEnvironment = (lower == ".env" || lower.starts_with(".env.")) &&
                             std::none_of(kSamples.begin(), kSamples.end(), endsWith);
  const bool isCloud = lower == "credentials" && opc::toLowerAscii(folder) == ".aws";
  if (isEnvironment || isCloud || std::any_of(kKeyNames.begin(), kKeyNames.end(), is) ||
      std::any_of(kStores.begin(), kStores.end(), endsWith)) {
    return SecretFile::Yes;
  }
  if (std::any_of(kSettings.begin(), kSettings.end(), is)) return SecretFile::Settings;
  return endsWith(".pem") || endsWith(".key") ? SecretFile::Key : SecretFile::No;
}

std::vector<Secret> SecretSearch::find(opc::InputStream& stream, SecretFile kind) {
  block_.resize(kReadSize);
  text_.clear();
  TextBlocks blocks(stream, block_);
  Search search(text_, kind);
  std::vector<Secret> passwords;
  for (bool isFirst = true, isLast = false; !isLast && !search.isFull(); isFirst = false) {
    isLast = !blocks.appendTo(text_);
    if (isFirst && kind == SecretFile::Settings) addPasswords(text_, passwords);
    search.run(isLast);
  }
  std::vector<Secret> found = search.found();
  found.insert(found.end(), passwords.begin(), passwords.end());
  return found;
}

bool hasNoSecrets(std::span<const unsigned char> content) {
  const std::string_view text(reinterpret_cast<const char*>(content.data()), content.size());
  if (isWide(text)) return false;
  if (!isText(text) || text.empty()) return true;
  const std::size_t end = text.size() - 1;
  for (std::size_t at = 0; (at = places().next(text, at, end)) < end; ++at) {
    if (matchAt(text, at, SecretFile::Key).length != 0) return false;
  }
  return true;
}

}  // namespace addon::checks::detail
