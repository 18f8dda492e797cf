"""Tables in a Markdown file, each between a pair of markers and written in place."""

import re


def markdown(header, rows):
    lines = ["| " + " | ".join(header) + " |", "|" + "|".join("---" for _ in header) + "|"]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return "\n".join(lines)


def put(path, name, text):
    """Replaces what stands between <!-- begin NAME --> and <!-- end NAME -->."""
    begin, end = f"<!-- begin {name} -->", f"<!-- end {name} -->"
    with open(path, encoding="utf-8") as file:
        page = file.read()
    pattern = re.compile(re.escape(begin) + ".*?" + re.escape(end), re.DOTALL)
    page, count = pattern.subn(lambda _: f"{begin}\n{text}\n{end}", page)
    if count != 1:
        raise SystemExit(f"{path}: no place for {name}, or more than one")
    with open(path, "w", encoding="utf-8") as file:
        file.write(page)
