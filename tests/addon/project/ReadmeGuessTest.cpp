// SPDX-License-Identifier: MIT
#include "addon/project/detail/ReadmeGuess.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using addon::project::detail::readmeFacts;

struct Readme {
  const char* text;
  const char* summary;
};

class Readmes : public testing::TestWithParam<Readme> {};

TEST_P(Readmes, HaveTheirFirstSentence) {
  EXPECT_EQ(readmeFacts(GetParam().text).summary, GetParam().summary) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    All, Readmes,
    testing::Values(
        Readme{"", ""}, Readme{"\n\n \t\n", ""}, Readme{"Plain text\nmore", "Plain text more"},
        Readme{"# Wave\n\nShort-time spectra\n", "Short-time spectra"},
        Readme{"# Wave #\n\n## Install\n", "Wave"}, Readme{"Wave\n====\n\nSpectra", "Spectra"},
        Readme{"====\nWave\n====\n", "Wave"}, Readme{"<h1>Wave</h1>\n<p>Spectra</p>", "Spectra"},
        Readme{"\xEF\xBB\xBF# Wave\r\n\r\nSpectra\r\n", "Spectra"},
        Readme{"[![build](https://x/b.svg)](https://x)\n![shot](a.png)\nSpectra", "Spectra"},
        Readme{"[![build][b]][c]\n\n[b]: https://x\n[c]: https://y\nSpectra", "Spectra"},
        Readme{"<!-- a\ncomment\n-->\nSpectra", "Spectra"},
        Readme{"<!-- one line -->\nSpectra", "Spectra"},
        Readme{"<img\nsrc=\"a.png\">\nSpectra", "Spectra"},
        Readme{"```\ncode\n```\nSpectra", "Spectra"},
        Readme{"---\ntitle: x\n---\nSpectra", "Spectra"},
        Readme{".. image:: a.png\n\nSpectra", "Spectra"},
        Readme{"> **Fast** `fft` of __all__ [kinds](https://x) for x < 3",
               "Fast fft of all kinds for x < 3"},
        Readme{"- a\tb\x01"
               "c\n",
               "a b c"},
        Readme{"One\nsentence. And\nanother.", "One sentence."}, Readme{"Really? Yes.", "Really?"},
        Readme{"Wow! Yes.", "Wow!"},
        Readme{"Uses e.g. Fourier by J. Fourier. Fast.", "Uses e.g. Fourier by J. Fourier."},
        Readme{"Needs R2. x. Next", "Needs R2. x. Next"}, Readme{"A sentence.", "A sentence."},
        Readme{"Spectra\n\nmore", "Spectra"},
        Readme{"<p>\n  Fast\n  spectra\n</p>", "Fast spectra"}, Readme{"a [b] c (d", "a [b] c (d"},
        Readme{"Größe", "Größe"}, Readme{"snake_case stays", "snake_case stays"},
        Readme{"[![a](b.png) text](https://x) Spectra", "text Spectra"},
        Readme{"|a|b|\n|-|-|\n|c|d|\n\nSpectra", "Spectra"},
        Readme{"<h1>Wave</h1>\n\n```\ncode\n```\n", "Wave"}));

TEST(ReadmeGuess, ALongParagraphEndsAfterItsFirstSentence) {
  const std::string text = "One sentence. X" + std::string(300, 'x');

  EXPECT_EQ(readmeFacts(text).summary, "One sentence.");
}

TEST(ReadmeGuess, ALongSentenceEndsAfterAWord) {
  std::string text;
  while (text.size() < 300) text += "word ";

  const std::string summary = readmeFacts(text).summary;

  EXPECT_TRUE(summary.ends_with("word ...")) << summary;
  EXPECT_LE(summary.size(), 204u);
}

TEST(ReadmeGuess, ALongWordIsNotCutWithinACharacter) {
  std::string text = "x";
  while (text.size() < 5000) text += "\xC3\xA4";

  const std::string summary = readmeFacts(text).summary;

  EXPECT_EQ(summary.size(), 199 + 4u);
  EXPECT_TRUE(summary.ends_with("\xC3\xA4 ..."));
}

TEST(ReadmeGuess, ManyOpenBracketsAreReadToTheEnd) {
  const std::string line(4000, '[');
  std::string text;
  for (int i = 0; i < 1000; ++i) text += line + "\n";

  const std::string summary = readmeFacts(text).summary;

  EXPECT_EQ(summary, "");
}

}  // namespace
