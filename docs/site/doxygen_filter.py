"""Turns the comments of roxe.h into ones that Doxygen reads; line for line, so that its warnings name
the lines of the header.

doxygen_filter.py HEADER    prints the header

A block of // lines right before a declaration becomes its documentation: "names   meaning" lines
(two spaces or more between them) become parameters, a paragraph that begins with "Returns" or
"Always returns" the result. A comment after a declaration on one line documents that declaration. The
first block of the file and the rules of dashes become the file's own documentation.
"""

import re
import sys

PARAMETERS = re.compile(r"^((?:\w+|\.\.\.)(?:,? (?:\w+|\.\.\.))*) {2,}(\S.*)$")
RETURNS = re.compile(r"^(Always returns|Returns) ")
DECLARATION = re.compile(r"^(ROXE_API|typedef struct|enum) ")


def names_of(text):
    """The parameters of "a, b" or of "unused1 ... unused3"."""
    first, *rest = re.split(r" \.\.\. ", text)
    if not rest:
        return text.replace(" ", "")
    stem, low, high = first.rstrip("0123456789"), first.lstrip("abcdefghijklmnopqrstuvwxyz"), rest[0]
    return ",".join(f"{stem}{i}" for i in range(int(low), int(high.removeprefix(stem)) + 1))


def documentation(block):
    """The lines of one comment, marked for Doxygen."""
    marked = []
    for i, line in enumerate(block):
        text = line.removeprefix("//").removeprefix(" ")
        if re.match(" {4}|clang-format", text):  # goes on with the meaning of a parameter
            text = text.strip() if text[0] == " " else ""
        parameters = PARAMETERS.match(text)
        if parameters:
            text = f"@param {names_of(parameters[1])} {parameters[2]}"
        elif RETURNS.match(text) and (i == 0 or block[i - 1] == "//"):
            text = "@return " + text.removeprefix("Returns ")
        marked.append(f"/// {text}".rstrip())
    return marked


def filtered(lines):
    out = []
    start = 0
    while start < len(lines):
        end = start
        while end < len(lines) and lines[end].startswith("//"):
            end += 1
        block, start = lines[start:end], end
        if block and not out:
            # In place of the empty line after the first sentence.
            out += ["/// @file"] + documentation(block[:1] + block[2:])
        elif block and end < len(lines) and DECLARATION.match(lines[end]):
            out += documentation(block)
        else:
            out += block
        if end < len(lines):
            out.append(re.sub(r"([;,{]|\d) +// ?", r"\1  ///< ", lines[end]))
            start = end + 1
    return out


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8") as header:
        print("\n".join(filtered(header.read().splitlines())))
