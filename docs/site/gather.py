"""Gathers the pages of the site for mkdocs.

gather.py PAGES    run in the root of the project; PAGES is made anew

Most pages are those of docs/. Made here are the reference (from what Doxygen wrote about roxe.h), the
gallery (from what scripts/demo's gallery.py wrote) and the pages of files that lie elsewhere. A link out
of docs/ leads to the page made from that file, or to a copy of it.
"""

import html
import os
import posixpath
import re
import shutil
import sys

# Files outside docs/ that are pages of the site.
ELSEWHERE = {
    "README.md": "index.md",
    "CONTRIBUTING.md": "contributing.md",
    "SECURITY.md": "security.md",
    "examples/photos/README.md": "photographs.md",
    "web/README.md": "npm-package.md",
    "include/roxe.h": "reference.md",
}
DOXYGEN = "build/docs/doxygen/html/roxe_8h.html"
GALLERY = "build/docs/gallery"

LINK = re.compile(r"(\]\()([^)#\s:]+)((?:#[^)\s]*)?\))")


def page_of(path):
    """Where a file of the project stands on the site; files that are no pages keep their path."""
    if path in ELSEWHERE:
        return ELSEWHERE[path]
    return path.removeprefix("docs/") if path.startswith("docs/") else "files/" + path


def with_links(text, path, pages):
    """The Markdown of the file at path with its links as they are on the site."""
    here = posixpath.dirname(path)

    def moved(link):
        target = posixpath.normpath(posixpath.join(here, link[2]))
        if not os.path.exists(target):
            sys.exit(f"{path}: {link[2]} does not exist")
        place = page_of(target)
        if place.startswith("files/"):
            os.makedirs(os.path.dirname(os.path.join(pages, place)), exist_ok=True)
            shutil.copy(target, os.path.join(pages, place))
        return link[1] + posixpath.relpath(place, posixpath.dirname(page_of(path)) or ".") + link[3]

    # Blocks of code hold no links.
    parts = re.split(r"(^```.*?^```$)", text, flags=re.S | re.M)
    return "".join(part if part.startswith("```") else LINK.sub(moved, part) for part in parts)


def write(pages, name, text):
    os.makedirs(os.path.dirname(os.path.join(pages, name)) or ".", exist_ok=True)
    with open(os.path.join(pages, name), "w", encoding="utf-8") as file:
        file.write(text)


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def without_empty_lines(text):
    """For HTML in Markdown, where an empty line would end the block."""
    return re.sub(r"\n\s*\n+", "\n", text)


def reference(doxygen):
    """A page from Doxygen's about the header: its details without its frame, under headings of
    Markdown, which the site's contents and its search go by."""
    details = doxygen[doxygen.index('name="details"'):doxygen.index("</div><!-- contents -->")]
    details = details[details.index('<div class="textblock">'):]
    names = {}  # by Doxygen's anchor

    def heading(found):
        name = found[3].removesuffix("()")
        names[found[1]] = name
        return f"\n\n### {name} {{ #{name} }}\n\n"

    details = re.sub(r'<a (?:id|name)="(\w+)"[^>]*></a>\n<h2 class="memtitle">(.*</span>)(.*)</h2>\n',
                     heading, details)
    details = re.sub(r'(?:<hr/>)?<h2 class="groupheader">(.*?)</h2>', r"\n\n## \1\n\n", details)
    details = re.sub(r'href="roxe_8h\.html#(\w+)"',
                     lambda link: f'href="#{names.get(link[1], link[1])}"', details)
    # Lines may break between the names of parameters.
    details = re.sub(r'<td class="paramname">[\w,]+</td>', lambda cell: cell[0].replace(",", ", "), details)
    for doxygens, ours in (("Data Structure Documentation", "Records"),
                           ("Enumeration Type Documentation", "Constants"),
                           ("Function Documentation", "Functions")):
        details = details.replace(f"## {doxygens}", f"## {ours}")
    blocks = [part if part.startswith("\n\n##") else without_empty_lines(part)
              for part in re.split(r"(\n\n##.*\n\n)", details)]
    return ("# The header `roxe.h`\n\nMade by Doxygen from [`include/roxe.h`](include/roxe.h), which is the whole "
            'interface.\n\n<div class="reference"></div>\n\n' + "".join(blocks))


def exhibits(gallery):
    """The style and the sections of the gallery's page, with headings of Markdown."""
    style = re.search(r"(?s)<style>.*?\n(\.pair .*)</style>", gallery)[1]
    sections = re.findall(r'(?s)<section id="\d+">\n<h2>(.*?)</h2>\n(.*?)</section>', gallery)
    body = "\n\n".join(
        f"## {html.unescape(title)}\n\n"
        + f'<div class="exhibit">\n{without_empty_lines(content)}</div>'
        .replace('src="', 'src="gallery/').replace('href="', 'href="gallery/')
        for title, content in sections)
    return f"<style>\n{style}</style>\n\n{body}\n"


def main(pages):
    shutil.rmtree(pages, ignore_errors=True)
    shutil.copytree("docs", pages, ignore=shutil.ignore_patterns("site", "*.py"))
    shutil.copy("docs/site/site.css", pages)
    sources = [os.path.join(folder, name) for folder, folders, names in os.walk("docs")
               if not folder.startswith("docs/site") for name in names if name.endswith(".md")]
    for path in sources + [path for path in ELSEWHERE if path not in ("README.md", "include/roxe.h")]:
        write(pages, page_of(path), with_links(read(path), path, pages))
    os.makedirs(os.path.join(pages, "include"))
    shutil.copy("include/roxe.h", os.path.join(pages, "include"))
    write(pages, "reference.md", reference(read(DOXYGEN)))
    shown = exhibits(read(os.path.join(GALLERY, "index.html")))
    write(pages, "gallery.md", read(os.path.join(pages, "gallery.md")).replace("<!-- exhibits -->", shown))
    shutil.copytree(GALLERY, os.path.join(pages, "gallery"), ignore=shutil.ignore_patterns("index.html"))
    for folder in ("dist", "lib", "page"):
        shutil.copytree(os.path.join("web", folder), os.path.join(pages, "playground", folder))
    shutil.copy("web/roxe.mjs", os.path.join(pages, "playground"))
    # mkdocs would make a page of a README; the site has one of the photographs already.
    os.unlink(os.path.join(pages, "playground/dist/photos/README.md"))
    write(pages, "playground/index.html", read("web/index.html").replace(
        'href="dist/photos/README.md"', 'href="../photographs.html" target="_parent"'))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
