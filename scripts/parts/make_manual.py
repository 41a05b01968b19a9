#!/usr/bin/python3
"""Writes man pages as pages for a browser, with an index by task.

usage: scripts/parts/make_manual.py MAN_DIR TO_DIR
"""

import html
import pathlib
import re
import subprocess
import sys

from make_man import TASKS

STYLE = """body { font: 16px/1.5 system-ui, sans-serif; max-width: 46em; margin: 2em auto; padding: 0 1em; }
h1.Sh, h2, h1 { font-size: 1.15em; margin-top: 1.6em; } h2.Ss { font-size: 1em; }
code, pre, .Nm, .Fn { font-family: ui-monospace, monospace; } a { color: #0a6a78; }
table.head, table.foot { display: none; } dt { font-weight: 600; } dd { margin-bottom: .5em; }
pre { background: #f3f5f6; padding: .6em; overflow-x: auto; } p { margin: .5em 0; }
@media (prefers-color-scheme: dark) { body { background: #14181a; color: #e6e9ea; }
  a { color: #5cc4d4; } pre { background: #1f2528; } }
"""


def summary_of(page):
    """What follows the name of a page."""
    found = re.search(r"^\.Nd (.*)$", page.read_text(encoding="utf-8"), re.M)
    return found[1].replace("\\-", "-").replace("\\(dq", '"').replace("\\&", "")


def link(page):
    """A line of the index."""
    name = page.stem
    section = page.suffix[1:]
    return (f'<li><a href="{name}.{section}.html">{html.escape(name)}</a>: '
            f"{html.escape(summary_of(page))}</li>")


def body_of(page):
    """The page in HTML, between the tags of body."""
    made = subprocess.run(["mandoc", "-T", "html", "-O", "fragment,man=%N.%S.html", page],
                          capture_output=True, text=True, check=True, timeout=60)
    return made.stdout


def document(title, body):
    """A whole page."""
    return (f'<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8">\n'
            f'<meta name="viewport" content="width=device-width, initial-scale=1">\n'
            f'<title>{html.escape(title)}</title><link rel="stylesheet" href="style.css"></head>\n'
            f"<body>\n{body}</body></html>\n")


def index_of(man):
    """The body of the first page."""
    lines = ["<h1>ipodctl</h1>", '<p><a href="ipodctl.3.html">What all functions have in common</a></p>']
    for task, names in TASKS.items():
        lines += [f"<h2>{html.escape(task.capitalize())}</h2>", "<ul>"]
        lines += [link(man / f"man3/{name}.3") for name in names.split()]
        lines.append("</ul>")
    lines += ["<h2>Programs</h2>", "<ul>"]
    lines += [link(page) for page in sorted((man / "man1").glob("*.1"))]
    return "\n".join(lines + ["</ul>"]) + "\n"


def main():
    man, target = map(pathlib.Path, sys.argv[1:])
    target.mkdir(parents=True, exist_ok=True)
    (target / "style.css").write_text(STYLE, encoding="utf-8")
    (target / "index.html").write_text(document("ipodctl", index_of(man)), encoding="utf-8")
    for page in sorted(man.glob("man[13]/*")):
        body = '<p><a href="index.html">All functions and programs</a></p>\n' + body_of(page)
        (target / f"{page.name}.html").write_text(document(page.stem, body), encoding="utf-8")
    print(f"{target}/index.html: {len(list(target.glob('*.html'))) - 1} pages")


if __name__ == "__main__":
    main()
