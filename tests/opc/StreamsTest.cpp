// SPDX-License-Identifier: MIT
#include "opc/Streams.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "opc/Exception.h"

namespace opc {
namespace {

// Works for a while, then breaks.
class BreakingBuffer final : public std::streambuf {
 public:
  explicit BreakingBuffer(std::size_t good) : good_(good) {}

 private:
  int_type underflow() override {
    if (good_ == 0) throw std::runtime_error("broken");
    --good_;
    setg(&byte_, &byte_, &byte_ + 1);
    return traits_type::to_int_type(byte_);
  }
  int_type overflow(int_type) override {
    if (good_ == 0) return traits_type::eof();
    --good_;
    return 0;
  }

  std::size_t good_;
  char byte_ = 'x';
};

std::string readAll(InputStream& stream, std::size_t blockSize) {
  std::string result;
  std::vector<unsigned char> block(blockSize);
  while (const std::size_t count = stream.read(block.data(), block.size())) {
    result.append(reinterpret_cast<const char*>(block.data()), count);
  }
  return result;
}

TEST(StdIStreamAdaptor, ReadsEveryByteWhateverTheBlockSize) {
  const std::string text = std::string("a\0\r\n\xFF", 5) + std::string(1000, 'x');
  for (const std::size_t blockSize : {1u, 5u, 7u, 1005u, 4096u}) {
    std::istringstream source(text);
    StdIStreamAdaptor stream(source);

    EXPECT_EQ(readAll(stream, blockSize), text);
    EXPECT_TRUE(stream.isEnd());
  }
}

TEST(StdIStreamAdaptor, KnowsItsEndBeforeReadingPastIt) {
  std::istringstream source("ab");
  StdIStreamAdaptor stream(source);
  unsigned char block[2];
  EXPECT_FALSE(stream.isEnd());
  EXPECT_EQ(stream.read(block, 2), 2u);

  EXPECT_TRUE(stream.isEnd());
  EXPECT_EQ(stream.read(block, 2), 0u);
  EXPECT_TRUE(stream.isEnd());
}

TEST(StdIStreamAdaptor, AStreamThatWasNeverOpenedIsNotAnEmptyOne) {
  std::ifstream source("/nowhere/at/all");
  StdIStreamAdaptor stream(source);
  unsigned char byte;

  EXPECT_THROW(stream.read(&byte, 1), Exception);
  EXPECT_THROW(stream.isEnd(), Exception);
}

TEST(StdIStreamAdaptor, AFailureInTheMiddleIsAnErrorAndNotTheEnd) {
  BreakingBuffer buffer(3);
  std::istream source(&buffer);
  StdIStreamAdaptor stream(source);
  unsigned char block[3];
  EXPECT_EQ(stream.read(block, 3), 3u);

  EXPECT_THROW(stream.read(block, 1), Exception);
  EXPECT_THROW(stream.isEnd(), Exception);
}

TEST(StdIStreamAdaptor, AStreamThatThrowsAtItsEndIsReadToItsEnd) {
  std::istringstream source("abc");
  source.exceptions(std::ios::failbit | std::ios::badbit | std::ios::eofbit);
  StdIStreamAdaptor stream(source);

  EXPECT_EQ(readAll(stream, 2), "abc");
  EXPECT_TRUE(stream.isEnd());
}

TEST(StdOStreamAdaptor, WritesEveryByte) {
  std::ostringstream target;
  StdOStreamAdaptor stream(target);

  stream.write(reinterpret_cast<const unsigned char*>("a\0b"), 3);
  stream.write(nullptr, 0);

  EXPECT_EQ(target.str(), std::string("a\0b", 3));
}

TEST(StdOStreamAdaptor, AFailureIsAnException) {
  BreakingBuffer buffer(1);
  std::ostream target(&buffer);
  StdOStreamAdaptor stream(target);

  EXPECT_THROW(stream.write(reinterpret_cast<const unsigned char*>("ab"), 2), Exception);
}

TEST(StdOStreamAdaptor, AStreamThatThrowsGivesTheSameException) {
  BreakingBuffer buffer(0);
  std::ostream target(&buffer);
  target.exceptions(std::ios::failbit | std::ios::badbit);
  StdOStreamAdaptor stream(target);

  EXPECT_THROW(stream.write(reinterpret_cast<const unsigned char*>("a"), 1), Exception);
}

TEST(MemoryInputStream, ReadsWhatIsThereAndThenNothing) {
  const unsigned char bytes[] = {1, 2, 3};
  MemoryInputStream stream(bytes, 3);
  unsigned char block[8] = {};

  EXPECT_EQ(stream.read(block, 2), 2u);
  EXPECT_FALSE(stream.isEnd());
  EXPECT_EQ(stream.read(block + 2, 6), 1u);
  EXPECT_TRUE(stream.isEnd());
  EXPECT_EQ(stream.read(block, 8), 0u);
  EXPECT_EQ(block[2], 3);
}

TEST(MemoryInputStream, NoBytesNeedNoMemory) {
  MemoryInputStream stream(nullptr, 0);
  unsigned char byte = 7;

  EXPECT_TRUE(stream.isEnd());
  EXPECT_EQ(stream.read(&byte, 1), 0u);
  EXPECT_EQ(byte, 7);
}

TEST(StreamHelper, CopiesWhatIsLeft) {
  std::string text(200000, 'x');
  text[65535] = 'y';
  std::istringstream source(text);
  std::ostringstream target;
  StdIStreamAdaptor from(source);
  StdOStreamAdaptor to(target);
  unsigned char first;
  from.read(&first, 1);

  StreamHelper::copyStreamToStream(from, to);

  EXPECT_EQ(target.str(), text.substr(1));
}

}  // namespace
}  // namespace opc
