"""Prints which lines the tests reached, from gcovr's JSON, and holds the others against a list of reasons.

The list has paragraphs: a line that begins with "= " says why, the lines below it which lines it is said of, as
"file: text". A line of code that stands several times in a file needs one entry.
"""

import json
import sys


def read_reasons(path):
    reasons, reason = {}, None
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            line = line.rstrip("\n")
            if line.startswith("= "):
                reason = line[2:]
            elif line and not line.startswith("#"):
                file, text = line.split(": ", 1)
                reasons[file, text] = reason
    return reasons


def main(report_path, reasons_path):
    reasons = read_reasons(reasons_path)
    used = set()
    missed = {}  # reason -> lines
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
            if line["count"] > 0:
                continue
            number = line["line_number"]
            key = name, texts[number - 1].strip()
            if key in reasons:
                used.add(key)
            missed.setdefault(reasons.get(key), []).append(f"{name}:{number}: {key[1]}")
    print(f"{'all':<44}{total:>7}{reached:>9}{100 * reached / total:>7.1f}")

    unexplained = missed.pop(None, [])
    for reason, lines in missed.items():
        print(f"\nNot reached. {reason}")
        print("\n".join("  " + line for line in lines))
    if unexplained:
        print("\nNot reached, and no reason given:")
        print("\n".join("  " + line for line in unexplained))
    stale = [f"  {file}: {text}" for file, text in reasons if (file, text) not in used]
    if stale:
        print(f"\nReached, or gone, though {reasons_path} has a reason:")
        print("\n".join(stale))
    return 1 if unexplained or stale else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
