#!/usr/bin/env python3
"""Finds catch-all handlers that could swallow a cancellation.

A `catch (...)` must let Cancelled through: its block calls rethrowIfCancelled(), passes the
exception on (`throw;`, std::current_exception()), follows a handler of its own for Cancelled,
or says in a comment why a cancellation may end there."""
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
accepted = re.compile(r"rethrowIfCancelled\(\)|\bthrow;|current_exception\(\)|//.*[Cc]ancel")
previous_handler = re.compile(r"catch \(const (nuvrel::)?(base::)?Cancelled&\)")


def block_after(lines, start):
    """The lines of the block that opens on lines[start], up to its closing brace."""
    first = lines[start][lines[start].index("catch (...)"):]
    depth, body = first.count("{") - first.count("}"), [first]
    for line in lines[start + 1:]:
        if depth <= 0:
            break
        depth += line.count("{") - line.count("}")
        body.append(line)
    return "\n".join(body)


def previous_catch(lines, index):
    for line in reversed(lines[:index]):
        if "catch (" in line:
            return line
        if re.search(r"\btry\b", line):
            return ""
    return ""


failures = []
for path in sorted(list(root.glob("src/**/*.cpp")) + list(root.glob("src/**/*.h")) +
                   list(root.glob("apps/**/*.cpp"))):
    lines = path.read_text(encoding="utf-8").splitlines()
    for index, line in enumerate(lines):
        if "catch (...)" not in line:
            continue
        if accepted.search(block_after(lines, index)):
            continue
        if previous_handler.search(previous_catch(lines, index)):
            continue
        failures.append(f"{path.relative_to(root)}:{index + 1}: a catch-all that may swallow "
                        "a cancellation (call base::rethrowIfCancelled() first)")

print("\n".join(failures), file=sys.stderr) if failures else None
sys.exit(1 if failures else 0)
