"""Real clients with their own host names on one table: checks the table of docs/many-clients.md.

    python3 bench/lock_clients.py [--program P] [--clients N] [--hold MS] [--folder F]

The clients wait for the settings file, start in the same minute and append one row each. strace
makes each of them hold the lock for so many milliseconds more. Takes one to two minutes.
"""

import argparse
import pathlib
import subprocess
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
SETTINGS = "posix;0;0;0;4;0;4;1;0;MEMORY;data/[host].bin;;results.csv;true\n"


def start(program, settings, number, hold_ms):
    delay = ["strace", "-f", "-o", "/dev/null", "-e", "trace=unlink",
             "-e", f"inject=unlink:delay_enter={int(hold_ms * 1000)}"] if hold_ms else []
    name = f'hostname client{number}.lab; exec "$@"'
    return subprocess.Popen(["unshare", "--uts", "sh", "-c", name, "sh", *delay, program, settings],
                            stdout=subprocess.PIPE, text=True)


def wait_for_first_half_of_a_minute():
    # A client that finds the file at second 45 or later starts a minute after the others.
    while time.time() % 60 > 30:
        time.sleep(1)


def run(program, folder, clients, hold_ms):
    settings = folder / "many.bst"
    started = [start(program, settings, number, hold_ms) for number in range(clients)]
    time.sleep(2)
    wait_for_first_half_of_a_minute()
    (folder / "written").write_text(SETTINGS)
    (folder / "written").rename(settings)
    printed = [client.communicate()[0] for client in started]

    lines = [line for line in (folder / "results.csv").read_text().splitlines() if line]
    hosts = {line.split(",")[14].rsplit("/", 1)[-1] for line in lines[1:]}
    lost = sum("still locked" in text for text in printed)
    failed = sum(client.returncode != 0 for client in started)
    print(f"{clients} clients, lock held {hold_ms:g} ms longer: {len(lines) - 1} rows of "
          f"{len(hosts)} clients, {lost} said to be lost, {failed} clients failed, "
          f"lock left: {'yes' if (folder / 'results.csv_lock.txt').exists() else 'no'}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", default=ROOT / "build/release/marrowbench")
    parser.add_argument("--clients", type=int, default=200)
    parser.add_argument("--hold", type=float, default=1, metavar="MS")
    parser.add_argument("--folder", help="where the table stands; default: the temporary folder")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=options.folder, prefix="marrowbench_lock_") as folder:
        run(options.program, pathlib.Path(folder).resolve(), options.clients, options.hold)


if __name__ == "__main__":
    main()
