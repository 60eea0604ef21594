# SPDX-License-Identifier: MIT
"""Names of items as hostile hands could choose them."""

ENDS = (b".", b" ", b";1", b"/", b"//", b"/.", b"/..", b"\0", b"\0.txt", b":", b"::$DATA", b"\\",
        b"\n", b"\r", b"\t", b"%00", b"%2e", b"%2F", b"%5C", b"~1", b"?", b"*", b'"', b"<", b"|",
        b"\x7f", b"\xc2\x85", b"\xe2\x80\xae", b"\xef\xbb\xbf", b"#", b"&", b"'", b"$HOME", b"`")
BEGINNINGS = (b"/", b"//", b"./", b"././", b"../", b"../../", b"x/../", b"\\", b".\\", b"..\\",
              b"C:", b"C:/", b"c:\\", b"//server/share/", b"\\\\?\\C:\\", b"file:///", b"~/", b"-",
              b"--", b"@", b" ", b"\0", b"%2e%2e/", b"%2F", b"\xef\xbb\xbf", b"__MACOSX/",
              b"%66iles/", b"FILES/")
LETTERS = (b"\xe9", b"\xc3\xa9", b"e\xcc\x81", b"\xff", b"\x82", b"\xc3", b"\xed\xa0\x80",
           b"\xf0\x9f\x98\x80", b"\xc5\xbf", b"\xe2\x84\xaa", b"\xc0\xaf", b"%C3%A9", b"%e9",
           b"%41", b"%6D", b"%", b"%zz", b"+", b" ", b"\\", b"\\..\\", b"/../", b"//", b"/./",
           b"\x1b[31m", b"CON", b"aux.m", b"nul")
WHOLE = (b"", b".", b"..", b"/", b"//", b"./", b"\\", b"files", b"files/", b"files//a.m",
         b"files\\a.m", b"files/./a.m", b"./files/a.m", b"/files/a.m", b"x/../files/a.m",
         b"files/a.m/", b"files/a.m/x.m", b"files/lib", b"files.", b"FILES/a.m", b"Files/new.m",
         b"files/new.m", b"files /new.m", b"files./new.m", b"C:files/new.m", b"new.m", b"new.txt",
         b"[Content_Types].xml", b"[content_types].xml", b"_rels/.rels", b"_RELS/.rels",
         b"[trash]/1.dat", b"files/x.m/[0].piece", b"files/x.m/[0].last.piece",
         b"metadata/fileTree/9", b"files/_rels/a.m.rels", b"META-INF/MANIFEST.MF", b"mimetype",
         b"a" * 255, b"a" * 256, b"files/" + b"d/" * 200 + b"x.m", b"files/" + b"n" * 250 + b".m")


def _inserted(name, pick):
    at = pick.randrange(len(name) + 1)
    return name[:at] + pick.choice(LETTERS) + name[at:]


def _other_case(name, pick):
    at = pick.randrange(len(name)) if name else 0
    return name[:at] + name[at:at + 1].swapcase() + name[at + 1:]


def _swapped_slash(name, _pick):
    return name.replace(b"/", b"\\", 1)


def changed(name, others, pick):
    """Another name instead of `name`, among `others`."""
    kind = pick.randrange(9)
    if kind == 0:
        return pick.choice(WHOLE)
    if kind == 1:
        return pick.choice(others)
    if kind == 2:
        return _other_case(pick.choice(others), pick)
    if kind == 3:
        return _swapped_slash(pick.choice(others), pick)
    if kind == 4:
        return pick.choice(BEGINNINGS) + name
    if kind == 5:
        return pick.choice(BEGINNINGS) + pick.choice(others)
    if kind == 6:
        return pick.choice(others) + pick.choice(ENDS)
    if kind == 7:
        return name + pick.choice(ENDS)
    return _inserted(name, pick)
