// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "addon/project/ChangelogGuess.h"
#include "addon/project/GitFacts.h"
#include "addon/project/ProjectFolder.h"

namespace addon::project {

/// A value, and a description of its source. Without a source, it is a default.
struct Guess {
  std::string value;
  std::string source;
};

struct GuessedExample {
  std::string name;
  std::string main;
  std::string thumbnail;  ///< may be empty
};

struct GuessedCategory {
  std::string name;
  std::string folder;
  std::vector<GuessedExample> examples;
};

struct GuessedApp {
  std::string name;
  std::string file;
};

/// A text file at the top of the folder.
struct GuessedText {
  std::string path;                 ///< "" if there is none
  std::vector<std::string> others;  ///< other files of the same kind
  std::string fault;                ///< why it cannot be used; "" if it can
};

/// What can be guessed about an add-on from its folder. Paths are relative to the folder.
struct Guesses {
  Guess name;
  Guess version;
  Guess guid;  ///< that of an older manifest, for the caller to set; without one, it is random
  Guess author;
  Guess contact;
  Guess summary;
  GuessedText readme;
  GuessedText license;
  std::string licenseType;
  std::string screenshot;
  std::vector<std::string> screenshotFaults;  ///< "IMAGE cannot be the screenshot: WHY"
  std::vector<std::string> korvanPaths;
  std::vector<std::string> javaClassPaths;
  std::vector<GuessedApp> apps;
  std::vector<GuessedCategory> categories;
  GuessedText changelog;
  std::vector<GuessedRevision> revisions;
  std::vector<std::string> remarks;  ///< what could not be read
};

Guesses guessFrom(const ProjectFolder& folder, const GitFacts& git);

}  // namespace addon::project
