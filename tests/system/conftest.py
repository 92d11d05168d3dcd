"""Clients and servers as they are used: on a network, with real file servers between them."""

import os
import pathlib
import re
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "cli"))

from figures import MEASURED  # noqa: E402
from servers import SERVERS  # noqa: E402
from shares import Share, SharedFolder  # noqa: E402


def skip_unless_possible(server_class):
    if sys.platform != "linux" or os.geteuid() != 0:
        pytest.skip("needs namespaces, so Linux and root")
    if server_class.missing():
        pytest.skip(f"{server_class.name} needs {', '.join(server_class.missing())}")
    if not server_class.on_guests and not os.path.exists("/dev/fuse"):
        pytest.skip(f"{server_class.name} needs /dev/fuse")
    if server_class.on_guests and not os.path.exists("/dev/net/tun"):
        pytest.skip(f"{server_class.name} needs /dev/net/tun")


@pytest.fixture(scope="session", params=SERVERS, ids=lambda server: server.name)
def share(request):
    skip_unless_possible(request.param)
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
