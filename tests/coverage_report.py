"""Prints the line coverage from gcovr's JSON, and compares the uncovered lines with a list of reasons.

In the list, a line that starts with "= " is a reason. The lines below it name the functions that it explains, as
"file: function: number of uncovered lines". A function is preceded by its class but not by its namespace. The lines of
a lambda belong to the enclosing function.
"""

import json
import re
import sys


def read_reasons(path):
    reasons, reason = {}, None
    with open(path, encoding="utf-8") as lines:
        for number, line in enumerate(lines, 1):
            line = line.rstrip("\n")
            if line.startswith("= "):
                reason = line[2:]
            elif line and not line.startswith("#"):
                entry = re.fullmatch(r"(\S+): (\S+): ([1-9]\d*)", line)
                if not entry:
                    sys.exit(f"{path}:{number}: expected 'file: function: number of lines', found '{line}'")
                if reason is None:
                    sys.exit(f"{path}:{number}: a function without a reason ('= ...') above it")
                if (entry[1], entry[2]) in reasons:
                    sys.exit(f"{path}:{number}: {entry[2]} of {entry[1]} is listed twice")
                reasons[entry[1], entry[2]] = int(entry[3]), reason
    return reasons


def short_name(demangled):
    """'int a::(anonymous namespace)::B<c>::Get(int)::{lambda()#1}::operator()() const' -> 'B::Get'"""
    name = demangled.replace("(anonymous namespace)::", "").split("(", 1)[0]
    while "<" in name and ">" in name:
        shorter = re.sub(r"<[^<>]*>", "", name)
        if shorter == name:
            break
        name = shorter
    parts = name.split()[-1].split("::")
    while len(parts) > 1 and parts[0].islower():
        parts.pop(0)
    return "::".join(parts)


def function_of(number, functions):
    """The function that contains the line: the last one that begins at or before it."""
    before = [function for function in functions if function["lineno"] <= number]
    if not before:
        return "(outside of functions)"
    return short_name(max(before, key=lambda function: function["lineno"])["name"])


def main(report_path, reasons_path):
    reasons = read_reasons(reasons_path)
    missed = {}  # (file, function) -> lines
    total = reached = 0
    with open(report_path, encoding="utf-8") as report:
        files = json.load(report)["files"]
    print(f"{'file':<44}{'lines':>7}{'reached':>9}{'%':>7}")
    for file in sorted(files, key=lambda entry: entry["file"]):
        name = file["file"]
        lines = [line for line in file["lines"] if not line.get("gcovr/noncode")]
        hit = sum(1 for line in lines if line["count"] > 0)
        total += len(lines)
        reached += hit
        if lines:
            print(f"{name:<44}{len(lines):>7}{hit:>9}{100 * hit / len(lines):>7.1f}")
        with open(name, encoding="utf-8") as source:
            texts = source.read().split("\n")
        for line in lines:
            if line["count"] == 0:
                number = line["line_number"]
                place = name, function_of(number, file["functions"])
                missed.setdefault(place, []).append(f"  {name}:{number}: {texts[number - 1].strip()}")
    if total:
        print(f"{'all':<44}{total:>7}{reached:>9}{100 * reached / total:>7.1f}")

    reason = None
    for place, (count, why) in reasons.items():
        if len(missed.get(place, [])) != count:
            continue
        if why != reason:
            print(f"\nNot reached. {why}")
        reason = why
        print("\n".join(missed.pop(place)))
        reasons[place] = 0, why
    unexplained = {place: lines for place, lines in missed.items() if place not in reasons}
    for (file, function), lines in unexplained.items():
        print(f"\nNot reached, and no reason given: {file}: {function}: {len(lines)}")
        print("\n".join(lines))
    differing = {place: count for place, (count, _) in reasons.items() if count}
    for (file, function), count in differing.items():
        lines = missed.get((file, function), [])
        print(f"\n{reasons_path} has {count} lines not reached in {function} of {file}, but there are {len(lines)}")
        print("\n".join(lines), end="\n" if lines else "")
    return 1 if unexplained or differing else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
