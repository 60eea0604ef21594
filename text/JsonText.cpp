// SPDX-License-Identifier: MIT
#include "text/JsonText.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace text {

namespace {

/// Builds the value while it is read. The parser's own way would keep the last of several members
/// of one name and would know no limit of depth.
class Builder final : public nlohmann::json_sax<JsonValue> {
 public:
  JsonValue take() { return std::move(root_); }
  /// Not JSON, as opposed to JSON that is refused.
  bool isSyntaxError() const { return isSyntaxError_; }
  const std::string& error() const { return error_; }

  bool null() override { return add(JsonValue()); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override {
    // Only "-0" comes here as 0, and as a whole number it would lose its sign.
    return value == 0 ? add(-0.0) : add(value);
  }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t&) override { return add(value); }
  bool string(string_t& value) override { return add(std::move(value)); }
  bool binary(binary_t&) override { return refuse("JSON text has no binary values"); }

  bool start_object(std::size_t) override { return open(JsonValue::object()); }
  bool end_object() override { return close(); }
  bool start_array(std::size_t) override { return open(JsonValue::array()); }
  bool end_array() override { return close(); }

  bool key(string_t& name) override {
    if (!levels_.back().names.insert(name).second) {
      return refuse(fmt::format("{}.{}: it is given twice", place(), name));
    }
    levels_.back().key = std::move(name);
    return true;
  }

  bool parse_error(std::size_t, const std::string&,
                   const nlohmann::detail::exception& error) override {
    const std::string text = error.what();
    const std::size_t prefix = text.find("] ");
    error_ = prefix == std::string::npos ? text : text.substr(prefix + 2);
    constexpr int kNumberTooLarge = 406;
    // Half a character, written as an escape, is JSON that no text can hold.
    const bool isHalfCharacter = error_.find("surrogate U+D") != std::string::npos;
    isSyntaxError_ = error.id != kNumberTooLarge && !isHalfCharacter;
    return false;
  }

 private:
  struct Level {
    JsonValue* value;
    std::unordered_set<std::string> names = {};
    std::string key = {};
  };

  /// Of the object that is being read: ".a[2]", or "" for the outermost.
  std::string place() const {
    std::string text;
    for (std::size_t i = 0; i + 1 < levels_.size(); ++i) {
      const JsonValue& value = *levels_[i].value;
      // What is being read is always the last one of what encloses it.
      text += value.is_array()
                  ? fmt::format("[{}]", value.size() - 1)
                  : fmt::format(".{}", value.get_ref<const JsonValue::object_t&>().back().first);
    }
    return text;
  }

  bool refuse(std::string why) {
    error_ = std::move(why);
    return false;
  }

  JsonValue* insert(JsonValue value) {
    if (levels_.empty()) {
      root_ = std::move(value);
      return &root_;
    }
    Level& level = levels_.back();
    if (level.value->is_array()) {
      auto& elements = level.value->get_ref<JsonValue::array_t&>();
      return &elements.emplace_back(std::move(value));
    }
    // Not through operator[], which would look through all members once more.
    auto& members = level.value->get_ref<JsonValue::object_t&>();
    members.push_back({std::move(level.key), std::move(value)});
    return &members.back().second;
  }

  bool add(JsonValue value) {
    insert(std::move(value));
    return true;
  }

  bool open(JsonValue value) {
    if (levels_.size() == kMaxJsonDepth) {
      return refuse(fmt::format("it is more than {} levels deep", kMaxJsonDepth));
    }
    levels_.push_back({insert(std::move(value))});
    return true;
  }

  bool close() {
    levels_.pop_back();
    return true;
  }

  JsonValue root_;
  std::vector<Level> levels_;
  std::string error_;
  bool isSyntaxError_ = false;
};

}  // namespace

JsonValue parseJson(std::string_view text) {
  Builder builder;
  if (!JsonValue::sax_parse(text.begin(), text.end(), &builder)) throw JsonError(builder.error());
  return builder.take();
}

std::optional<JsonValue> parseJsonIfAny(std::string_view text) {
  Builder builder;
  if (JsonValue::sax_parse(text.begin(), text.end(), &builder)) return builder.take();
  if (builder.isSyntaxError()) return std::nullopt;
  throw JsonError(builder.error());
}

std::optional<std::uint64_t> wholeNumber(const JsonValue& value) {
  if (value.is_number_unsigned()) return value.get<std::uint64_t>();
  // "-0" is kept with its sign.
  if (value.is_number_float() && value.get<double>() == 0) return 0;
  return std::nullopt;
}

}  // namespace text
