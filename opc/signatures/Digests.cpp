// SPDX-License-Identifier: MIT
#include "opc/signatures/Digests.h"

namespace opc::signatures {

using interfaces::Hash;

namespace {

unsigned char* bytesOf(std::string& text, std::size_t size) {
  text.resize(size);
  return reinterpret_cast<unsigned char*>(text.data());
}

}  // namespace

void Digests::want(Hash hash) {
  switch (hash) {
    case Hash::Sha256:
      if (!sha256_) ::SHA256_Init(&sha256_.emplace());
      break;
    case Hash::Sha384:
      if (!sha384_) ::SHA384_Init(&sha384_.emplace());
      break;
    case Hash::Sha512:
      if (!sha512_) ::SHA512_Init(&sha512_.emplace());
      break;
  }
}

void Digests::update(std::span<const unsigned char> bytes) {
  if (sha256_) ::SHA256_Update(&*sha256_, bytes.data(), bytes.size());
  if (sha384_) ::SHA384_Update(&*sha384_, bytes.data(), bytes.size());
  if (sha512_) ::SHA512_Update(&*sha512_, bytes.data(), bytes.size());
}

const std::string& Digests::of(Hash hash) {
  auto& [sha256, sha384, sha512] = results_;
  if (sha256_) ::SHA256_Final(bytesOf(sha256, SHA256_DIGEST_LENGTH), &*sha256_);
  if (sha384_) ::SHA384_Final(bytesOf(sha384, SHA384_DIGEST_LENGTH), &*sha384_);
  if (sha512_) ::SHA512_Final(bytesOf(sha512, SHA512_DIGEST_LENGTH), &*sha512_);
  sha256_.reset();
  sha384_.reset();
  sha512_.reset();
  return results_[static_cast<std::size_t>(hash)];
}

std::string digestOf(Hash hash, std::string_view text) {
  Digests digests;
  digests.want(hash);
  digests.update({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
  return digests.of(hash);
}

}  // namespace opc::signatures
