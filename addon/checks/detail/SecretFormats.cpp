// SPDX-License-Identifier: MIT
#include "addon/checks/detail/SecretFormats.h"

#include <algorithm>
#include <bitset>

#include "opc/Text.h"

namespace addon::checks::detail {

namespace {

constexpr SecretFormat kFormats[] = {
    {"an AWS access key", "AKIA<u16>"},
    {"an AWS access key", "ASIA<u16>"},
    {"an AWS secret key", "aws_secret_access_key<s1-8><b40>"},
    {"an AWS secret key", "AWS_SECRET_ACCESS_KEY<s1-8><b40>"},
    {"an AWS secret key", "secretAccessKey<s1-8><b40>"},
    {"an AWS secret key", "SecretAccessKey<s1-8><b40>"},
    {"a Google API key", "AIza<t35>"},
    {"a Google OAuth client secret", "GOCSPX-<t28>"},
    {"a Google OAuth token", "ya29.<t40+>"},
    {"an Azure storage key", "AccountKey=<b86>=="},
    {"an Azure client secret", "Q~<z31-34>", "<z4>"},
    {"an Azure DevOps token", "AZDO<a4>", "<a76>"},
    {"an Alibaba Cloud access key", "LTAI<a12-20>"},
    {"a DigitalOcean token", "dop_v1_<x64>"},
    {"a DigitalOcean token", "doo_v1_<x64>"},
    {"a DigitalOcean token", "dor_v1_<x64>"},
    {"a Heroku token", "HRKU-AA<t58>"},
    {"a HashiCorp Vault token", "hvs.<t90+>"},
    {"a HashiCorp Vault token", "hvb.<t90+>"},
    {"a Terraform Cloud token", ".atlasv1.<t60+>", "<a14>"},
    {"a Databricks token", "dapi<x32>"},
    {"a GitHub token", "ghp_<a36+>"},
    {"a GitHub token", "gho_<a36+>"},
    {"a GitHub token", "ghu_<a36+>"},
    {"a GitHub token", "ghs_<a36+>"},
    {"a GitHub token", "ghr_<a36+>"},
    {"a GitHub token", "github_pat_<a22>_<a59>"},
    {"a GitLab token", "glpat-<t20+>"},
    {"a GitLab token", "gldt-<t20+>"},
    {"a GitLab token", "glrt-<t20+>"},
    {"a GitLab token", "glcbt-<t20+>"},
    {"a GitLab token", "glptt-<t40+>"},
    {"a GitLab token", "glsoat-<t20+>"},
    {"a GitLab token", "glagent-<t50+>"},
    {"a GitLab token", "gloas-<t64+>"},
    {"an Atlassian token", "ATATT3xFfGF0<t100+>"},
    {"a Bitbucket app password", "ATBB<a32>"},
    {"an npm token", "npm_<a36>"},
    {"a PyPI token", "pypi-AgEIcHlwaS5vcmc<t50+>"},
    {"a PyPI token", "pypi-AgENdGVzdC5weXBpLm9yZw<t50+>"},
    {"a RubyGems key", "rubygems_<x48>"},
    {"a crates.io token", "cio<a32>"},
    {"a Docker Hub token", "dckr_pat_<t27>"},
    {"a Docker Hub token", "dckr_oat_<t27+>"},
    {"a NuGet key", "oy2<l43>"},
    {"an Artifactory key", "AKCp<a69>"},
    {"a Slack token", "xoxb-<d8-14>-<t18+>"},
    {"a Slack token", "xoxp-<d8-14>-<t18+>"},
    {"a Slack token", "xoxa-<d8-14>-<t18+>"},
    {"a Slack token", "xoxr-<d8-14>-<t18+>"},
    {"a Slack token", "xoxe-<d1>-<t100+>"},
    {"a Slack token", "xapp-<d1>-<i8-14>-<d8-14>-<x64>"},
    {"a Slack webhook", "https://hooks.slack.com/services/T<i6-14>/B<i6-14>/<a18-30>"},
    {"a Discord webhook", "https://discord.com/api/webhooks/<d17-20>/<t60+>"},
    {"a Discord webhook", "https://discordapp.com/api/webhooks/<d17-20>/<t60+>"},
    // They begin with a number in base64.
    {"a Discord bot token", "MT<a20-28>.<t6>.<t27-40>"},
    {"a Discord bot token", "Mj<a20-28>.<t6>.<t27-40>"},
    {"a Discord bot token", "Mz<a20-28>.<t6>.<t27-40>"},
    {"a Discord bot token", "ND<a20-28>.<t6>.<t27-40>"},
    {"a Discord bot token", "NT<a20-28>.<t6>.<t27-40>"},
    {"a Discord bot token", "Nj<a20-28>.<t6>.<t27-40>"},
    {"a Discord bot token", "Nz<a20-28>.<t6>.<t27-40>"},
    {"a Discord bot token", "OD<a20-28>.<t6>.<t27-40>"},
    {"a Discord bot token", "OT<a20-28>.<t6>.<t27-40>"},
    {"a Telegram bot token", ":AA<t33>", "<d8-10>"},
    {"a Microsoft Teams webhook", ".webhook.office.com/webhookb2/<t36>@", "<t1-63>"},
    {"a SendGrid key", "SG.<t22>.<t43>"},
    {"a Stripe key", "sk_live_<a24+>"},
    {"a Stripe key", "rk_live_<a24+>"},
    {"an OpenAI key", "T3BlbkFJ<t20+>", "<t23-200>"},
    {"an Anthropic key", "sk-ant-<t80+>"},
    {"a Hugging Face token", "hf_<c34>"},
};

bool isIn(char set, char c) {
  constexpr auto kNone = std::string_view::npos;
  const bool isUpper = c >= 'A' && c <= 'Z';
  const bool isDigit = opc::isAsciiDigit(c);
  switch (set) {
    case 'a':
      return opc::isAsciiLetterOrDigit(c);
    case 'b':
      return opc::isAsciiLetterOrDigit(c) || c == '+' || c == '/';
    case 'c':
      return opc::isAsciiLetter(c);
    case 'd':
      return isDigit;
    case 'i':
      return isUpper || isDigit;
    case 'l':
      return (c >= 'a' && c <= 'z') || isDigit;
    case 's':
      return std::string_view(" \t\"':=>").find(c) != kNone;
    case 't':
      return isWord(c) || c == '-';
    case 'u':
      return isUpper || (c >= '2' && c <= '7');
    case 'x':
      return isDigit || (c >= 'a' && c <= 'f');
    case 'z':
      return isWord(c) || std::string_view(".~-").find(c) != kNone;
    default:
      return false;
  }
}

/// A "<...>" of a pattern.
struct Run {
  char set = 0;
  std::size_t least = 0;
  std::size_t most = 0;
};

std::size_t takeNumber(std::string_view& text) {
  std::size_t number = 0;
  for (; !text.empty() && opc::isAsciiDigit(text.front()); text.remove_prefix(1)) {
    number = number * 10 + static_cast<std::size_t>(text.front() - '0');
  }
  return number;
}

/// Takes the run that the pattern begins with.
Run takeRun(std::string_view& pattern) {
  Run run{pattern[1]};
  pattern.remove_prefix(2);
  run.least = run.most = takeNumber(pattern);
  if (pattern.starts_with('+')) run.most = kLookAhead;
  const bool hasMore = !pattern.starts_with('>');
  if (hasMore) pattern.remove_prefix(1);
  if (hasMore && !pattern.starts_with('>')) run.most = takeNumber(pattern);
  pattern.remove_prefix(1);
  return run;
}

std::size_t countIn(char set, std::string_view text, std::size_t most) {
  const std::size_t end = std::min(text.size(), most);
  std::size_t count = 0;
  while (count < end && isIn(set, text[count])) ++count;
  return count;
}

/// Tokens are random. What stands for one in documentation repeats or counts, or says so.
bool isRandom(char set, std::string_view token) {
  constexpr std::size_t kFewest = 8;  // different characters
  std::bitset<256> seen;
  std::size_t steps = 0;
  for (std::size_t i = 0; i < token.size(); ++i) {
    seen.set(static_cast<unsigned char>(token[i]));
    if (i > 0 && token[i] == token[i - 1] + 1) ++steps;
  }
  if (seen.count() < kFewest || steps * 2 > token.size()) return false;
  if (opc::toLowerAscii(token).find("example") != token.npos) return false;
  if (set != 'a' && set != 'c') return true;
  const auto has = [&](auto isOfKind) { return std::any_of(token.begin(), token.end(), isOfKind); };
  return has([](char c) { return c >= 'a' && c <= 'z'; }) &&
         has([](char c) { return c >= 'A' && c <= 'Z'; });
}

/// The longest run of a token, which is its secret.
struct Longest {
  char set = 0;
  std::string_view text = {};
  void offer(char ofSet, std::string_view run) {
    if (run.size() <= text.size()) return;
    set = ofSet;
    text = run;
  }
};

/// Whether the text before a token, from back to front, has the run and ends there.
bool matchBefore(std::string_view pattern, std::string_view before, Longest& longest) {
  const auto isFree = [&] { return before.empty() || !isWord(before.back()); };
  if (pattern.empty()) return isFree();
  const Run run = takeRun(pattern);
  std::size_t count = 0;
  while (count < before.size() && count < run.most &&
         isIn(run.set, before[before.size() - count - 1])) {
    ++count;
  }
  if (count < run.least) return false;
  longest.offer(run.set, before.substr(before.size() - count));
  before.remove_suffix(count);
  return isFree();
}

}  // namespace

bool isWord(char c) {
  return opc::isAsciiLetterOrDigit(c) || c == '_';
}

std::span<const SecretFormat> secretFormats() {
  return kFormats;
}

std::size_t matchSecret(const SecretFormat& format, std::string_view text, std::size_t at) {
  std::string_view pattern = format.pattern;
  std::string_view rest = text.substr(at);
  Longest longest;
  char last = 0;
  while (!pattern.empty()) {
    if (!pattern.starts_with('<')) {
      if (!rest.starts_with(pattern.front())) return 0;
      pattern.remove_prefix(1);
      rest.remove_prefix(1);
      last = 0;
      continue;
    }
    const Run run = takeRun(pattern);
    const std::size_t count = countIn(run.set, rest, run.most);
    if (count < run.least) return 0;
    longest.offer(run.set, rest.substr(0, count));
    rest.remove_prefix(count);
    last = run.most == kLookAhead ? '\0' : run.set;
  }
  if (last != 0 && !rest.empty() && (isIn(last, rest.front()) || isWord(rest.front()))) return 0;
  if (!matchBefore(format.before, text.substr(0, at), longest)) return 0;
  return isRandom(longest.set, longest.text) ? text.size() - at - rest.size() : 0;
}

std::size_t matchPrivateKey(std::string_view text, std::size_t at, bool needsKey) {
  constexpr std::string_view kKey = "PRIVATE KEY";
  constexpr std::string_view kDashes = "-----";
  constexpr std::string_view kBlock = " BLOCK";
  constexpr std::size_t kMaxKindLength = 32;   // "RSA ", "ENCRYPTED "
  constexpr std::size_t kMinKeyLength = 40;    // base64 in one line
  constexpr std::size_t kMaxHeadLength = 512;  // "Proc-Type: ..."
  std::string_view rest = text.substr(at + kKeyBegin.size());
  const std::size_t kind = rest.substr(0, kMaxKindLength + kKey.size()).find(kKey);
  if (kind == rest.npos || rest.substr(0, kind).find_first_of("-\r\n") != rest.npos) return 0;
  rest.remove_prefix(kind + kKey.size());
  if (rest.starts_with(kBlock)) rest.remove_prefix(kBlock.size());
  if (!rest.starts_with(kDashes)) return 0;
  rest.remove_prefix(kDashes.size());
  const std::size_t length = text.size() - at - rest.size();
  if (!needsKey) return length;
  rest = rest.substr(0, std::min(rest.find(kDashes), kMaxHeadLength));
  for (std::size_t i = 0; i < rest.size();) {
    const std::size_t count = countIn('b', rest.substr(i), rest.size());
    if (count >= kMinKeyLength && isRandom('a', rest.substr(i, count))) return length;
    i += count + 1;
  }
  return 0;
}

}  // namespace addon::checks::detail
