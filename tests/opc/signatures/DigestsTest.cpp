// SPDX-License-Identifier: MIT
#include "opc/signatures/Digests.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using opc::interfaces::Hash;
using opc::signatures::digestOf;
using opc::signatures::Digests;

namespace {

std::string hex(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    text += kDigits[static_cast<unsigned char>(c) >> 4];
    text += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return text;
}

void update(Digests& digests, std::string_view text) {
  digests.update({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
}

}  // namespace

TEST(Digests, OfATextAreThoseOfTheStandard) {
  EXPECT_EQ(hex(digestOf(Hash::Sha256, "abc")),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(hex(digestOf(Hash::Sha384, "abc")),
            "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed"
            "8086072ba1e7cc2358baeca134c825a7");
  EXPECT_EQ(hex(digestOf(Hash::Sha512, "abc")),
            "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
            "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f");
}

TEST(Digests, SeveralAreTakenInOnePass) {
  Digests digests;
  digests.want(Hash::Sha256);
  digests.want(Hash::Sha512);
  update(digests, "a");
  update(digests, "");
  update(digests, "bc");

  EXPECT_EQ(digests.of(Hash::Sha512), digestOf(Hash::Sha512, "abc"));
  EXPECT_EQ(digests.of(Hash::Sha256), digestOf(Hash::Sha256, "abc"));
  EXPECT_EQ(digests.of(Hash::Sha256), digestOf(Hash::Sha256, "abc"));
}

TEST(Digests, WantingOneTwiceDoesNotBeginAgain) {
  Digests digests;
  digests.want(Hash::Sha384);
  update(digests, "ab");
  digests.want(Hash::Sha384);
  update(digests, "c");

  EXPECT_EQ(digests.of(Hash::Sha384), digestOf(Hash::Sha384, "abc"));
}
