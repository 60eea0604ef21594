// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace opc {

/// Families of faults, for callers that react to one of them.
enum class ErrorCode {
  InvalidArgument,  ///< a value that the caller gave breaks a rule
  InvalidName,      ///< no part name, or no path of the file tree
  InvalidState,     ///< not open, open already, opened for reading only
  InvalidText,      ///< text that an encoding cannot carry, or bytes that are not text
  InvalidXml,       ///< not well-formed, or beyond what is read
  InvalidPackage,   ///< a rule of the container or of the Open Packaging Conventions is broken
  Damaged,          ///< data that do not match their size or checksum
  Unsupported,      ///< legal, but not done here
  NotFound,
  AlreadyExists,
  TooLarge,
  ChangedOnDisk,  ///< somebody else replaced or changed the package meanwhile
  FileSystem,     ///< the operating system refused
};

/// What everything in the packaging layer throws; nothing but this and std::bad_alloc leaves it.
///
/// The text reads `<what> '<which>': <why>`, in UTF-8, one line, with control characters replaced.
/// The thrower states the rule; whoever knows the part, the file or the package puts it in front
/// with addContext, once each.
class Exception : public std::exception {
 public:
  Exception(ErrorCode code, const std::string& message);

  ErrorCode code() const noexcept { return code_; }
  const char* what() const noexcept override { return message_.c_str(); }

  /// Puts "`context`: " in front of the text.
  void addContext(std::string_view context);

 private:
  ErrorCode code_;
  std::string message_;
};

/// A package that breaks a rule. `rule` is the rule's short name, such as "CT-6"; it does not
/// stand in the text.
class FormatError : public Exception {
 public:
  FormatError(std::string rule, const std::string& message,
              ErrorCode code = ErrorCode::InvalidPackage);

  const std::string& rule() const noexcept { return rule_; }

 private:
  std::string rule_;
};

/// A refusal of the operating system; the text ends with the system's own words for `number`.
class SystemError : public Exception {
 public:
  /// `message` without the reason, such as "cannot open 'a/b'"; `number` is an errno value.
  SystemError(std::string_view message, int number);

  int number() const noexcept { return number_; }

 private:
  int number_;
};

/// "`what` '`which`': `why`"
std::string sentence(std::string_view what, std::string_view which, std::string_view why);

/// The same with the system's own words for `number`, an errno value. An empty path that does not
/// exist is called empty: as a rule an unset variable of a script is behind it.
std::string systemSentence(std::string_view what, std::string_view which, int number);

/// Runs `body`, and puts what `context` returns in front of the text of what it throws. The text is
/// made only when it is needed.
template <typename Context, typename Body>
auto inContext(const Context& context, const Body& body) {
  try {
    return body();
  } catch (Exception& e) {
    e.addContext(context());
    throw;
  }
}

}  // namespace opc
