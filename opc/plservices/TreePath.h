// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace opc::plservices {

/// What is wrong with a path of the file tree (UTF-8, no leading slash), such as "it has an empty
/// component"; nullptr when it is one.
const char* findPathFault(std::string_view path) noexcept;

/// `path` without a leading slash. Throws ErrorCode::InvalidName, naming it, when it is not a path
/// of the file tree.
std::string_view requireTreePath(std::string_view path);

/// Whether well-formed UTF-8 holds a C0 or C1 control character or DEL.
bool hasControlCharacter(std::string_view text) noexcept;

/// Why other programs unpack an item of that name to another path, such as "ends in a version
/// number"; nullptr when they do not.
const char* findUnpackingFault(std::string_view itemName) noexcept;

/// The last component.
std::string_view lastComponent(std::string_view path) noexcept;

/// What follows the last dot of the last component, no dot; empty when there is none or it begins
/// the component.
std::string_view extensionOf(std::string_view path) noexcept;

}  // namespace opc::plservices
