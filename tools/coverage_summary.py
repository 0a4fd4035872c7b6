#!/usr/bin/env python3
# Lines covered by part of the tree, from gcov's own JSON for every .gcda of a build:
#   coverage_summary.py ROOT BUILD JOBS PART...
# prints "figure coverage_lines_PART PCT percent" for each PART (a top folder of ROOT); with
# KVGGL_COVERAGE_FILES=PATH set, also writes "covered total file" for each file there. A line
# counts once however many objects compile it (headers, inline code): covered when any did run
# it. gcovr 5.2 cannot merge this tree (an inline function met at two lines stops it).
import json
import os
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor


def gcov_json(path):
    run = subprocess.run(["gcov", "--json-format", "--stdout", os.path.basename(path)],
                         cwd=os.path.dirname(path), capture_output=True, text=True)
    return run.stdout


def main():
    root, build, jobs, parts = sys.argv[1], sys.argv[2], int(sys.argv[3]), sys.argv[4:]
    data = [os.path.join(d, f) for d, _, files in os.walk(build) for f in files
            if f.endswith(".gcda")]
    covered = {}  # (path under root, line) -> run at least once
    with ThreadPoolExecutor(max(1, jobs)) as pool:
        for out in pool.map(gcov_json, data):
            for doc in out.splitlines():
                if not doc.strip():
                    continue
                report = json.loads(doc)
                cwd = report["current_working_directory"]
                for entry in report["files"]:
                    path = os.path.relpath(os.path.normpath(os.path.join(cwd, entry["file"])), root)
                    if path.split(os.sep)[0] not in parts:
                        continue
                    for line in entry["lines"]:
                        key = (path, line["line_number"])
                        covered[key] = covered.get(key, False) or line["count"] > 0
    if os.environ.get("KVGGL_COVERAGE_FILES"):
        by_file = {}
        for (path, _), run in covered.items():
            c, t = by_file.get(path, (0, 0))
            by_file[path] = (c + run, t + 1)
        with open(os.environ["KVGGL_COVERAGE_FILES"], "w") as out:
            for path in sorted(by_file):
                out.write("%d %d %s\n" % (by_file[path][0], by_file[path][1], path))
    for part in parts:
        lines = [run for (path, _), run in covered.items() if path.split(os.sep)[0] == part]
        pct = 100.0 * sum(lines) / len(lines) if lines else 0.0
        print("figure coverage_lines_%s %.1f percent" % (part, pct))


if __name__ == "__main__":
    main()
