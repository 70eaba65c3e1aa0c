"""Circles between files, where a source and its header are one, and between rooms."""

from collections import deque


def check(tree, house):
    known = [each for each in tree.includes if each.target and not each.exempt]
    findings = circles("files", known, unit)
    findings += circles("rooms", [each for each in known if house.room_of(each.path) and house.room_of(each.target)],
                        lambda path: house.room_of(path).path)
    return findings


def unit(path):
    """A file's name without its suffix: a source and its header change together."""
    name, _, suffix = path.rpartition(".")
    return name if suffix in ("c", "cpp", "h") else path


def circles(what, includes, node_of):
    """A finding for each shortest circle, until every node that stands in one has been told."""
    arrows = {}
    for each in includes:
        start, end = node_of(each.path), node_of(each.target)
        if start != end:
            arrows.setdefault(start, {}).setdefault(end, each)
    peel(arrows)
    findings, told = [], set()
    for start in sorted(arrows):
        if start in told:
            continue
        way = way_back(arrows, start)
        if way and not told & set(way):
            told.update(way)
            steps = [arrows[one][two] for one, two in zip(way, way[1:] + way[:1])]
            told_steps = ", ".join(f"{step.path}:{step.line} includes {step.target}" for step in steps)
            findings.append((steps[0].path, steps[0].line, f"circle of {what} {' -> '.join(way + way[:1])}: {told_steps}"))
    return findings


def peel(arrows):
    """Takes out, again and again, what no arrow leaves or reaches: it stands in no circle."""
    while True:
        reached = {end for ends in arrows.values() for end in ends}
        loose = [node for node in arrows if node not in reached or not arrows[node]]
        for node in loose:
            del arrows[node]
        dead = 0
        for node, ends in arrows.items():
            kept = {end: each for end, each in ends.items() if end in arrows}
            dead += len(ends) - len(kept)
            arrows[node] = kept
        if not loose and not dead:
            return


def way_back(arrows, start):
    """The nodes of the shortest circle through start, start first; none if there is no circle."""
    before = {start: None}
    waiting = deque([start])
    while waiting:
        node = waiting.popleft()
        for end in arrows[node]:
            if end == start:
                way = [node]
                while before[way[0]] is not None:
                    way.insert(0, before[way[0]])
                return way
            if end not in before:
                before[end] = node
                waiting.append(end)
    return []
