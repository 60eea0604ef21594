// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tool::line {

/// A term, and what is said about it.
using TopicEntry = std::pair<std::string, std::string>;

struct TopicSection {
  std::string title;      ///< "" for the first one
  std::string text = {};  ///< paragraphs; may be empty
  std::vector<TopicEntry> entries = {};
  std::string example = {};  ///< lines that stay as they are; may be empty
};

/// Something to read about that is not a command: 'kraddon help NAME'.
struct Topic {
  std::string name;
  std::string summary;  ///< one line
  std::vector<TopicSection> sections;
};

/// The help of a topic.
std::string helpOf(const Topic& topic);

}  // namespace tool::line
