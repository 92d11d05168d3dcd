"""A share as its clients see it: the server, the clients that have it mounted, and tables on it."""

import os
import pathlib
import time

from lab import Lab
from program_bench import table_rows
from servers import MOUNT_POINT


class Share:
    def __init__(self, server_class):
        self.lab = Lab()
        try:
            self.server = server_class(self.lab)
            self.server.start()
        except BaseException:
            self.lab.close()
            raise
        self.numbered = {}

    def clients(self, count):
        """As many clients with the share mounted; those that are missing are started."""
        self.bury_the_dead()
        new = [number for number in range(1, count + 1) if number not in self.numbered]
        add = self.lab.add_guest if self.server.on_guests else self.lab.add_host
        for number in new:
            self.numbered[number] = add(number)
        for number in new:
            if self.server.on_guests:
                self.numbered[number].wait_until_ready()
            self.server.mount_on(self.numbered[number])
        return [self.numbered[number] for number in range(1, count + 1)]

    def bury_the_dead(self):
        for number, client in list(self.numbered.items()):
            if not client.is_alive():
                self.replace(number)

    def replace(self, number):
        """Takes a client away; clients() starts another one in its place."""
        self.lab.remove(number, self.numbered.pop(number))

    def wait_until_it_works(self):
        """Waits until all clients see the share; after a fault that takes some a while."""
        for client in self.numbered.values():
            client.run("sh", "-c", f"until stat {MOUNT_POINT} && ls {MOUNT_POINT}; do sleep 0.2; done")

    def close(self):
        self.lab.close()


class SharedFolder:
    """A folder on a share, for one test."""

    def __init__(self, share, name):
        self.share = share
        self.path = pathlib.Path(MOUNT_POINT) / name     # at the clients
        self.on_server = share.server.data / name
        self.put_by = share.clients(1)[0]
        share.wait_until_it_works()
        self.put_by.run("mkdir", self.path)

    def put(self, name, content):
        """Makes a file, complete at once, through the first client; returns its path there."""
        here = self.share.lab.folder / "to_put"
        here.write_bytes(content if isinstance(content, bytes) else content.encode())
        written = self.path / f"{name}.written"
        self.put_by.run("sh", "-c", f"cp {here} {written} && mv {written} {self.path / name}")
        return self.path / name

    def read(self, name):
        """A file's bytes, as the server has them."""
        return (self.on_server / name).read_bytes()

    def rows(self, name="res.csv"):
        return table_rows(self.read(name).decode())

    def row_count(self, name="res.csv"):
        """How many rows the table holds by now; it may be in the making."""
        path = self.on_server / name
        return path.read_bytes().count(b"\n\n") if path.exists() else 0

    @property
    def lock(self):
        return self.on_server / "res.csv_lock.txt"


def start_program(client, settings, prefix=(), environment=None):
    return client.start(*prefix, os.environ["MARROWBENCH_PROGRAM"], settings,
                        environment=environment)


def start_at_once(share, clients, settings):
    """Starts the program on all clients, each ready to go when the last one is."""
    go = share.lab.folder / "go"
    go.unlink(missing_ok=True)
    wait = ("sh", "-c", f'until [ -e {go} ]; do sleep 0.01; done; exec "$@"', "sh")
    jobs = [start_program(client, settings, prefix=wait) for client in clients]
    time.sleep(1)
    go.touch()
    return jobs
