// SPDX-License-Identifier: MIT
#include "tests/opc/zippackage/PackageFixture.h"

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>
#include <stdexcept>

namespace test {

using opc::interfaces::ItemIndex;
using opc::interfaces::NewItem;
using opc::interfaces::OpenMode;
using opc::zippackage::ZipPhysicalPackage;

namespace {

class TextStream final : public opc::InputStream {
 public:
  TextStream(std::string text, std::function<void(std::size_t)> hook)
      : text_(std::move(text)), hook_(std::move(hook)) {}

  std::size_t read(unsigned char* buffer, std::size_t size) override {
    if (hook_) hook_(at_);
    const std::size_t count = std::min(size, text_.size() - at_);
    std::copy_n(text_.data() + at_, count, buffer);
    at_ += count;
    return count;
  }
  bool isEnd() override { return at_ == text_.size(); }

 private:
  std::string text_;
  std::function<void(std::size_t)> hook_;
  std::size_t at_ = 0;
};

}  // namespace

std::unique_ptr<opc::InputStream> TextSource::getInputStream() {
  return std::make_unique<TextStream>(text_, hook_);
}

ZipPhysicalPackage packageAt(const std::filesystem::path& path, bool replaceExisting) {
  return ZipPhysicalPackage(path.u16string(), replaceExisting, {});
}

ItemIndex addText(ZipPhysicalPackage& package, const NewItem& item, std::string_view text) {
  const ItemIndex index = package.addItem(item);
  package.openForWriting(index)->write(reinterpret_cast<const unsigned char*>(text.data()),
                                       text.size());
  return index;
}

void makePackage(const std::filesystem::path& path, const std::vector<std::string>& namesAndTexts) {
  auto package = packageAt(path);
  package.open(OpenMode::Create);
  for (std::size_t i = 0; i + 1 < namesAndTexts.size(); i += 2) {
    addText(package, {.name = namesAndTexts[i]}, namesAndTexts[i + 1]);
  }
  package.close(false);
}

std::optional<ItemIndex> find(const ZipPhysicalPackage& package, std::string_view name) {
  for (ItemIndex item = 0; item < package.itemCount(); ++item) {
    if (!package.isRemoved(item) && package.itemInfo(item).name == name) return item;
  }
  return std::nullopt;
}

std::string textOf(ZipPhysicalPackage& package, std::string_view name) {
  opc::ByteBuffer bytes;
  package.readItem(find(package, name).value(), bytes, UINT64_MAX);
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string streamedTextOf(ZipPhysicalPackage& package, std::string_view name, std::size_t block) {
  const auto stream = package.openItem(find(package, name).value());
  std::string text;
  std::string piece(block, '\0');
  while (!stream->isEnd()) {
    const std::size_t count =
        stream->read(reinterpret_cast<unsigned char*>(piece.data()), piece.size());
    text.append(piece, 0, count);
  }
  return text;
}

std::string packableText(std::size_t size) {
  std::string text;
  for (std::size_t line = 0; text.size() < size; ++line) {
    text += "line " + std::to_string(line) + " of a text that repeats itself\n";
  }
  text.resize(size);
  return text;
}

std::string randomText(std::size_t size, std::uint32_t seed) {
  std::mt19937 generator(seed);
  std::string text(size, '\0');
  for (char& c : text) c = static_cast<char>(generator());
  return text;
}

std::string errorOf(const std::function<void()>& body, opc::ErrorCode* code) {
  try {
    body();
    return {};
  } catch (const opc::Exception& e) {
    if (code != nullptr) *code = e.code();
    return e.what();
  }
}

std::string ruleOf(const std::function<void()>& body) {
  try {
    body();
    return "nothing thrown";
  } catch (const opc::FormatError& e) {
    return e.rule();
  } catch (const opc::Exception& e) {
    return e.what();
  }
}

std::string outputOf(const std::string& command) {
  FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("popen failed");
  std::string output;
  std::array<char, 4096> block;
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), pipe)) {
    output.append(block.data(), count);
  }
  const int status = ::pclose(pipe);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    output += "exit " + std::to_string(WEXITSTATUS(status));
  }
  return output;
}

}  // namespace test
