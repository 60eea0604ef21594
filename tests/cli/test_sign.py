# SPDX-License-Identifier: MIT
"""sign and unsign: what they write, what they refuse, and what stays as it was"""

import os
import shutil
import zipfile

import kraddontest
import signing

FILES = {"a.m": "x = 1;\n", "größe.m": "y", "lib/b b.m": "z", "empty/": None}


def entries(path):
    with zipfile.ZipFile(path) as archive:
        return {info.filename: (archive.read(info), info.date_time, info.compress_type)
                for info in archive.infolist()}


class SignTest(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.tree(FILES)
        self.ok("create", "p.kraddon", "src", "--name", "Kit", "--timestamp",
                str(signing.NOW))
        self.keys = signing.material()
        self.original = self.path("p.kraddon").read_bytes()

    def sign(self, *words, package="p.kraddon", **kw):
        return self.ok("sign", package, *(words or signing.words()), **kw)

    def findings(self, *words, package="p.kraddon"):
        report = self.run_kraddon("verify", "--json", package, *words).json
        return [finding["id"] for finding in report["packages"][0]["findings"]
                if finding["id"].startswith("KR6")]

    def assert_unchanged(self):
        self.assertEqual(self.path("p.kraddon").read_bytes(), self.original)
        self.assertEqual(sorted(os.listdir(self.folder)), ["p.kraddon", "src"])


class Signing(SignTest):

    def test_a_signed_package_verifies(self):
        self.sign()
        self.assertEqual(self.findings(), ["KR609"])
        self.assertEqual(self.findings(*signing.trust("root")), [])

    def test_every_kind_of_key_signs(self):
        for name in ("rsa", "p256", "p384", "p521"):
            self.path("p.kraddon").write_bytes(self.original)
            self.sign(*signing.words(name))
            signature, = self.ok("signatures", "p.kraddon", "--json").json["signatures"]
            self.assertEqual(signature["state"], "valid")
            self.assertEqual(signature["algorithm"],
                             "rsa-sha256" if name == "rsa" else "ecdsa-sha256")

    def test_other_entries_keep_their_bytes(self):
        before = entries(self.path("p.kraddon"))
        self.sign()
        after = entries(self.path("p.kraddon"))
        self.assertEqual({name for name in after if before.get(name) != after[name]},
                         {"[Content_Types].xml", "_rels/.rels", signing.ORIGIN,
                          signing.SIGNATURES + "_rels/origin.psdsor.rels",
                          *signing.signature_names(self.path("p.kraddon"))})
        self.assertEqual(set(before) - set(after), set())
        self.assertEqual(after[signing.ORIGIN][0], b"")

    def test_rsa_and_a_fixed_time_give_the_same_bytes(self):
        self.sign()
        first = self.path("p.kraddon").read_bytes()
        self.path("p.kraddon").write_bytes(self.original)
        self.ok("sign", "p.kraddon", *signing.words()[:4],
                env={"SOURCE_DATE_EPOCH": str(signing.NOW), "LC_ALL": "C", "TZ": "Asia/Tokyo"})
        self.assertEqual(self.path("p.kraddon").read_bytes(), first)

    def test_a_second_signature_leaves_the_first_as_it_is(self):
        self.sign()
        before = entries(self.path("p.kraddon"))
        self.sign(*signing.words("p256"))
        after = entries(self.path("p.kraddon"))
        new = set(signing.signature_names(self.path("p.kraddon"))) - set(before)
        self.assertEqual(len(new), 1)
        self.assertEqual({name for name in after if before.get(name) != after[name]},
                         {"[Content_Types].xml", signing.SIGNATURES + "_rels/origin.psdsor.rels",
                          *new})
        self.assertEqual(self.findings(*signing.trust("root"), *signing.trust("intermediate")), [])

    def test_one_key_can_sign_twice(self):
        self.sign()
        self.sign()
        self.assertEqual(len(signing.signature_names(self.path("p.kraddon"))), 2)
        self.assertEqual(self.findings(), ["KR609"] * 2)

    def test_references_are_in_order_and_cover_everything(self):
        self.sign()
        name, = signing.signature_names(self.path("p.kraddon"))
        text = entries(self.path("p.kraddon"))[name][0].decode()
        uris = [part.split('"')[0] for part in text.split('<Reference URI="')[1:]]
        self.assertEqual(uris, sorted(uris))
        self.assertEqual(uris, [
            "/_rels/.rels?ContentType=application/vnd.openxmlformats-package.relationships+xml",
            "/files/a.m?ContentType=text/plain",
            "/files/gr%C3%B6%C3%9Fe.m?ContentType=text/plain",
            "/files/lib/b%20b.m?ContentType=text/plain",
            *[uri for uri in uris if uri.startswith("/metadata/")]])
        self.assertEqual(len(uris), 8)

    def test_the_digest_and_diff_do_not_see_it(self):
        before = self.ok("info", "p.kraddon", "--field", "digest").text
        shutil.copy(self.path("p.kraddon"), self.path("q.kraddon"))
        self.sign()
        self.assertEqual(self.ok("info", "p.kraddon", "--field", "digest").text, before)
        self.ok("diff", "p.kraddon", "q.kraddon")
        self.assertEqual(self.ok("info", "p.kraddon", "--field", "signatures").text, "1\n")

    def test_changes_of_a_signed_package_say_that_it_is_broken(self):
        self.sign()
        self.write("c.m", "c")
        for words in (("add", "p.kraddon", "c.m"), ("mv", "p.kraddon", "c.m", "d.m"),
                      ("mkdir", "p.kraddon", "e"), ("remove", "p.kraddon", "a.m"),
                      ("set", "p.kraddon", "license", "type=MIT", "text=x")):
            result = self.run_kraddon(*words)
            self.assertEqual((result.code, result.errors), (0, f"kraddon: {words[0]}: warning: "
                             "package 'p.kraddon': its signature is no longer valid\n"))
        self.assertIn("KR601", self.findings())

    def test_changes_that_leave_everything_as_it_was_signed_say_nothing(self):
        self.sign()
        before = self.path("p.kraddon").read_bytes()
        self.ok("add", "p.kraddon", "src/a.m", "--replace", "--level", "0")
        self.assertNotEqual(self.path("p.kraddon").read_bytes(), before)
        self.ok("signatures", "p.kraddon")

    def test_changes_that_restore_what_was_signed_say_nothing(self):
        self.sign()
        self.write("c.m", "c")
        for harm, cure in ((("add", "p.kraddon", "c.m"), ("remove", "p.kraddon", "c.m")),
                           (("remove", "p.kraddon", "a.m"), ("add", "p.kraddon", "src/a.m")),
                           (("mv", "p.kraddon", "a.m", "b.m"), ("mv", "p.kraddon", "b.m", "a.m"))):
            self.assertIn("no longer valid", self.run_kraddon(*harm).errors)
            self.ok(*cure)
            self.ok("signatures", "p.kraddon")

    def test_signatures_that_cannot_be_judged_count_as_broken(self):
        self.sign()
        name, = signing.signature_names(self.path("p.kraddon"))
        signing.rewrite(self.path("p.kraddon"), lambda e: e.update(
            {name: e[name].replace(b"rsa-sha256", b"rsa-md5")}))
        self.assertIn("unsupported", self.run_kraddon("signatures", "p.kraddon").text)
        result = self.run_kraddon("add", "p.kraddon", "src/a.m", "--replace")
        self.assertIn("its signature is no longer valid", result.errors)

    def test_gateways_read_and_change_a_signed_package(self):
        self.sign()
        before = self.ok("call", "addonGetFileList", "p.kraddon").text
        self.assertIn("größe.m", before)
        self.ok("call", "addonSetLicense", "p.kraddon", '{"type": "MIT", "text": "x"}')
        self.assertEqual(self.ok("call", "addonGetFileList", "p.kraddon").text, before)
        self.assertIn("KR601", self.findings())


class Libraries(SignTest):
    """Those for signatures are loaded only where signatures are made or checked, which changes of a
    signed package do."""

    def loaded_by(self, *words):
        """Whether the program loads a library for signatures."""
        folder = self.path("loaded")
        folder.mkdir()
        self.run_kraddon(*words, env={"LD_DEBUG": "files", "LD_DEBUG_OUTPUT": str(folder / "log")})
        text = "".join(log.read_text() for log in folder.iterdir())
        shutil.rmtree(folder)
        self.assertIn("calling init: ", text)
        return [name for name in ("xmlsignatures", "xmlsec", "libxml2", "libssl")
                if f"{name}.so" in text or f"/lib{name}" in text]

    def test_are_not_loaded_for_other_work(self):
        shutil.copy(self.path("p.kraddon"), self.path("s.kraddon"))
        self.sign(package="s.kraddon")
        for words in (("--version",), ("verify", "p.kraddon"),
                      ("call", "addonGetFileList", "p.kraddon"),
                      ("call", "addonSetLicense", "s.kraddon", '{"type": "MIT", "text": "x"}'),
                      ("list", "s.kraddon"), ("info", "s.kraddon"), ("diff", *["s.kraddon"] * 2),
                      ("extract", "s.kraddon", "-d", "out"), ("mkdir", "p.kraddon", "d"),
                      ("unsign", "s.kraddon")):
            self.assertEqual(self.loaded_by(*words), [], words)

    def test_are_loaded_for_signatures(self):
        self.sign()
        for words in (("verify", "p.kraddon"), ("signatures", "p.kraddon"),
                      ("sign", "p.kraddon", *signing.words()), ("mkdir", "p.kraddon", "d")):
            self.assertIn("xmlsec", self.loaded_by(*words), words)


class Keys(SignTest):

    def test_an_encrypted_key_needs_its_passphrase(self):
        key = self.keys / "encrypted.key"
        signing.openssl("pkcs8", "-topk8", "-in", "rsa.key", "-out", key, "-passout", "pass:sesame")
        key.chmod(0o600)
        words = ("--key", str(key), *signing.words()[2:])
        self.fails("sign", "p.kraddon", *words,
                   message=f"cannot use key '{key}': it is encrypted, and no passphrase was given",
                   hint="--passphrase-file or KRADDON_PASSPHRASE gives it")
        result = self.fails("sign", "p.kraddon", *words, env={"KRADDON_PASSPHRASE": "swordfish"})
        self.assertNotIn("swordfish", result.errors)
        self.assert_unchanged()
        self.sign(*words, env={"KRADDON_PASSPHRASE": "sesame"})
        file = self.keys / "passphrase"
        file.write_text("sesame\n")
        file.chmod(0o600)
        self.sign(*words, "--passphrase-file", str(file))

    def test_traditional_keys_are_read(self):
        signing.openssl("pkey", "-in", "rsa.key", "-traditional", "-out", "traditional.key")
        (self.keys / "traditional.key").chmod(0o600)
        self.sign("--key", str(self.keys / "traditional.key"), *signing.words()[2:])

    def test_pkcs12_holds_key_and_chain(self):
        store = self.keys / "maker.p12"
        signing.openssl("pkcs12", "-export", "-inkey", "rsa.key", "-in", "rsa.crt", "-certfile",
                        "intermediate.crt", "-out", store, "-passout", "pass:sesame")
        store.chmod(0o600)
        words = ("--pkcs12", str(store), "--timestamp", str(signing.NOW))
        self.fails("sign", "p.kraddon", *words, env={"KRADDON_PASSPHRASE": "swordfish"})
        self.sign(*words, env={"KRADDON_PASSPHRASE": "sesame"})
        self.assertEqual(self.findings(*signing.trust("root")), [])

    def test_exposed_keys_get_a_warning(self):
        key = self.keys / "exposed.key"
        shutil.copy(self.keys / "rsa.key", key)
        for mode, is_exposed in ((0o644, True), (0o640, True), (0o600, False), (0o400, False)):
            key.chmod(mode)
            result = self.run_kraddon("sign", "p.kraddon", "--key", str(key), *signing.words()[2:])
            self.assertEqual(result.code, 0)
            self.assertEqual(result.errors, is_exposed * (
                f"kraddon: sign: warning: file '{key}': other users may read it; 'chmod 600' keeps "
                "it to its owner\n"))

    def test_unusable_keys_and_certificates_are_refused(self):
        for key, certificate, why in (
                ("weak", "weak", "its RSA key has 1024 bits, fewer than 2048"),
                ("k1", "k1", "the curve of its key is not P-256, P-384 or P-521"),
                ("rsa", "p256", "it does not match the certificate"),
                ("exchange", "exchange", "it is not for signatures"),
                ("expired", "expired", "it is valid from 2026-01-01T00:00:00Z to "
                                       "2026-02-01T00:00:00Z, but not at 2027-01-15T08:00:00Z")):
            result = self.fails("sign", "p.kraddon", *signing.words(key, certificate))
            self.assertIn(why, result.errors)
            self.assert_unchanged()

    def test_files_that_are_not_keys_are_refused(self):
        self.write("../none", "")
        for words in (("--key", "src/a.m", "--certificate", signing.words()[3]),
                      ("--key", signing.words()[1], "--certificate", "src/a.m"),
                      ("--pkcs12", "src/a.m"), ("--key", "none", "--certificate", "none")):
            self.path("src/a.m").chmod(0o600)
            self.fails("sign", "p.kraddon", *words)
            self.assert_unchanged()

    def test_wrong_options_are_wrong_usage(self):
        for words, message in (
                ((), "missing option '--key': a signature needs --key and --certificate, or "
                     "--pkcs12"),
                (("--key", "k"), "missing option '--certificate': a signature needs --key and "
                                 "--certificate, or --pkcs12")):
            self.misused("sign", "p.kraddon", *words, message=message)
        self.assertEqual(self.run_kraddon("sign", "p.kraddon", "--pkcs12", "a", "--key", "b").code,
                         2)


class Refused(SignTest):

    def test_a_package_with_an_error_is_refused(self):
        self.ok("set", "p.kraddon", "license", "type=MIT", "text=x")
        signing.rewrite(self.path("p.kraddon"),
                        lambda e: e.update({"metadata/license.xml": b"<broken"}))
        self.original = self.path("p.kraddon").read_bytes()
        result = self.run_kraddon("sign", "p.kraddon", *signing.words())
        self.assertEqual(result.code, 1)
        self.assertIn("p.kraddon: error KR301: /metadata/license.xml", result.errors)
        self.assertIn("kraddon: sign: cannot sign 'p.kraddon': it has 1 error\n", result.errors)
        self.assertNotIn("hint", result.errors)
        self.assert_unchanged()

    def test_a_broken_signature_is_refused_until_it_is_taken_away(self):
        self.sign()
        signing.rewrite(self.path("p.kraddon"), lambda e: e.update({"files/a.m": b"changed"}))
        result = self.run_kraddon("sign", "p.kraddon", *signing.words())
        self.assertEqual(result.code, 1)
        self.assertIn("hint: 'kraddon unsign' removes its signatures\n", result.errors)
        self.ok("unsign", "p.kraddon")
        self.sign()
        self.assertEqual(self.findings(), ["KR609"])

    def test_an_item_that_is_not_a_part_is_refused(self):
        signing.rewrite(self.path("p.kraddon"), lambda e: e.update({"other/x.q": b"?"}))
        self.original = self.path("p.kraddon").read_bytes()
        result = self.fails("sign", "p.kraddon", *signing.words())
        self.assertIn("cannot sign '/other/x.q': it has no content type, so it is not a part",
                      result.errors)
        self.assert_unchanged()


class Unsigning(SignTest):

    def test_unsign_gives_back_the_package_as_it_was(self):
        self.sign()
        self.sign(*signing.words("p256"))
        self.ok("unsign", "p.kraddon", "--timestamp", str(signing.NOW))
        self.assert_unchanged()

    def test_signatures_says_that_a_package_is_not_signed(self):
        self.fails("signatures", "p.kraddon", message="package 'p.kraddon': it is not signed")
        result = self.run_kraddon("signatures", "p.kraddon", "--json")
        self.assertEqual((result.code, result.errors, result.json["signatures"]), (1, "", []))

    def test_a_package_without_signature_is_not_touched(self):
        os.utime(self.path("p.kraddon"), (0, 0))
        self.ok("unsign", "p.kraddon")
        self.assert_unchanged()
        self.assertEqual(os.stat(self.path("p.kraddon")).st_mtime, 0)

    def test_parts_of_the_add_on_stay_whatever_leads_to_them(self):
        self.sign()

        def redirect(e):
            e["_rels/.rels"] = e["_rels/.rels"].replace(b"/" + signing.ORIGIN.encode(),
                                                        b"/files/a.m")
        signing.rewrite(self.path("p.kraddon"), redirect)
        self.ok("unsign", "p.kraddon")
        self.assertEqual(self.ok("list", "p.kraddon").text.splitlines(),
                         ["a.m", "empty", "größe.m", "lib/b b.m"])
        self.assertEqual(self.findings(), [])


if __name__ == "__main__":
    kraddontest.main()
