#!/usr/bin/env python3
"""Stands in for ssh, clush, pdsh and srun: starts what they are to start on this machine, once for each host and
under its name.

The file STUB_LOG gets a line for each host. Hosts in STUB_DOWN can't be reached, those in STUB_HANGS never answer.
"""

import os
import re
import shlex
import subprocess
import sys
import time

VALUES = {"ssh": {"-o"}, "clush": {"-f", "-w"}, "pdsh": {"-R", "-f", "-w"}, "srun": set()}


def split(name, words):
    """Options with their values, and the words behind them."""
    options = {}
    while words and words[0].startswith("-"):
        flag, _, value = words.pop(0).partition("=")
        options[flag] = words.pop(0) if flag in VALUES[name] else value
    return options, words


def hosts_of(text):
    for part in re.findall(r"[^,\[]+(?:\[[^]]*\])?", text):
        found = re.fullmatch(r"(.*)\[(\d+)-(\d+)\]", part)
        if not found:
            yield part
            continue
        for number in range(int(found[2]), int(found[3]) + 1):
            yield f"{found[1]}{number:0{len(found[2])}}"


def start(host, command):
    """A command for the host's shell."""
    with open(os.environ["STUB_LOG"], "a") as log:
        log.write(f"{os.path.basename(sys.argv[0])} {host}\n")
    if host in os.environ.get("STUB_DOWN", "").split():
        return subprocess.Popen(["sh", "-c", r"printf 'down: 0/1\r         \r\033[31mno route\007\r\n' >&2; exit 255"])
    if host in os.environ.get("STUB_HANGS", "").split():
        time.sleep(300)
    return subprocess.Popen(["unshare", "--uts", "sh", "-c", 'hostname "$0"; exec sh -c "$1"', f"{host}.lab", command])


name = os.path.basename(sys.argv[0])
options, words = split(name, sys.argv[1:])
if name == "ssh":
    hosts, command = [words[0]], " ".join(words[1:])
elif name == "srun":
    hosts, command = hosts_of(options["--nodelist"]), shlex.join(words)
else:
    hosts, command = hosts_of(options["-w"]), " ".join(words).replace("%%", "%")
sys.exit(max(process.wait() for process in [start(host, command) for host in hosts]))
