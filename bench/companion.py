"""What marrowctl costs: the time until it answers, and that of a check."""

import os

from programs import wall_ms
from samples import Figure, at_most

TESTS_OF_A_FILE = 200


def processor_seconds(*command, statuses=(0, 1)):
    """The processor time of a program. With status 1 marrowctl has found something."""
    return processor_and_memory(*command, statuses=statuses)[0]


def processor_and_memory(*command, statuses=(0, 1)):
    """The same, and the most memory that it had at once, in MB."""
    nowhere = [(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)]
    process = os.posix_spawn(command[0], [str(part) for part in command], os.environ,
                             file_actions=nowhere)
    _, status, used = os.wait4(process, 0)
    if os.waitstatus_to_exitcode(status) not in statuses:
        raise RuntimeError(f"{command[0]} ended with wait status {status}")
    return used.ru_utime + used.ru_stime, used.ru_maxrss * 1024 / 1e6


def settings_line(folder, number, methods):
    """Each client writes files of its own, by methods and chunks in turns."""
    method = methods[number % len(methods)]
    # AnsiC overwrites nothing: each of its names may be taken.
    iterations = 100 if method == "ansic" else 3
    return (f"{method};0;0;0;{4 << number % 9};-1;{1 << number % 20};{iterations};0;MEMORY;"
            f"{folder}/data_[host]/write_{number}_[iter].bin;{folder}/log_[host].txt;"
            f"{folder}/results_[host].csv;{'true' if number % TESTS_OF_A_FILE == 0 else 'false'}\n")


def write_chain(folder, tests, methods=("posix", "stream")):
    """Settings files with so many tests in all, each with a chain line to the next; the first one."""
    paths = [folder / f"chain_{start}.bst" for start in range(0, tests, TESTS_OF_A_FILE)]
    for index, path in enumerate(paths):
        first = index * TESTS_OF_A_FILE
        lines = [settings_line(folder, number, methods)
                 for number in range(first, min(first + TESTS_OF_A_FILE, tests))]
        if path != paths[-1]:
            lines.append(f"[cfgPath]{paths[index + 1].name}\n")
        path.write_text("".join(lines))
    return paths


def companion_start(bench):
    program = bench.companion
    if not program.exists():
        return [Figure("marrowctl --help", at_most(10, "ms"), skipped="marrowctl is not built")]
    (small,) = write_chain(bench.folder, 2)
    # As a start is measured for marrowbench: the whole process, in turns.
    answers = {"marrowctl --help": ["--help"], "marrowctl check, 2 lines": ["check", small]}
    figures = [Figure(f"{name}, start to exit", at_most(10, "ms"), unit="ms") for name in answers]
    for _ in range(bench.scale.starts):
        for figure, arguments in zip(figures, answers.values()):
            figure.samples.append(wall_ms(program, *arguments))
    small.unlink()
    return figures


def companion_check(bench):
    program, scale = bench.companion, bench.scale
    if not program.exists():
        return [Figure("marrowctl check", at_most(0.8, "s"), skipped="marrowctl is not built")]
    figures = []
    others = ("posix", "stream")
    for tests, methods, hosts, limit in ((scale.checked_lines, others, 1, 0.8),
                                         (TESTS_OF_A_FILE, others, scale.checked_hosts, 2),
                                         (TESTS_OF_A_FILE, ("ansic",), scale.checked_hosts, 2)):
        paths = write_chain(bench.folder, tests, methods)
        for form in ([], ["--json"]):
            name = " ".join(["marrowctl check", *form])
            lines = f"{tests:,} lines" + (" of AnsiC" if methods == ("ansic",) else "")
            figure = Figure(f"{name}, {lines}, hosts: {hosts}, processor time", at_most(limit, "s"),
                            unit="s")
            for _ in range(min(scale.rounds, 5)):
                figure.samples.append(processor_seconds(
                    program, "check", *form, "--hosts", f"c[1-{hosts}]", paths[0]))
            figures.append(figure)
        for path in paths:
            path.unlink()
    return figures
