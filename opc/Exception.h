// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace opc {

/// Families of faults, for callers that react to one of them.
enum class ErrorCode {
  InvalidArgument,  ///< a value that the caller gave breaks a rule
  InvalidName,      ///< not a part name, or not a path of the file tree
  InvalidState,     ///< not open, already open, or open for reading only
  InvalidText,      ///< text that an encoding cannot carry, or bytes that are not text
  InvalidXml,       ///< not well-formed, or beyond the limits for reading
  InvalidPackage,   ///< a rule of the container or of the Open Packaging Conventions is broken
  Damaged,          ///< data that do not match their size or checksum
  Unsupported,      ///< valid, but not supported
  NotFound,
  AlreadyExists,
  TooLarge,
  ChangedOnDisk,  ///< somebody else replaced or changed the package meanwhile
  FileSystem,     ///< the operating system refused
};

/// The base class of all exceptions of the packaging layer, which otherwise throws only
/// std::bad_alloc and what callbacks throw.
///
/// The message reads `<what> '<which>': <why>`. It is one line of UTF-8; control characters are
/// escaped. The code that throws states the rule; callers that know the part, the file or the
/// package put it in front with addContext(), once each.
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

/// A package that breaks a rule. `rule` is the short name of the rule, such as "CT-6"; the message
/// does not contain it.
class FormatError : public Exception {
 public:
  FormatError(std::string rule, const std::string& message,
              ErrorCode code = ErrorCode::InvalidPackage);

  const std::string& rule() const noexcept { return rule_; }

 private:
  std::string rule_;
};

/// A system call that failed. The message ends with the system's description of `number`.
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

/// The same with the system's description of `number`, an errno value. If the path is empty and
/// `number` is ENOENT, the message says that the path is empty: usually a variable of a script is
/// not set.
std::string systemSentence(std::string_view what, std::string_view which, int number);

/// Runs `body`. If it throws an Exception, puts the text that `context` returns in front of the
/// message and rethrows. `context` is called only in that case.
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
