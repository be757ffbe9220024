"""Follows every link of the built site, and of the project's pages as they are read in a checkout.

links.py SITE    run in the root of the project

Within the site each link, picture and anchor must exist, and no page, style or script may load anything
from another place. Addresses on the web are not fetched.
"""

import html.parser
import os
import re
import sys
import urllib.parse

LOADED = {("img", "src"), ("script", "src"), ("link", "href"), ("iframe", "src"), ("source", "src"),
          ("video", "src"), ("object", "data"), ("img", "srcset")}
# In styles and scripts: an address that is fetched.
FOREIGN = re.compile(r"""url\(\s*["']?(?:https?:)?//|@import\s+["'](?:https?:)?//"""
                     r"""|(?:fetch|import|importScripts)\(\s*["'`](?:https?:)?//""")


class Page(html.parser.HTMLParser):
    """The anchors of a page, and its links as (address, whether it is loaded, line)."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.links = {""}, []
        with open(path, encoding="utf-8") as file:
            self.feed(file.read())

    def handle_starttag(self, tag, attributes):
        named = dict(attributes)
        self.anchors |= {named[name] for name in ("id", "name") if named.get(name)}
        # rel=canonical and the like name a page and load nothing.
        named_only = tag == "link" and named.get("rel") in ("canonical", "alternate", "prev", "next")
        for name in ("href", "src", "data", "srcset"):
            if named.get(name) is not None:
                loaded = (tag, name) in LOADED and not named_only
                self.links.append((named[name], loaded, self.getpos()[0]))


def site_faults(site):
    pages = {}
    for folder, _, names in os.walk(site):
        for name in names:
            path = os.path.join(folder, name)
            if name.endswith(".html"):
                pages[os.path.normpath(path)] = Page(path)
            elif name.endswith((".css", ".js", ".mjs")):
                with open(path, encoding="utf-8") as file:
                    if FOREIGN.search(file.read()):
                        yield f"{path}: loads something from another place"
    if not pages:
        yield f"{site}: holds no page"
    for path, page in sorted(pages.items()):
        for link, loaded, line in page.links:
            parts = urllib.parse.urlsplit(link)
            if parts.scheme in ("data", "mailto", "javascript"):
                continue
            if parts.scheme or parts.netloc:
                if loaded:
                    yield f"{path}:{line}: loads {link} from another place"
                continue
            base = site if parts.path.startswith("/") else os.path.dirname(path)
            target = os.path.normpath(os.path.join(base, urllib.parse.unquote(parts.path).lstrip("/"))
                                      if parts.path else path)
            if os.path.isdir(target):
                target = os.path.join(target, "index.html")
            if not os.path.exists(target):
                yield f"{path}:{line}: {link} does not exist"
            elif target in pages and urllib.parse.unquote(parts.fragment) not in pages[target].anchors:
                # The playground's own anchors belong to its scripts.
                yield f"{path}:{line}: {link}: {target} has no such anchor"


def checkout_faults():
    """Of the links between the Markdown pages of a checkout."""
    left_out = ("build", "out", "node_modules", ".git", "dist")
    for folder, folders, names in os.walk("."):
        folders[:] = [name for name in folders if name not in left_out and not name.startswith("build")]
        for name in names:
            path = os.path.normpath(os.path.join(folder, name))
            if not name.endswith(".md"):
                continue
            with open(path, encoding="utf-8") as file:
                text = re.sub(r"^```.*?^```", lambda block: "\n" * block[0].count("\n"), file.read(),
                              flags=re.S | re.M)
            for found in re.finditer(r"\]\(([^)#\s:]+)(?:#[^)\s]*)?\)", text):
                if not os.path.exists(os.path.join(folder, found[1])):
                    yield f"{path}:{text.count(chr(10), 0, found.start()) + 1}: {found[1]} does not exist"


def main(site):
    faults = [*site_faults(site), *checkout_faults()]
    print("\n".join(faults) or "every link leads somewhere, and nothing is loaded from elsewhere")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
