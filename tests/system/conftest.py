"""Clients and servers as they are used: on a network, with real file servers between them."""

import os
import pathlib
import platform
import re
import shutil
import subprocess
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "cli"))

from figures import MEASURED  # noqa: E402
from servers import SERVERS  # noqa: E402
from shares import Share, SharedFolder  # noqa: E402


def may_make_namespaces():
    if shutil.which("unshare") is None:
        return False
    probe = ["unshare", "--fork", "--pid", "--mount-proc", "--net", "--uts", "--ipc", "true"]
    return subprocess.run(probe, capture_output=True).returncode == 0


def what_is_missing(server):
    """Why this machine can't run a server and its clients; None when it can."""
    if sys.platform != "linux" or os.geteuid() != 0 or not may_make_namespaces():
        return "Linux, root and the right to make namespaces"
    if server.on_guests and platform.machine() != "x86_64":
        return "an x86-64 processor"
    device = "/dev/net/tun" if server.on_guests else "/dev/fuse"
    return ", ".join(server.missing() + [device] * (not os.path.exists(device))) or None


@pytest.fixture(scope="session", params=SERVERS, ids=lambda server: server.name)
def share(request):
    missing = what_is_missing(request.param)
    if missing:
        pytest.skip(f"{request.param.name} needs {missing}")
    share = Share(request.param)
    yield share
    share.close()


@pytest.fixture
def folder(share, request):
    """A folder on the share, of a name that no other test uses."""
    return SharedFolder(share, re.sub(r"\W+", "_", request.node.name))


def pytest_terminal_summary(terminalreporter):
    if MEASURED:
        terminalreporter.section("measured")
    for line in MEASURED:
        terminalreporter.write_line(line)
