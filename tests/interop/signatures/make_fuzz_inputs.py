#!/usr/bin/python3 -B
# SPDX-License-Identifier: MIT
"""Writes fuzz/corpus/signatures/NAME, signed packages, and fuzz/SignedContent.h: the certificate to
trust, and the digest of what is signed. Each run makes new keys, and forgets them."""

import hashlib
import pathlib
import shutil
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[3] / "fuzz"))

import corpus_packages
import keys
import signer
from mutator import is_carrier
from opc_package import Package
from signer import Form
from xml_signature import C14N, C14N_COMMENTS

FUZZ = pathlib.Path(__file__).resolve().parents[3] / "fuzz"
HEADER = '''// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace fuzz {{

// Made by tests/interop/signatures/make_fuzz_inputs.py, as the inputs are.
/// The certificate behind the signatures of the inputs.
inline constexpr std::string_view kTrusted = R"({certificate})";
/// The SHA-256 of their content.
inline constexpr std::string_view kSignedContent =
    "{content}";

}}  // namespace fuzz
'''
FORMS = {"plain": ("p256", Form()), "rsa": ("rsa2048", Form()),
         "sha512": ("p521", Form(digest="sha512", signing_digest="sha512")),
         "transform": ("p256", Form(relationships="ids", relationships_c14n=C14N_COMMENTS)),
         "types": ("p256", Form(relationships="types")),
         "canonical": ("p384", Form(xml_parts=C14N, object_transform=C14N,
                                    canonicalization=C14N_COMMENTS)),
         "certificates": ("p256", Form(certificates="parts"))}


def content_of(package):
    lines = sorted(f"{part}\0{package.type_of(part)}\0".encode() +
                   hashlib.sha256(package[part]).hexdigest().encode() + b"\n"
                   for part in package.parts() if not is_carrier(package, part))
    return hashlib.sha256(b"".join(lines)).hexdigest()


def main():
    plain = Package(dict(corpus_packages.packages())["full-deflated.kraddon"])
    authority = keys.Signer("p256", "Root", is_authority=True)
    folder = FUZZ / "corpus" / "signatures"
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    contents = set()
    for name, (kind, form) in FORMS.items():
        signed = signer.sign(plain, keys.Signer(kind, "Ada", authority), form)
        contents.add(content_of(signed))
        (folder / name).write_bytes(signed.bytes())
    twice = signer.sign(signer.sign(plain, keys.Signer("p256", "Ada", authority)),
                        keys.Signer("p256", "Bo", authority), name="s2")
    (folder / "two").write_bytes(twice.bytes())
    other = signer.sign(plain, keys.Signer("p256", "Eve"))
    (folder / "stranger").write_bytes(other.bytes())
    [content] = contents
    (FUZZ / "SignedContent.h").write_text(HEADER.format(
        certificate=authority.pem().decode(), content=content))


if __name__ == "__main__":
    main()
