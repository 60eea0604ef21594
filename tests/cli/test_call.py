# SPDX-License-Identifier: MIT
"""kraddon call: the shared library, driven as the host drives it."""

import json
import shutil
import subprocess

import kraddontest
from kraddontest import KRADDON

PROPERTIES = {"type": "Korvan Toolbox", "name": "[Wave]", "version": "1", "KorvanRelease": "",
              "summary": "", "authorName": "", "authorContact": "", "authorOrganization": "",
              "GUID": "g", "description": ""}


class Call(kraddontest.CliTest):

    def create(self):
        self.ok("call", "addonCreatePackage", "p.kraddon", json.dumps(PROPERTIES))

    def test_a_package_is_made_and_read(self):
        self.create()
        result = self.ok("call", "addonGetProperties", "p.kraddon").json
        self.assertEqual(result, dict(PROPERTIES, KorvanRelease="R2047b"))
        self.assert_sound()

    def test_lists_of_texts_arrive_whole(self):
        self.create()
        self.write("a.txt", "one")
        self.write("b.txt", "two")
        self.ok("call", "addonAddFiles", "p.kraddon", '["a.txt","b.txt"]', '["x/a","[y]"]')
        self.ok("call", "addonAddFolders", "p.kraddon", '["e"]')
        self.ok("call", "addonAddFiles", "p.kraddon", "[]", "[]")
        self.assertEqual(self.ok("call", "addonGetFileList", "p.kraddon").text,
                         '["[y]","e","x/a"]\n')
        self.ok("call", "addonExtractAllFiles", "p.kraddon", "out")
        self.assertEqual(self.path("out/x/a").read_text(), "one")

    def test_an_empty_list_is_printed(self):
        self.create()
        self.assertEqual(self.ok("call", "addonGetFileList", "p.kraddon").text, "[]\n")

    def test_arguments_come_from_files_and_input(self):
        self.write("p.json", json.dumps(PROPERTIES))
        self.ok("call", "addonCreatePackage", "p.kraddon", "@p.json")
        self.ok("call", "addonCreatePackage", "q.kraddon", "@-",
                stdin=json.dumps(PROPERTIES).encode())
        self.assertEqual(self.names(), ["p.json", "p.kraddon", "q.kraddon"])
        self.fails("call", "addonCreatePackage", "p.kraddon", "@none.json",
                   message="cannot read 'none.json': No such file or directory")
        self.write("bad.json", "not json")
        result = self.fails("call", "addonCreatePackage", "p.kraddon", "@bad.json")
        self.assertTrue(result.errors.startswith(
            "kraddon: call: bad argument '@bad.json': parse error"))

    def test_an_output_left_unset_prints_nothing(self):
        self.write("text.kraddon", "no package")
        self.assertEqual(self.ok("call", "addonGetProperties", "text.kraddon").out, b"")
        self.assertEqual(self.ok("call", "addonGetFileList", "missing").out, b"")

    def test_host_errors_are_printed(self):
        self.fails("call", "addonGetFileList",
                   message="Korvan:notEnoughInputs: Not enough input arguments.")
        self.fails("call", "addonGetFileList", "a", "b",
                   message="Korvan:tooManyInputs: Too many input arguments.")
        self.fails("call", "addonGetFileList", "a", "--nlhs", "2",
                   message="Korvan:tooManyOutputs: Too many output arguments.")
        result = self.fails("call", "addonGetFileList", "12")
        self.assertIn("kraddon: call: Korvan:notText: ", result.errors)
        result = self.fails("call", "addonCreatePackage", "p.kraddon", '{"type": null}')
        self.assertIn("kraddon: call: Korvan:missingValue: ", result.errors)

    def test_a_reader_called_for_no_output_still_gives_one(self):
        self.create()
        self.assertEqual(self.ok("call", "--nlhs", "0", "addonGetFileList", "p.kraddon").text,
                         "[]\n")

    def test_bad_arguments_are_named(self):
        self.fails("call", "addonCreatePackage", "p", "null",
                   message="bad argument '2': null is allowed only as a field of a struct")
        self.fails("call", "addonCreatePackage", "p", '{"a": 1, "a": 2}',
                   message="bad argument '2': .a: it is given twice")
        self.fails("call", "addonCreatePackage", "p", '{"x": [{"a": 1}, {"b": 1}]}',
                   message="bad argument '2': .x[1]: the field 'b' is not one of the first "
                           "element")
        self.fails("call", "addonGetFileList", b"caf\xe9",
                   message="bad argument '1': it is not UTF-8")

    def test_half_a_character_is_refused(self):
        for text in ('"\\ud800"', '["a", "\\udc00x"]', '{"text": "\\ud83c"}'):
            result = self.fails("call", "addonSetLicense", "p.kraddon", text)
            self.assertIn("kraddon: call: bad argument '2': ", result.errors)
            self.assertIn("surrogate", result.errors)

    def test_words_are_taken_as_they_are(self):
        self.ok("call", "addonGetFileList", "--", "--nlhs")
        result = self.fails("call", "addonGetFileList", "-5")
        self.assertIn("Korvan:notText", result.errors)
        for text in ("[1,2", "{}x", "++", "%%", "a b", ""):
            self.assertEqual(self.run_kraddon("call", "addonGetFileList", text).code, 0, text)

    def test_unknown_gateways_are_wrong_usage(self):
        self.misused("call", "addonGetFilelist", "p",
                     message="unknown gateway 'addonGetFilelist': did you mean "
                             "'addonGetFileList'?")
        self.misused("call", "6", "p", message="unknown gateway '6': 'kraddon help call' lists "
                                               "the gateways")
        self.misused("call", "addonGetFileList", "p", "--nlhs", "-1",
                     message="bad value of --nlhs '-1': expected a whole number from 0 to 64")

    def test_the_library_can_be_named(self):
        self.create()
        library = KRADDON.replace("/bin/kraddon", "/lib/libkraddon_packaging.so")
        shutil.copy(library, self.path("copy.so"))
        self.assertEqual(self.ok("call", "addonGetFileList", "p.kraddon", "--library",
                                 "copy.so").text, "[]\n")
        self.fails("call", "addonGetFileList", "p", "--library", "none.so",
                   message="cannot load './none.so': cannot open shared object file: No such file "
                           "or directory")
        other = KRADDON.replace("/bin/kraddon", "/lib/libkxarray.so")
        self.fails("call", "addonGetFileList", "p", "--library", other,
                   message=f"cannot use '{other}': it has no QueryKRFcnTable_kraddon_packaging")

    def test_the_library_is_found_without_the_link_in_proc(self):
        self.create()
        # Started like this, the loader is what the link /proc/self/exe names.
        loader = "/lib64/ld-linux-x86-64.so.2"

        result = self.ok("call", "addonGetFileList", "p.kraddon", prefix=[loader])

        self.assertEqual(result.text, "[]\n")

    def test_a_library_in_the_current_folder_is_not_loaded(self):
        self.create()
        library = KRADDON.replace("/bin/kraddon", "/lib/libodd_gateways.so")
        shutil.copy(library, self.path("libkraddon_packaging.so"))

        self.assertEqual(self.ok("call", "addonGetFileList", "p.kraddon").text, "[]\n")

    def test_an_empty_library_path_is_refused(self):
        self.create()
        self.misused("call", "addonGetFileList", "p.kraddon", "--library", "",
                     message="bad value of --library '': the path is empty")

    def test_without_a_gateway_the_hint_says_where_they_are_listed(self):
        result = self.misused("call", message="missing operand 'GATEWAY': the name of a gateway")
        self.assertEqual(result.errors.splitlines()[1], "hint: 'kraddon help call' lists them")
        for name in ("addonCreatePackage", "addonGetSystemRequirements"):
            self.assertIn(name, self.ok("help", "call").text)

    def test_a_library_of_another_kind_is_used_as_far_as_it_goes(self):
        library = KRADDON.replace("/bin/kraddon", "/lib/libodd_gateways.so")
        self.fails("call", "addonGetFileList", "p", "--library", library,
                   env={"KRADDON_SHORT_TABLE": "1"},
                   message=f"cannot use '{library}': its table lacks gateways")
        self.fails("call", "addonGetFileList", "p", "--library", library,
                   message="cannot print 'the output': the array is more than 256 levels deep")

    def test_license_goes_in_and_out(self):
        self.create()
        value = '{"type":"MIT","text":"a\\nb"}'
        self.ok("call", "addonSetLicense", "p.kraddon", value)
        self.assertEqual(self.ok("call", "addonGetLicense", "p.kraddon").text, value + "\n")


    def test_calls_that_change_one_package_wait_for_each_other(self):
        self.create()
        calls = [subprocess.Popen([KRADDON, "call", "addonAddFolders", "p.kraddon", f'["d{i}"]'],
                                  cwd=self.folder, env=self.environment()) for i in range(12)]
        self.assertEqual([call.wait(timeout=120) for call in calls], [0] * 12)
        self.assertEqual(self.ok("call", "addonGetFileList", "p.kraddon").json,
                         sorted(f"d{i}" for i in range(12)))


if __name__ == "__main__":
    kraddontest.main()
