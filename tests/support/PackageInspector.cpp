// SPDX-License-Identifier: MIT
#include "tests/support/PackageInspector.h"
#include "tests/support/Paths.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace test {

namespace {

std::string readAll(int fd) {
  std::string output;
  std::array<char, 4096> buffer{};
  for (ssize_t n = 0; (n = ::read(fd, buffer.data(), buffer.size())) > 0;) {
    output.append(buffer.data(), static_cast<std::size_t>(n));
  }
  return output;
}

/// Returns the output of the program; throws unless it exits with 0.
std::string run(const std::vector<std::string>& arguments) {
  std::array<int, 2> pipe{};
  if (::pipe(pipe.data()) != 0) throw std::runtime_error("pipe failed");
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, pipe[0]);
  pid_t child = 0;
  const int error = ::posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(pipe[1]);
  const std::string output = error == 0 ? readAll(pipe[0]) : std::string();
  ::close(pipe[0]);
  int status = 0;
  if (error != 0 || ::waitpid(child, &status, 0) != child || status != 0) {
    throw std::runtime_error("package_inspector.py failed");
  }
  return output;
}

std::string inspect(const std::string& command, const std::filesystem::path& file,
                    const std::vector<std::string>& more = {}) {
  std::vector<std::string> arguments{
      "/usr/bin/python3", sourcePath("tests/support/package_inspector.py"), command, file.string()};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return run(arguments);
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) result.push_back(line);
  return result;
}

}  // namespace

std::vector<std::string> PackageInspector::names() const {
  return lines(inspect("names", package_));
}

std::vector<std::string> PackageInspector::relationships(const std::string& type) const {
  return lines(inspect("relationships", package_, {type}));
}

std::string PackageInspector::contentType(const std::string& item) const {
  return inspect("content-type", package_, {item});
}

std::string PackageInspector::content(const std::string& item) const {
  return inspect("content", package_, {item});
}

std::string PackageInspector::canonical(const std::string& item) const {
  return inspect("canonical", package_, {item});
}

void PackageInspector::remove(const std::string& item) const {
  inspect("remove", package_, {item});
}

void PackageInspector::replace(const std::string& item, const std::string& content) const {
  inspect("replace", package_, {item, content});
}

void PackageInspector::doubleRelationship(const std::string& type) const {
  inspect("double-relationship", package_, {type});
}

std::string canonicalXml(const std::filesystem::path& file) {
  return inspect("canonical-file", file);
}

}  // namespace test
