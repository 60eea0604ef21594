# SPDX-License-Identifier: MIT
"""The inputs of make_corpus.py that are text."""

HEAD = '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
SCHEMAS = "http://schemas.openxmlformats.org/package/2006/"
ROOT = "http://schemas.pellandry.example/korvan/addon/2014/"
MC = "http://schemas.openxmlformats.org/markup-compatibility/2006"
RELS = "application/vnd.openxmlformats-package.relationships+xml"


def types(*entries):
    return f'{HEAD}<Types xmlns="{SCHEMAS}content-types">{"".join(entries)}</Types>'


def default(extension, content_type):
    return f'<Default Extension="{extension}" ContentType="{content_type}"/>'


def override(name, content_type):
    return f'<Override PartName="{name}" ContentType="{content_type}"/>'


_NORMAL = [default("rels", RELS), default("m", "text/plain"),
           override("/files/README", "application/octet-stream")]

CONTENT_TYPES = {
    "empty.xml": types(),
    "usual.xml": types(*_NORMAL),
    "case.xml": types(default("PNG", "image/png"), override("/A/B.Png", "Image/X-Png")),
    "parameters.xml": types(default("txt", 'text/plain ; charset=utf-8; a=&quot;b \\&quot; c&quot;')),
    "names-outside-ascii.xml": types(override("/größe/%E6%97%A5.m", "text/plain")),
    "double-default.xml": types(default("a", "a/b"), default("A", "a/b")),
    "double-override.xml": types(override("/a", "a/b"), override("/A", "a/b")),
    "foreign-element.xml": types('<x:y xmlns:x="urn:x"/>'),
    "prefixed.xml": f'<t:Types xmlns:t="{SCHEMAS}content-types"><!-- c --><?p i?>'
                    '<t:Default Extension="m" ContentType="a/b"></t:Default></t:Types>',
    "entities.xml": types(default("&#x6D;&amp;", "a/b&#10;"), override("/&#65;.x", "a/b")),
    "type-fault.xml": types(default("m", "text")),
    "name-fault.xml": types(override("/a/../b", "a/b")),
    "utf-16.xml": types(*_NORMAL).replace("UTF-8", "UTF-16").encode("utf-16"),
    "mark.xml": b"\xef\xbb\xbf" + types(*_NORMAL).encode(),
    "document-type.xml": "<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>",
}


def relationship(rid, target, kind="urn:t", more=""):
    return f'<Relationship Id="{rid}" Type="{kind}" Target="{target}"{more}/>'


def relationships(*entries, root=""):
    return (f'{HEAD}<Relationships xmlns="{SCHEMAS}relationships"{root}>'
            f'{"".join(entries)}</Relationships>')


_OUT = ' TargetMode="External"'
_CORE = SCHEMAS + "relationships/metadata/core-properties"

RELATIONSHIPS = {
    "empty.xml": (0, relationships()),
    "usual.xml": (0, relationships(relationship("rId1", "/metadata/coreProperties.xml", _CORE),
                                   relationship("rId2", "metadata/license.xml", ROOT + "license"))),
    "external.xml": (0, relationships(relationship("a", "http://a/ b?c#d", more=_OUT),
                                      relationship("b", "", more=_OUT))),
    "relative.xml": (2, relationships(relationship("a", "../x.xml"), relationship("b", "y#f"),
                                      relationship("c", ""), relationship("d", "./../../../z"))),
    "corrected.xml": (1, relationships(relationship("a", "a\\b c%41.xml?q=1#f"))),
    "line-ends.xml": (0, relationships(relationship(" a ", "&#9;/a&#10;", " urn:&#13;t&#10; "))),
    "two-core-properties.xml": (0, relationships(relationship("a", "a", _CORE),
                                                 relationship("b", "b", _CORE))),
    "double-id.xml": (0, relationships(relationship("a", "a"), relationship("a", "b"))),
    "taken-ids.xml": (0, relationships(relationship("rId1", "a"), relationship("rId3", "b"),
                                       relationship("rId18446744073709551615", "c"))),
    "to-relationships.xml": (0, relationships(relationship("a", "/_rels/.rels"))),
    "absolute.xml": (0, relationships(relationship("a", "file:///etc/x"))),
    "host.xml": (0, relationships(relationship("a", "//host/x"))),
    "ignorable.xml": (0, relationships(
        '<x:y z="1"><x:w/></x:y>', relationship("a", "a", more=' x:v="1"'),
        root=f' xmlns:mc="{MC}" xmlns:x="urn:x" mc:Ignorable="x" mc:ProcessContent="x:y"')),
    "alternatives.xml": (0, relationships(
        '<mc:AlternateContent><mc:Choice Requires="x">' + relationship("a", "a") +
        "</mc:Choice><mc:Fallback>" + relationship("b", "b") +
        "</mc:Fallback></mc:AlternateContent>", root=f' xmlns:mc="{MC}" xmlns:x="urn:x"')),
    "must-understand.xml": (0, relationships(
        root=f' xmlns:mc="{MC}" xmlns:x="urn:x" mc:MustUnderstand="x"')),
}

CORE_NAMESPACES = (f'xmlns:cp="{SCHEMAS}metadata/core-properties" '
                   'xmlns:dc="http://purl.org/dc/elements/1.1/" '
                   'xmlns:dcterms="http://purl.org/dc/terms/" '
                   'xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"')


def core(*entries):
    return f'{HEAD}<cp:coreProperties {CORE_NAMESPACES}>{"".join(entries)}</cp:coreProperties>'


def created(text, kind="dcterms:W3CDTF", name="created"):
    return f'<dcterms:{name} xsi:type="{kind}">{text}</dcterms:{name}>'


CORE_PROPERTIES = {
    "empty.xml": core(),
    "usual.xml": core("<dc:creator>Ada Lind</dc:creator>", "<dc:title>Signal Kit</dc:title>",
                      "<cp:version>1.2</cp:version>", created("2026-02-02T02:40:00Z"),
                      created("2026-02-02T02:40:00.5+13:59", name="modified")),
    "all-texts.xml": core(
        *(f"<cp:{n}>{n} &lt;&#13;&#10;</cp:{n}>" for n in
          ("category", "contentStatus", "contentType", "lastModifiedBy", "revision")),
        *(f"<dc:{n}> {n}\t</dc:{n}>" for n in
          ("description", "identifier", "language", "subject"))),
    "dates.xml": core(created("2024"), created(" 2024-02 ", name="modified"),
                      "<cp:lastPrinted>2024-02-29T23:59:60Z</cp:lastPrinted>"),
    "date-only.xml": core("<cp:lastPrinted>1400-01-01</cp:lastPrinted>", created("9999-12-31")),
    "date-empty.xml": core(created("")),
    "date-limits.xml": core(created("9999-12-31T23:59:59-14:00"),
                            created("1400-01-01T00:00:00+14:00", name="modified")),
    "date-fault.xml": core(created("2023-02-29")),
    "type-other-prefix.xml": core('<dcterms:created xmlns:d="http://purl.org/dc/terms/" '
                                  'xsi:type="d:W3CDTF">2024</dcterms:created>'),
    "keywords.xml": core('<cp:keywords xml:lang="de">a <cp:value xml:lang="en">b</cp:value>'
                         "<!-- c -->d<![CDATA[<e>]]> <cp:value/></cp:keywords>"),
    "keywords-empty.xml": core("<cp:keywords/>"),
    "double.xml": core("<dc:title/>", "<dc:title/>"),
    "unknown.xml": core("<dcterms:issued/>"),
    "nested.xml": core("<dc:title><dc:title/></dc:title>"),
    "compatibility.xml": core(f'<dc:title xmlns:mc="{MC}">a</dc:title>'),
}


def document(name, body):
    return f'{HEAD}<{name} xmlns="{ROOT}{name}">{body}</{name}>'


DOCUMENTS = {
    "properties-full.xml": (0, document(
        "addonProperties", '<identifier type="GUID">0f8fad5b-d9cb-469f-a165-70867728950e'
        "</identifier><description>Curves &amp; f(a) &lt; b, 😀.</description><authors><author>"
        "<name>Ada Müller</name><contact>ada@example.org</contact><organization/></author>"
        "<author/></authors>")),
    "properties-bare.xml": (0, document("addonProperties", "")),
    "license-full.xml": (1, document(
        "license", '<licenseText type="&quot;MIT&quot; &#9;&#10;&#13;">Line 1\n\tLine 2&#13;\n'
        "<![CDATA[<&]]></licenseText>")),
    "license-parts.xml": (1, "<license><licenseText>a<!-- b -->c<?d e?>f<g>h</g></licenseText>"
                             "<licenseText type='x'/></license>"),
    "configuration-full.xml": (2, document(
        "configuration", "<korvanPaths><korvanPath>/</korvanPath><korvanPath/></korvanPaths>"
        "<javaClassPaths><javaClassPath>lib/日本 😀.jar</javaClassPath></javaClassPaths>")),
    "configuration-repeated.xml": (2, "<a><korvanPaths/><korvanPaths><korvanPath>b</korvanPath>"
                                      "</korvanPaths></a>"),
    "applications-full.xml": (3, document(
        "applications", '<application name="Curve &lt;1&gt;" guid="g-1" installByDefault="true">'
        '<file>apps/fit &amp; go.app</file></application><application name="" guid="g-1" '
        'installByDefault="TRUE"><file/></application><application/>')),
    "examples-full.xml": (4, document(
        "examples", '<exampleCategory name="First"><example name="Größe" type="script">'
        '<file type="source">ex/one.mlx</file><file type="main">ex/one.m</file>'
        '<file type="thumbnail">ex/one.png</file><file type="image">ex/a.png</file>'
        '<file type="image"/><file type="other">x</file></example><example/></exampleCategory>'
        '<exampleCategory name=""/>')),
    "revisions-full.xml": (5, document(
        "revisionHistory", '<revision date="the day after" version="2.0-β"><description>Two:\n'
        '\ta &lt; b</description></revision><revision date="2015-13-45"/>')),
    "requirements-full.xml": (6, document(
        "systemRequirements", '<requiredProducts><product name="K" version="9.1" identifier="KV"/>'
        "</requiredProducts><requiredSupportPackages><supportPackage name='USB \"3\"' "
        'version="any" identifier="SP-1"/></requiredSupportPackages>')),
    "requirements-prefixed.xml": (6, '<x:r xmlns:x="urn:x"><x:requiredProducts><x:product x:name="'
                                     'a" name="b"/></x:requiredProducts></x:r>'),
    "version-1.1.xml": (1, '<?xml version="1.1"?><license><licenseText>&#1;\x85</licenseText>'
                           "</license>"),
    "not-well-formed.xml": (1, "<license><licenseText></license>"),
}

# Two names, on a line each.
PART_NAMES = {
    "plain": "/files/a.m\n/files/A.M",
    "outside-ascii": "/größe/日本.m\n/gr%c3%b6%C3%9Fe/%E6%97%A5%E6%9C%AC.m",
    "relationships": "/a/_rels/b.xml.rels\n/_rels/.rels",
    "nearly-relationships": "/a/_RELS/b.Rels\n/_rels/a/b.rels",
    "dot-at-end": "/a./b\n/a/.",
    "empty-segment": "/a//b\n/",
    "escaped-slash": "/a%2Fb\n/a%5cb",
    "needless-escape": "/a%41\n/a%7e",
    "broken-escape": "/a%4\n/a%zz",
    "no-utf-8": b"/a\xff\n/\xc0\x80",
    "reserved": "/a!$&'()*+,;=:@-._~/b\n/a b",
    "relative-target": "/a/b/c.xml\n../d.xml#f",
    "corrected-target": "/a/b.xml\nc\\d e%41?q",
    "climbing-target": "/a/b.xml\n../../../x/./y/../z",
    "target-to-itself": "/a/b.xml\n#f",
    "scheme": "/a:b\na:b",
    "host": "//a/b\n//a/b",
    "prefix": "/files/a\n/FILES/",
    "planes": "/\U0001F600\n/\uE000",
}

HOST_JSON = {
    "text.json": '"a \\u0000 \\ud83d\\ude00 \\n"',
    "lone-surrogate.json": '{"$class":"char","size":[1,1],"elements":["\\ud800"]}',
    "numbers.json": "[0, -0.0, 1e308, 5e-324, 0.1, 18446744073709551615, -9223372036854775808]",
    "struct.json": '{"name": "a", "flag": true, "unset": null, "inner": {"x": []}}',
    "struct-array.json": '[{"a": 1, "b": "x"}, {"b": null, "a": [{}]}]',
    "cells.json": '["a", [], [1, [2, {"b": false}]]]',
    "class-struct.json": '{"$class":"struct","size":[2,1],"fields":["a","$class"],'
                         '"elements":[{"a":1},{"$class":"x"}]}',
    "class-cell.json": '{"$class":"cell","size":[1,2],"elements":[null,{"$class":"cell",'
                       '"size":[1,1],"elements":[{}]}]}',
    "class-char.json": '{"$class":"char","size":[3,1],"elements":["ab","c"]}',
    "class-double.json": '{"$class":"double","size":[2,3],"elements":[1,"NaN","Infinity",'
                         '"-Infinity",-0.0,2e9]}',
    "class-empty.json": '{"$class":"struct","size":[0,0,18446744073709551615],"fields":["a"],'
                        '"elements":[]}',
    "class-too-large.json": '{"$class":"double","size":[4294967296,4294967296],"elements":[]}',
    "one-size.json": '{"$class":"double","size":[2],"elements":[1,2]}',
    "double-member.json": '{"a":[{"b":1,"b":2}]}',
    "too-deep.json": "[" * 257 + "]" * 257,
    "as-deep-as-may-be.json": "[" * 256 + "]" * 256,
    "empty-name.json": '{"": 1}',
    "number-too-large.json": "[1e999]",
    "not-json": "[1,",
}

_LEAST = '[package]\nname = "Wave"\nversion = "1.0"\n'

MANIFEST = {
    "least.toml": _LEAST,
    "full.toml": _LEAST + """\
type = "Korvan Toolbox"
description = '''
Lines of ''text''
and more\\'''
guid = "6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f"
[license]
text = \"\"\"\\
  a \\u00e4 \\"\"\"b\"\"\"\"\"
[configuration]
korvan-paths = [".", # the top
  "lib",]
[[app]]
name = "V"
file = "v.m"
install-by-default = false
[[category]]
name = "C"
[[category.example]]
name = "E"
images = ["a.png"]
[[revision]]
version = "1.0"
date = 2026-02-01
[[requirements.support-package]]
name = "S"
[files]
add = [{from = "a", to = "b"}]
exclude = ["!x"]
[build]
output = "{name}/{version}"
level = 9
[verify]
strict = true
ignore = ["KR506:docs/**"]
""",
    "dotted.toml": "package.name = \"a\"\n\"package\" . 'version' = \"1\"\n",
    "float.toml": '[package]\nname = "a"\nversion = 1.10\n',
    "date-with-time.toml": _LEAST + '[[revision]]\nversion = "1"\ndate = 2026-02-01T10:00:00Z\n',
    "unknown-key.toml": _LEAST + "sumary = 1\n",
    "missing-key.toml": "[package]\n",
    "control-character.toml": _LEAST + 'summary = "\\u0007"\n',
    "placeholder.toml": _LEAST + '[build]\noutput = "{nam}"\n',
    "many-parts.toml": ".".join("a" * 40) + " = 1\n",
    "nested.toml": "a = " + "[" * 300,
    "no-utf-8.toml": b'a = "\xff"\n',
    "byte-order-mark.toml": "\ufeff" + _LEAST,
}
