# SPDX-License-Identifier: MIT
"""The table of keys in docs/manifest.md, from the schema of the manifest.

    kraddon schema manifest | python3 scripts/manifest_table.py docs/manifest.md

writes it into the page anew.
"""

import json
import pathlib
import sys

HEAD = "| key | without it | what it is |\n|---|---|---|\n"


def value_without(key, schema, is_required):
    if is_required:
        return "*required*"
    if "default" in schema:
        return f"`{json.dumps(schema['default'])}`"
    if "$comment" in schema:
        return schema["$comment"]
    if schema["type"] == "array":
        return "`[]`"
    return "none" if "minLength" in schema else "empty"


def rows(schema, path=""):
    for name, value in schema["properties"].items():
        key = f"{path}.{name}" if path else name
        items = value.get("items", {})
        if "properties" in value:
            yield f"| **`[{key}]`** | | {value['description']} |\n"
            yield from rows(value, key)
        elif "properties" in items:
            yield f"| **`[[{key}]]`** | | {value['description']} A table for each. |\n"
            yield from rows(items, key)
        else:
            without = value_without(key, value, name in schema["required"])
            yield f"| `{name}` | {without} | {value['description']} |\n"


def with_table(page, schema):
    before, rest = page.split(HEAD)
    after = rest[rest.index("\n\n"):]
    return before + HEAD + "".join(rows(schema)).rstrip("\n") + after


if __name__ == "__main__":
    file = pathlib.Path(sys.argv[1])
    file.write_text(with_table(file.read_text(), json.load(sys.stdin)))
