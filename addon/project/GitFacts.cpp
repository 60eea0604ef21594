// SPDX-License-Identifier: MIT
#include "addon/project/GitFacts.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <optional>

#include "addon/project/PlainText.h"
#include "opc/FileDescriptor.h"
#include "opc/SystemCall.h"

namespace addon::project {

namespace {

constexpr std::size_t kMaxOutputSize = std::size_t{64} << 20;
constexpr std::string_view kTagPrefix = "refs/tags/";

/// The environment without variables that control git, such as GIT_DIR.
std::vector<std::string> environmentForGit() {
  constexpr std::array<std::string_view, 4> kKept{
      "GIT_CONFIG_GLOBAL=", "GIT_CONFIG_SYSTEM=", "GIT_CONFIG_NOSYSTEM=",
      "GIT_CEILING_DIRECTORIES="};
  std::vector<std::string> result{"GIT_TERMINAL_PROMPT=0", "GIT_OPTIONAL_LOCKS=0"};
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    const auto begins = [&](std::string_view name) { return text.starts_with(name); };
    if (begins("GIT_") && std::none_of(kKept.begin(), kKept.end(), begins)) continue;
    result.emplace_back(text);
  }
  return result;
}

std::vector<char*> toPointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// Sets up the child: output to the pipe, no input, errors discarded, default signals.
class SpawnSettings {
 public:
  explicit SpawnSettings(int output) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
    isReady_ = ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY,
                                                  0) == 0 &&
               ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO) == 0 &&
               ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY,
                                                  0) == 0 &&
               resetSignals();
  }
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  bool isReady() const { return isReady_; }
  const posix_spawn_file_actions_t* actions() const { return &actions_; }
  const posix_spawnattr_t* attributes() const { return &attributes_; }

 private:
  bool resetSignals() {
    ::sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGPIPE);
    return ::posix_spawnattr_setsigdefault(&attributes_, &signals) == 0 &&
           ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF) == 0;
  }

  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
  bool isReady_ = false;
};

/// Reads up to the end. Returns false if there is too much.
bool readAll(int descriptor, std::string& text) {
  std::array<char, 8192> buffer{};
  while (text.size() <= kMaxOutputSize) {
    const ssize_t size =
        opc::uninterrupted([&] { return ::read(descriptor, buffer.data(), buffer.size()); });
    if (size <= 0) return size == 0;
    text.append(buffer.data(), static_cast<std::size_t>(size));
  }
  return false;
}

bool hasSucceeded(pid_t child) {
  int status = 0;
  const pid_t ended = opc::uninterrupted([&] { return ::waitpid(child, &status, 0); });
  return ended == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// The output of git, or nothing if it fails.
std::optional<std::string> askGit(const std::string& folder,
                                  const std::vector<std::string>& words) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  const opc::FileDescriptor readEnd(ends[0]);
  opc::FileDescriptor writeEnd(ends[1]);
  std::vector<std::string> line{"git", "--no-pager", "-c", "core.fsmonitor=false", "-C", folder};
  line.insert(line.end(), words.begin(), words.end());
  std::vector<std::string> environment = environmentForGit();
  const SpawnSettings settings(writeEnd.get());
  pid_t child = -1;
  if (!settings.isReady() ||
      ::posix_spawnp(&child, "git", settings.actions(), settings.attributes(),
                     toPointers(line).data(), toPointers(environment).data()) != 0) {
    return std::nullopt;
  }
  writeEnd.reset();
  std::string text;
  const bool isWhole = readAll(readEnd.get(), text);
  if (!isWhole) ::kill(child, SIGTERM);
  if (!hasSucceeded(child) || !isWhole) return std::nullopt;
  return text;
}

/// A value from git's configuration, as one line.
std::string settingOf(const std::string& folder, const char* name) {
  const std::string text = askGit(folder, {"config", "--get", name}).value_or("");
  return isManifestText(text) ? asOneLine(text) : std::string();
}

/// The numbers in "v1.10.2", without leading zeros; empty for any other tag.
std::vector<std::string_view> numbersOf(std::string_view tag) {
  if (tag.starts_with('v')) tag.remove_prefix(1);
  std::vector<std::string_view> numbers;
  while (true) {
    const std::size_t size = std::min(tag.find_first_not_of("0123456789"), tag.size());
    if (size == 0) return {};
    const std::string_view number = tag.substr(0, size);
    numbers.push_back(number.substr(std::min(number.find_first_not_of('0'), size)));
    tag.remove_prefix(size);
    if (tag.empty()) break;
    if (tag[0] != '.') return {};
    tag.remove_prefix(1);
  }
  return numbers.size() == 2 || numbers.size() == 3 ? numbers : std::vector<std::string_view>{};
}

bool isLessNumber(std::string_view a, std::string_view b) {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

bool isOlder(const std::vector<std::string_view>& a, const std::vector<std::string_view>& b) {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), isLessNumber);
}

std::string newestTagOf(const std::string& folder) {
  const auto text = askGit(folder, {"for-each-ref", "--format=%(refname)", "refs/tags"});
  if (!text) return {};
  std::vector<std::string_view> tags = linesOf(*text);
  for (std::string_view& tag : tags) {
    if (tag.starts_with(kTagPrefix)) tag.remove_prefix(kTagPrefix.size());
  }
  return newestVersionTag(tags);
}

}  // namespace

std::string newestVersionTag(const std::vector<std::string_view>& tags) {
  std::string_view newest;
  std::vector<std::string_view> newestNumbers;
  for (const std::string_view tag : tags) {
    std::vector<std::string_view> numbers = numbersOf(tag);
    if (numbers.empty() || !isOlder(newestNumbers, numbers)) continue;
    newest = tag;
    newestNumbers = std::move(numbers);
  }
  return std::string(newest);
}

std::unordered_set<std::string> trackedFiles(const std::string& folder) {
  const std::string list =
      askGit(folder, {"ls-files", "-z", "--cached", "--recurse-submodules"}).value_or("");
  std::unordered_set<std::string> files;
  for (std::size_t at = 0; at < list.size();) {
    files.emplace(list.c_str() + at);
    at = list.find('\0', at) + 1;
  }
  return files;
}

GitFacts readGitFacts(const std::string& folder) {
  GitFacts facts;
  facts.userName = settingOf(folder, "user.name");
  facts.userEmail = settingOf(folder, "user.email");
  const auto prefix = askGit(folder, {"rev-parse", "--show-prefix"});
  if (!prefix) return facts;
  facts.isBelowTop = !trimmed(*prefix).empty();
  facts.tag = newestTagOf(folder);
  facts.version = facts.tag.starts_with('v') ? facts.tag.substr(1) : facts.tag;
  return facts;
}

}  // namespace addon::project
