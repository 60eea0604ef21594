// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "addon/catalogue/Record.h"

namespace addon::catalogue {

/// `shards/HASH.json`: all records of some add-ons, a line each, so that they can be copied without
/// being parsed.
class Shard {
 public:
  using Lines = std::vector<std::string>;

  /// The records of each add-on, by its key, the newest version first.
  const std::map<std::string, Lines>& addons() const { return addons_; }
  bool isEmpty() const { return addons_.empty(); }
  std::size_t versions() const;

  /// The records of one add-on; none if it is not there. Throws BrokenSite.
  std::vector<Record> records(const std::string& key) const;
  /// Replaces them, and puts them in order. Without any, the add-on is gone.
  void setRecords(const std::string& key, std::vector<Record> records);

  std::string text() const;
  /// Throws BrokenSite; `path` is for messages.
  static Shard parse(std::string_view text, std::string_view path);

 private:
  std::string path_ = "a new shard";  // for messages
  std::map<std::string, Lines> addons_;
};

/// Passes each record of a shard's text to `visit` as a line without its end. Throws BrokenSite.
void visitLines(std::string_view text, std::string_view path,
                const std::function<void(std::string_view)>& visit);

/// The record of such a line. Throws BrokenSite; `path` is that of the shard, for messages.
Record recordOf(std::string_view line, std::string_view path);

/// The newest of an add-on's records that is not yanked; null if all are.
const Record* currentOf(const std::vector<Record>& records);

}  // namespace addon::catalogue
