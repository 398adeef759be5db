#!/usr/bin/env python3
"""Checks that the include lines of the sources keep the layers of the house.

Usage: checkLayers.py SOURCE_DIR

- Inside zuSceneGraph/ a file includes headers of its own layer and of the layers below it,
  never of a higher one. The files at the top of zuSceneGraph/ (the library start) stand
  above every layer.
- Wm4/ includes none of our other libraries, zuSystem/ none either; zuSceneGraph/ may use
  both.
- tools/, bench/ and examples/ include the libraries' public headers only, as an application
  does, and their own files; nothing from tests/.
- README.md quotes the layer order as this script writes it (LAYER_LINE).

Prints one line per broken rule and exits 1; exits 0 when the house holds.
"""

import os
import re
import sys

# The layers of zuSceneGraph/, bottom to top. Folders of one layer may know each other.
LAYERS = [
    ["math"],
    ["objects", "stream"],
    ["resources"],
    ["states"],
    ["scenegraph", "culling"],
    ["animation"],
    ["spatial"],
    ["io"],
]
LAYER_LINE = " -> ".join(" & ".join(layer) for layer in LAYERS)

LIBRARIES = ["Wm4", "zuSystem", "zuSceneGraph"]
# What each library may include of the others.
LIBRARY_USES = {"Wm4": set(), "zuSystem": set(), "zuSceneGraph": {"Wm4", "zuSystem"}}
APPLICATIONS = ["tools", "bench", "examples"]

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
SOURCE_SUFFIXES = (".h", ".hpp", ".cpp", ".cc", ".inl")


def layer_of(folder):
    for index, layer in enumerate(LAYERS):
        if folder in layer:
            return index
    return None


def includes(path):
    with open(path, encoding="utf-8", errors="replace") as source:
        for number, line in enumerate(source, 1):
            match = INCLUDE.match(line)
            if match:
                yield number, match.group(1), match.group(2)


def sources(root, top):
    for directory, _, files in os.walk(os.path.join(root, top)):
        for name in sorted(files):
            if name.endswith(SOURCE_SUFFIXES):
                yield os.path.join(directory, name)


def check_library(root, library, problems):
    for path in sources(root, library):
        relative = os.path.relpath(path, root)
        parts = relative.split(os.sep)
        own = parts[1] if library == "zuSceneGraph" and len(parts) > 2 else None
        own_layer = layer_of(own) if own else len(LAYERS)
        if own and own_layer is None:
            problems.append(f"{relative}: folder {own}/ has no layer in {LAYER_LINE}")
            continue
        for number, _, name in includes(path):
            head = name.split("/")[0]
            if head in LIBRARIES and head != library and head not in LIBRARY_USES[library]:
                problems.append(f"{relative}:{number}: {library}/ includes {name}")
            if head == "zuSceneGraph" and library == "zuSceneGraph":
                target = name.split("/")[1] if name.count("/") > 1 else None
                target_layer = layer_of(target) if target else len(LAYERS)
                if target_layer is None or target_layer > own_layer:
                    problems.append(f"{relative}:{number}: {own or 'zuSceneGraph'}/ includes {name}, "
                                    f"a higher layer ({LAYER_LINE})")


def check_applications(root, problems):
    own = [os.path.relpath(path, root) for top in APPLICATIONS for path in sources(root, top)]
    for relative in own:
        for number, bracket, name in includes(os.path.join(root, relative)):
            head = name.split("/")[0]
            if bracket == "<" and head in LIBRARIES:
                public = os.path.isfile(os.path.join(root, name))
            elif bracket == '"':
                # Their own files, beside the includer or on the include path of its target.
                beside = os.path.relpath(os.path.join(os.path.dirname(relative), name))
                if os.path.isfile(os.path.join(root, beside)):
                    public = beside.split(os.sep)[0] in APPLICATIONS
                else:
                    public = any(f == name or f.endswith("/" + name) for f in own)
            else:
                continue
            if not public:
                problems.append(f"{relative}:{number}: {name} is not a public header")


def check_readme(root, problems):
    readme = os.path.join(root, "README.md")
    with open(readme, encoding="utf-8") as text:
        if LAYER_LINE not in text.read():
            problems.append(f"README.md does not quote the layer order: {LAYER_LINE}")


def main():
    if len(sys.argv) != 2:
        print(__doc__.strip().splitlines()[2], file=sys.stderr)
        return 2
    root = sys.argv[1]
    problems = []
    for library in LIBRARIES:
        check_library(root, library, problems)
    check_applications(root, problems)
    check_readme(root, problems)
    for problem in problems:
        print(problem)
    if problems:
        return 1
    print(f"layers hold: {LAYER_LINE}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
