// SPDX-License-Identifier: MIT
#include "fl/i18n/codecvt.h"

#include <unicode/ucnv.h>

#include <limits>
#include <memory>
#include <utility>

#include "opc/Exception.h"
#include "opc/Text.h"

namespace fl::i18n {
namespace {

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using ConverterPointer = std::unique_ptr<UConverter, CloseConverter>;

ConverterPointer openConverter(const std::string& encoding, bool strict) {
  // To ICU these name the encoding of the process, or a part of the name.
  if (encoding.empty() || encoding.find('\0') != std::string::npos) {
    throw opc::Exception(opc::ErrorCode::InvalidArgument, "unknown encoding '" + encoding + "'");
  }
  UErrorCode status = U_ZERO_ERROR;
  ConverterPointer converter(ucnv_open(encoding.c_str(), &status));
  if (U_FAILURE(status)) {
    throw opc::Exception(opc::ErrorCode::InvalidArgument,
                         "unknown encoding '" + encoding + "': " + u_errorName(status));
  }
  if (strict) {
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                          &status);
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
  }
  return converter;
}

std::int32_t icuLength(std::size_t size) {
  if (size > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max() / 8)) {
    throw opc::Exception(opc::ErrorCode::TooLarge, "text is too long to convert");
  }
  return static_cast<std::int32_t>(size);
}

[[noreturn]] void fail(const std::string& encoding, UErrorCode status) {
  throw opc::Exception(opc::ErrorCode::InvalidText, "cannot convert text: encoding '" + encoding +
                                                        "' does not carry it (" +
                                                        u_errorName(status) + ")");
}

// Runs an ICU conversion into a string that is first a guess and then, if need be, large enough.
template <typename Text, typename Convert>
Text convertWhole(const std::string& encoding, std::int32_t guess, Convert convert) {
  Text result(static_cast<std::size_t>(guess), 0);
  for (;;) {
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        convert(result.data(), static_cast<std::int32_t>(result.size()), &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
      result.resize(static_cast<std::size_t>(length));
      continue;
    }
    if (U_FAILURE(status)) fail(encoding, status);
    result.resize(static_cast<std::size_t>(length));
    return result;
  }
}

}  // namespace

codecvt_ustring_to_string::codecvt_ustring_to_string(std::string encoding, bool strict)
    : encoding_(std::move(encoding)), strict_(strict) {
  openConverter(encoding_, strict_);
}

std::string codecvt_ustring_to_string::convert(std::u16string_view text) const {
  const ConverterPointer converter = openConverter(encoding_, strict_);
  const std::int32_t length = icuLength(text.size());
  return convertWhole<std::string>(
      encoding_, length * 3, [&](char* out, std::int32_t room, UErrorCode* status) {
        return ucnv_fromUChars(converter.get(), out, room, text.data(), length, status);
      });
}

codecvt_string_to_ustring::codecvt_string_to_ustring(std::string encoding, bool strict)
    : encoding_(std::move(encoding)), strict_(strict) {
  openConverter(encoding_, strict_);
}

std::u16string codecvt_string_to_ustring::convert(std::string_view bytes) const {
  const ConverterPointer converter = openConverter(encoding_, strict_);
  const std::int32_t length = icuLength(bytes.size());
  return convertWhole<std::u16string>(
      encoding_, length, [&](char16_t* out, std::int32_t room, UErrorCode* status) {
        return ucnv_toUChars(converter.get(), out, room, bytes.data(), length, status);
      });
}

}  // namespace fl::i18n
