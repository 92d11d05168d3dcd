"""Small settings files at random: all methods and kinds, odd numbers, refused lines, chains."""

import dataclasses

METHODS = ["posix", "AnsiC", "Stream", "posix", "AnsiC", "Stream", "System"]
FLAGS = ["0", "0", "", "true", "1", " flush ", "prealloc", "no"]
WAITS = ["0", "0", "0", "", " ", "1", "20", "-5", "70000"]
CHUNKS = ["1", "4", "64", " 7 ", "0", "-1", "2097152", "4194304", "4294967297"]
BUFFERS = ["0", "-1", "1", "3", "9", "-7", "4294967295"]
SIZES = ["1", "4", "64", "100", "0", " 3 ", "4294967300"]
ITERATIONS = ["1", "1", "2", "3", "0", "-2", "4294967297"]
CACHE_MODES = ["0", "0", "4", "-3", "99999999999", "007"]
DONE = ["true", "TRUE ", "1", "false", "", " "]
BAD_NUMBERS = ["x", "1 2", "4K", "+3", "-", "--1", "1.5", "\udcff1", "9" * 260]
MEMORY = ["MEMORY", "memory", " Memory "]

FOLDERS = ["", "", "", "", "[cfgPath]", "[temp]", "./", "../", "s/", "s//[host]/", "[cfgNameID]s\\",
           "u/s[iter]/", "v[cfgline]/../", "a/b/c/", "{root}/x/"]
NAMES = ["d", "d", "e", "d[host]", "d[HOST]_[iter]", "e_[Iter]", "d[cfgLine]", "f[cfgTaskID]_[iter]",
         "g[cfgID]", "h[cfgName]", "i[cfgLogName]", "d_[date]", "k[nothing]", "l,m", "n \udcff\u00e4",
         "d0", "e_1", "o[iter]" + "x" * 500]
EXISTING = ["in.bin", "in.bin", "more.bin", "empty.bin", "none.bin"]
LOGS = ["log.txt", "log.txt", "log_[host].txt", "{root}/logs/[iter].txt", "[cfgLogName].txt", " ", "folder"]
TABLES = ["res.csv", "res.csv", "res_[host].csv", "t/[cfgName].csv", "{root}/all.csv", "q/r/s/res.csv",
          "res[iter].csv", "[cfgPath]res[cfgline].csv", " ", "folder",
          "{root}/" + "r" * 150 + "/" + "q" * 100 + ".csv"]

# For tests that do what is meant: nothing else tells whether the totals are right.
GOOD_WAITS = ["0", "0", " ", "1", "20"]
GOOD_CHUNKS = ["1", "4", "64", " 7 ", "4294967297"]
GOOD_ITERATIONS = ["1", "1", "2", "3"]
GOOD_FOLDERS = ["", "", "[cfgPath]", "[temp]", "./", "../", "s/", "s//[host]/", "u\\s[iter]/",
                "v[cfgline]/../", "{root}/x/"]
GOOD_NAMES = ["d", "e", "d[host]", "d[HOST]_[iter]", "e_[Iter]", "d0", "e_1"]
GOOD_SOURCES = [("in.bin", "3"), ("more.bin", "3"), ("[cfgPath]./in.bin", "3")]
GOOD_LOGS = LOGS[:-1]
GOOD_TABLES = ["res.csv", "res_[host].csv", "{root}/all.csv", "res[iter].csv", "[cfgPath]res[cfgline].csv"]

# Where the settings files stand below the root; "../" never leads out of it.
PLACE = "one/two/three"
FILES = ["run12.bst", "b_init-3.BST", "7.bst", "cfg.bst", "a b.bst", "last-1-2.bst"]


@dataclasses.dataclass
class Case:
    """Files below a root, and how marrowbench is started there."""
    files: dict  # content by path
    named: list  # paths as they are named on the command line
    hosts: list  # names of the clients; empty: this one


class Maker:
    """Makes the lines of a case's settings files."""

    def __init__(self, random, root, is_good):
        self.random, self.root, self.is_good = random, root, is_good
        self.pool = [self.dest() for _ in range(4)]
        self.written = list(GOOD_SOURCES)  # what good lines can read, and with how many iterations

    def one_of(self, values):
        return self.random.choice(values).replace("{root}", str(self.root))

    def happens(self, probability):
        return self.random.random() < probability

    def dest(self):
        return self.one_of(FOLDERS) + self.one_of(NAMES) + ".bin"

    def number(self, values):
        return self.one_of(BAD_NUMBERS if self.happens(0.02) else values)

    def kind(self):
        """Source and dest; most are of the pool, so that lines meet the files of others."""
        source = self.one_of(self.pool if self.happens(0.6) else EXISTING)
        dest = self.one_of(self.pool) if self.happens(0.7) else self.dest()
        memory = self.one_of(MEMORY)
        return self.random.choice([(memory, dest), (memory, dest), (source, memory), (source, dest),
                                   (memory, self.one_of([" ", "", memory]))])

    def test(self):
        fields = [self.one_of(METHODS), self.one_of(FLAGS), self.one_of(FLAGS),
                  *map(self.number, (WAITS, CHUNKS, BUFFERS, SIZES, ITERATIONS, CACHE_MODES)),
                  *self.kind(), self.one_of(LOGS), self.one_of(TABLES), self.one_of(DONE)]
        # Nobody waits so long after each of many chunks.
        if fields[3] == "70000" and fields[4] != "64":
            fields[3] = "0"
        # Nor is 1 GiB written.
        if self.happens(0.05):
            fields[6:8] = ["1048577", self.one_of(["0", "-1"])]
        if self.happens(0.05):
            del fields[self.random.randrange(1, len(fields)):]
        return ";".join(fields)

    def good_test(self):
        """A test that works; what it writes can be read by later ones."""
        method = self.one_of(["posix", "posix", "AnsiC", "Stream"])
        source, iterations = "MEMORY", self.one_of(GOOD_ITERATIONS)
        dest = self.one_of(GOOD_FOLDERS) + self.one_of(GOOD_NAMES) + ".bin"
        if method == "AnsiC":
            dest = f"fresh_[host]_[cfgID]_[cfgline]_[iter]_{len(self.written)}.bin"
        if self.happens(0.6):
            source, most = self.random.choice(self.written)
            iterations = min(iterations, most)
        if source != "MEMORY" and (source == dest or self.happens(0.5)):
            dest = "MEMORY"
        if dest != "MEMORY":
            self.written.append((dest, iterations))
        numbers = map(self.one_of, (GOOD_WAITS, GOOD_CHUNKS, BUFFERS, SIZES))
        return ";".join([method, self.one_of(FLAGS), self.one_of(FLAGS), *numbers, iterations,
                         self.one_of(CACHE_MODES), source, dest, self.one_of(GOOD_LOGS),
                         self.one_of(GOOD_TABLES), self.one_of(DONE)])

    def line(self):
        if self.is_good and not self.happens(0.01):
            return self.good_test()
        odd = self.random.random()
        if odd < 0.04:
            return self.one_of(["", "  \t", "# a comment", "#;;;", "# marrowctl: allow no-log nolog"])
        if odd < 0.08:
            return self.one_of(["  # indented", "Posx;0;0;0", ";;;", "no method", "\x01", "syst em;1"])
        return self.test() + (" " * 1000 if odd < 0.10 else "")

    def file(self, chain):
        """A settings file; with a chain line it has a line or none behind it."""
        count = 203 if self.happens(0.01) else self.random.randrange(1, 9)
        lines = [self.line() for _ in range(count)]
        if chain:
            lines += [chain, self.one_of(["", "# behind", "posix;0;0;0;4;0;4;1;0;MEMORY;never.bin"])]
        end = self.one_of(["\n", "\n", "\n", "\r\n"])
        mark = "\ufeff" if self.happens(0.03) else ""
        return (mark + end.join(lines) + self.one_of([end, ""])).encode(errors="surrogateescape")

    def chain_to(self, name, is_there):
        """A chain line to a settings file in the current folder."""
        if is_there:
            return self.one_of([name, f" [cfgPath]{name}\t", f".\\{name}"])
        return self.one_of(["never.bst", "[cfgPath]not_[cfgName].BST",
                            "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;r.bst"])


def random_case(random, root, may_name_hosts):
    """One to three settings files, of which the first chain to the next."""
    maker = Maker(random, root, is_good=random.random() < 0.5)
    names = random.sample(FILES, 3)
    chains = random.choice([0, 0, 0, 1, 2])
    is_next_missing = maker.happens(0.1)
    files = {"in.bin": b"i" * 5000, "more.bin": b"m" * 200000, "empty.bin": b"", "folder/file": b""}
    for i, name in enumerate(names):
        is_chained = i < chains or (i == chains and is_next_missing)
        chain = maker.chain_to(names[(i + 1) % 3], i < chains) if is_chained else ""
        files[name] = maker.file(chain)
    folder = f"{root}/{PLACE}/" if maker.is_good or maker.happens(0.8) else random.choice(["", "./"])
    named = [names[0], names[2]] if chains < 2 and not is_next_missing and maker.happens(0.2) else names[:1]
    hosts = random.choice([[], [], [], ["pc1"], ["node-7.lab.x"], ["pc1", "pc2"]])
    return Case({f"{PLACE}/{name}": content for name, content in files.items()},
                [folder + name for name in named], hosts if may_name_hosts else [])
