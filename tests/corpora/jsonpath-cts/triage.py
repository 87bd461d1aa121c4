#!/usr/bin/env python3
"""Triage of the JSONPath Compliance Test Suite (RFC 9535) for Lorvane's JSON path.

The suite's selectors are written in the RFC's language, which differs from Lorvane's. This
script keeps the cases whose selector means the same thing in both languages (root, names in dot
and bracket form, wildcards, indexes, negative indexes, slices that the two bounds rules resolve
alike, lists of these, descendants) and names, for every other case, the class of difference
that leaves it out. It writes triage.tsv: index, verdict ("keep" or the class), name. The test
program JSONPathComplianceTest runs every case through CreateNodeList and compares the kept ones
with the suite's results.

    python3 tests/corpora/jsonpath-cts/triage.py      # rewrites triage.tsv beside it
"""
import json
import os
import re
import sys

HERE = os.path.dirname(os.path.abspath(__file__))

# The classes of difference, each with the rule of Lorvane's path language that makes it one.
CLASSES = {
    "invalid-in-rfc": "the RFC refuses the selector; Lorvane cuts steps by \".\" and \"[\" and "
                      "reads what it finds, refusing only a step that starts with another "
                      "character, \"$\"/\"@\" inside, and its filter syntax",
    "filter": "filters must be \"?(...)\", chains fold left to right without precedence, a "
              "missing value rejects the item, terms classify as integer, float, boolean or text",
    "whitespace": "a step must start with \".\" or \"[\" (a blank between steps is refused) "
                  "and a dot name runs to the next \".\" or \"[\", blanks included; only "
                  "alternatives and bracket pieces are trimmed",
    "double-quotes": "only an apostrophe is taken off a bracket name; double quotes stay part of "
                     "the name",
    "escapes": "a quoted name is compared as written: escapes are not undone",
    "name-like-index": "a bracket piece of digits and \"-\" is an index even in apostrophes "
                       "(\"$['0']\")",
    "name-with-colon": "a piece that holds \":\" is a slice, even in apostrophes",
    "name-with-brackets": "the step cutter passes one nested bracket pair and stops at the "
                          "first \"]\", inside apostrophes too",
    "name-with-apostrophe-or-comma": "a name is the piece without its first and last character; "
                                     "a comma splits outside apostrophes only",
    "quoted-wildcard": "a name \"*\" or an empty name selects all children, quoted or not",
    "slice-bounds": "the first item of a slice is taken without looking at the end, a negative "
                    "end is not counted from the end, end 0 means the length, step 0 means 1, "
                    "and a part that is no integer is 0",
    "index-text": "an index is StrToInt of the piece: 32 bits, and \"-\" forms that the RFC "
                  "refuses",
    "member-escaped-in-document": "member names are stored as read, escapes and all, and a "
                                  "selector compares with that text",
}


class LeftOut(Exception):
    pass


def split_brackets(text, at):
    """The pieces of the bracket at text[at] == "[", RFC-style (quotes with escapes), and the
    position behind its "]"."""
    pieces, cur, i, quote = [], "", at + 1, None
    while i < len(text):
        c = text[i]
        if quote:
            cur += c
            if c == "\\":
                i += 1
                if i < len(text):
                    cur += text[i]
            elif c == quote:
                quote = None
        elif c in "'\"":
            quote = c
            cur += c
        elif c == ",":
            pieces.append(cur)
            cur = ""
        elif c == "]":
            pieces.append(cur)
            return pieces, i + 1
        elif c == "[":
            raise LeftOut("name-with-brackets")
        else:
            cur += c
        i += 1
    raise LeftOut("invalid-in-rfc")


def rfc_slice(length, start, end, step):
    """RFC 9535 slice: the indexes selected."""
    step = 1 if step is None else step
    if step == 0:
        return []
    def norm(i):
        return i if i >= 0 else length + i
    if step > 0:
        lo = min(max(norm(start if start is not None else 0), 0), length)
        hi = min(max(norm(end if end is not None else length), 0), length)
        return list(range(lo, hi, step))
    lo = min(max(norm(end), -1), length - 1) if end is not None else -1
    hi = min(max(norm(start), -1), length - 1) if start is not None else length - 1
    out, i = [], hi
    while lo < i:
        out.append(i)
        i += step
    return out


def lorvane_slice(length, text):
    """Lorvane's slice: the indexes selected."""
    if text.startswith(":"):
        text = "0" + text
    parts = (text.split(":") + ["0", "0"])[:3]
    def num(p):
        return int(p) if re.fullmatch(r"[+-]?\d+", p) and -2**31 <= int(p) < 2**31 else 0
    start, end, step = (num(p) for p in parts)
    if start < 0:
        start += length
    step = step or 1
    end = end or length
    out = []
    if 0 <= start < length:
        i = start
        while True:
            out.append(i)
            i += step
            if not (0 <= i < length and i < end):
                break
    return out


def check_piece(piece, document, only_step):
    piece = piece.strip()
    if piece.startswith("?"):
        raise LeftOut("filter")
    if piece.startswith('"'):
        raise LeftOut("double-quotes")
    if piece.startswith("'"):
        name = piece[1:-1]
        if "\\" in name:
            raise LeftOut("escapes")
        if name == "" or name == "*":
            raise LeftOut("quoted-wildcard")
        if re.fullmatch(r"[0-9-]+", name):
            raise LeftOut("name-like-index")
        if ":" in name:
            raise LeftOut("name-with-colon")
        if "," in name or "'" in name:
            raise LeftOut("name-with-apostrophe-or-comma")
        return
    if piece == "*":
        return
    if re.fullmatch(r"-?\d+", piece):
        if not -2**31 <= int(piece) < 2**31:
            raise LeftOut("index-text")
        return
    if ":" in piece:
        m = re.fullmatch(r"(-?\d+)?:(-?\d+)?(?::(-?\d+)?)?", piece)
        if not m or not only_step or not isinstance(document, list):
            raise LeftOut("slice-bounds")
        nums = [int(g) if g is not None else None for g in m.groups()]
        if any(n is not None and not -2**31 <= n < 2**31 for n in nums):
            raise LeftOut("slice-bounds")
        if rfc_slice(len(document), *nums) != lorvane_slice(len(document), piece):
            raise LeftOut("slice-bounds")
        return
    raise LeftOut("invalid-in-rfc")


def check_selector(selector, document):
    if not selector.startswith("$"):
        raise LeftOut("invalid-in-rfc")
    # Filters first: their text is another language, blanks and all.
    if re.search(r"[\[,]\s*\?", selector):
        raise LeftOut("filter")
    i, steps = 1, []
    while i < len(selector):
        if selector.startswith("..", i):
            i += 2
            if i < len(selector) and selector[i] == "[":
                pieces, i = split_brackets(selector, i)
                steps.append(pieces)
                continue
        elif selector[i] == ".":
            i += 1
        elif selector[i] == "[":
            pieces, i = split_brackets(selector, i)
            steps.append(pieces)
            continue
        elif selector[i].isspace():
            raise LeftOut("whitespace")
        else:
            raise LeftOut("invalid-in-rfc")
        m = re.match(r"\*|[A-Za-z_\u0080-\U0010FFFF][A-Za-z0-9_\u0080-\U0010FFFF]*", selector[i:])
        if not m:
            raise LeftOut("invalid-in-rfc")
        i += m.end()
        steps.append([m.group(0)])
    for pieces in steps:
        for piece in pieces:
            check_piece(piece, document, len(steps) == 1)


def escaped_names(raw_case):
    """Whether the case's document, as written in the suite's file, has a member name with an
    escape (such a name is stored raw and no selector text equals it)."""
    return re.search(r'"(?:[^"\\]|\\.)*\\(?:[^"\\]|\\.)*"\s*:', raw_case) is not None


def raw_cases(text):
    """The raw text of each case object of the suite's "tests" array, in order."""
    start = text.index("[", text.index('"tests"'))
    cases, depth, i, begin, in_string = [], 0, start + 1, None, False
    while i < len(text):
        c = text[i]
        if in_string:
            if c == "\\":
                i += 1
            elif c == '"':
                in_string = False
        elif c == '"':
            in_string = True
        elif c in "{[":
            if depth == 0:
                begin = i
            depth += 1
        elif c in "}]":
            if depth == 0:
                break
            depth -= 1
            if depth == 0:
                cases.append(text[begin:i + 1])
        i += 1
    return cases


def verdict(case, raw):
    if case.get("invalid_selector"):
        return "invalid-in-rfc"
    try:
        check_selector(case["selector"], case.get("document"))
    except LeftOut as reason:
        return str(reason)
    if escaped_names(raw.split('"document"', 1)[-1]):
        return "member-escaped-in-document"
    return "keep"


def main():
    path = os.path.join(HERE, "cts-dev.json")
    with open(path, encoding="utf-8") as f:
        text = f.read()
    suite = json.loads(text)["tests"]
    raws = raw_cases(text)
    assert len(raws) == len(suite), (len(raws), len(suite))
    rows, counts = [], {}
    for index, (case, raw) in enumerate(zip(suite, raws)):
        v = verdict(case, raw)
        counts[v] = counts.get(v, 0) + 1
        rows.append(f"{index}\t{v}\t{case['name']}")
    with open(os.path.join(HERE, "triage.tsv"), "w", encoding="utf-8") as f:
        f.write("# index\tverdict\tname (written by triage.py; verdict \"keep\" or the class)\n")
        f.write("\n".join(rows) + "\n")
    for name, count in sorted(counts.items(), key=lambda kv: -kv[1]):
        print(f"{count:4}  {name}" + (f": {CLASSES[name]}" if name in CLASSES else ""))
    return 0


if __name__ == "__main__":
    sys.exit(main())
