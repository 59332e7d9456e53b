"""Writes the rooms of src/ as a graph in the language of dot, from what CMake knows of a build folder."""

import glob
import json
import os
import sys

FLOORS = ["App", "Views", "UI", "Services", "Platform", "Models", "Support"]


def load(reply, name):
    with open(os.path.join(reply, name), encoding="utf-8") as file:
        return json.load(file)


def rooms(build):
    """The libraries and programs under src/: their folder, and the ids of what they link."""
    reply = os.path.join(build, ".cmake/api/v1/reply")
    index = load(reply, os.path.basename(max(glob.glob(os.path.join(reply, "index-*.json")))))
    model = load(reply, index["reply"]["codemodel-v2"]["jsonFile"])
    for entry in model["configurations"][0]["targets"]:
        target = load(reply, entry["jsonFile"])
        folder = target["paths"]["source"]
        if folder.startswith("src/") and target["type"] in ("STATIC_LIBRARY", "MODULE_LIBRARY"):
            linked = [dependency["id"] for dependency in target.get("dependencies", [])]
            yield target["id"], folder.removeprefix("src/"), linked


def main(build):
    folders, links = {}, []
    for name, folder, linked in rooms(build):
        if folder.endswith("protocols"):
            continue
        folders[name] = folder
        links += [(name, other) for other in linked]
    print("digraph floors {")
    print('  rankdir=TB; newrank=true; node [shape=box, style="rounded,filled", fillcolor=white,')
    print('  fontname="sans-serif", fontsize=11]; edge [color="#606060", arrowsize=0.6];')
    for floor in FLOORS:
        print(f'  subgraph "cluster_{floor}" {{ label="{floor}"; fontname="sans-serif"; labeljust=l;')
        print('  style=filled; fillcolor="#eef2f7"; color="#c0c8d0";')
        for folder in sorted(set(folders.values())):
            if folder == floor or folder.startswith(floor + "/"):
                room = folder[len(floor) + 1:] or folder
                print(f'    "{folder}" [label="{room}"];')
        print("  }")
    edges = {(folders[a], folders[b]) for a, b in links if a in folders and b in folders}
    for a, b in sorted(edges):
        if a != b:
            print(f'  "{a}" -> "{b}";')
    print("}")


main(sys.argv[1])
