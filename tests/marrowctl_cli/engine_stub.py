#!/usr/bin/env python3
"""Stands in for an engine, for ssh or for marrowctl: writes down how it was called.

Each line of the file STUB_LOG is a call, as JSON: its name, its words and, for engines, its standard input.
ssh and srun go on as they would: what they are to start is started here.
"""

import json
import os
import sys

name = os.path.basename(sys.argv[0])
words = [os.fsencode(word).decode("latin-1") for word in sys.argv[1:]]
reads = name in ("parallel", "sbatch")
call = {"name": name, "words": words, "input": sys.stdin.read() if reads else "",
        "host": os.environ.get("STUB_HOST")}
with open(os.environ["STUB_LOG"], "a") as log:
    log.write(json.dumps(call) + "\n")

if name == "ssh":
    # ssh [-OPTION [VALUE]]... HOST COMMAND...
    rest = sys.argv[1:]
    with_value = {"-o", "-l", "-p", "-i", "-F"}
    while rest[0].startswith("-"):
        rest = rest[2:] if rest[0] in with_value else rest[1:]
    os.environ["STUB_HOST"] = rest[0]
    if rest[0] in os.environ.get("STUB_DOWN", "").split():
        sys.exit(255)
    words = rest[2:] if rest[1] == "--" else rest[1:]
    # As sshd does: the words become one, which the user's shell reads; SHELL names it, which GNU parallel needs.
    os.environ["SHELL"] = "/bin/sh"
    os.execvp("sh", ["sh", "-c", " ".join(words)])
if name == "srun":
    rest = sys.argv[1:]
    while rest[0].startswith("-"):
        rest = rest[1:]
    os.execvp(rest[0], rest)
