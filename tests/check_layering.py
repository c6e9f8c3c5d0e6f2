#!/usr/bin/env python3
"""aafkit's rooms include only themselves and the rooms beneath them.

io/ and mem/ are at the bottom, cfb/ above it, meta/ and om/ (which use each other) above cfb/, and the
top level above all. The top level's vocabulary headers (the AAF types, the result codes and
Status) include nothing of the rooms, so every room may use them. Nothing in aafkit includes
the reader, the writer, the timeline model or the tool. Prints every include that breaks this
and fails if there is one.

Usage: check_layering.py <aafkit directory>
"""
import pathlib
import re
import sys

LEVELS = {"io": 0, "mem": 0, "cfb": 1, "meta": 2, "om": 2, "": 3}
VOCABULARY = {"AafTypes.h", "ResultCodes.h", "Status.h"}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def room(path, kit):
    """The folder under aafkit that holds `path`; "" for the top level."""
    parts = path.relative_to(kit).parts
    return parts[0] if len(parts) > 1 else ""


def resolve(name, including, kit):
    """The project file an include names, or None for a public or system header."""
    for base in (including.parent, kit.parent):
        candidate = (base / name).resolve()
        if candidate.is_file():
            return candidate
    return None


def is_vocabulary(path, kit):
    return room(path, kit) == "" and path.name in VOCABULARY


def faults_of(source, kit):
    here = room(source, kit)
    if here not in LEVELS:
        yield "lies in a folder that has no place in the layering"
        return
    for name in INCLUDE.findall(source.read_text(encoding="utf-8")):
        target = resolve(name, source, kit)
        if target is None:
            continue
        if kit not in target.parents:
            yield f"includes {name}, which is outside aafkit"
            continue
        there = room(target, kit)
        if there not in LEVELS:
            yield f"includes {name}, in a folder that has no place in the layering"
        elif is_vocabulary(source, kit) and not is_vocabulary(target, kit):
            yield f"includes {name}, but the vocabulary headers must stand alone"
        elif LEVELS[there] > LEVELS[here] and not is_vocabulary(target, kit):
            yield f"includes {name}, from a room above its own"


def main(argv):
    if len(argv) != 2:
        print(__doc__.strip().splitlines()[-1], file=sys.stderr)
        return 2
    kit = pathlib.Path(argv[1]).resolve()
    sources = [p for p in sorted(kit.rglob("*")) if p.suffix in (".h", ".cpp")]
    if not sources:
        print(f"no sources under {kit}", file=sys.stderr)
        return 2
    faults = [f"{s.relative_to(kit)} {fault}" for s in sources for fault in faults_of(s, kit)]
    for line in faults:
        print(line)
    print(f"{len(sources)} files, {len(faults)} includes against the layering")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
