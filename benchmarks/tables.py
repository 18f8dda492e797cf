"""What it costs to learn and check a table where it lies, in CPU seconds of the program and of the servers.

Usage: tables.py BUILD FOLDER docs/benchmarks.md [ROWS]. Starts the engines in FOLDER, fills them, measures, rewrites
the table of the page, and stops them. FOLDER is best one in /tmp: the servers have users of their own.
"""

import os
import random
import re
import resource
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "sql"))
from engines import Engines, columns_of, children_of  # noqa: E402

BLOCK = 100_000
TICKS = os.sysconf("SC_CLK_TCK")


def write_data(path, rows):
    """16 numbers, one of them at an offset of 1e9 and two with missing values, and 4 categories."""
    random.seed(1)
    names = [f"x{i}" for i in range(16)] + ["region", "channel", "plan", "product"]
    lines = []
    for _ in range(min(BLOCK, rows)):
        cells = [("%.2f", "%.3f", "%.0f", "%.6f")[i % 4] % random.gauss(50, 10) for i in range(15)]
        cells.append(repr(1e9 + random.gauss(0, 1)))
        for i in 4, 9:
            if random.random() < 0.05:
                cells[i] = ""
        cells += ["region%d" % (random.random() ** 2 * 5), "channel%d" % (random.random() * 3),
                  "plan%d" % (random.random() ** 2 * 20), "product%d" % (random.random() ** 2 * 1000)]
        lines.append(",".join(cells) + "\n")
    block = "".join(lines)
    with open(path, "w", encoding="utf-8") as file:
        file.write(",".join(names) + "\n")
        for _ in range(rows // len(lines)):
            file.write(block)


def cpu_of(pids):
    """Seconds of processes and of their children, those that have ended included."""
    total = 0.0
    for pid in [*pids, *(child for pid in pids for child in children_of(pid))]:
        with open(f"/proc/{pid}/stat", encoding="utf-8") as file:
            fields = file.read().rpartition(")")[2].split()
        total += sum(map(int, fields[11:15])) / TICKS
    return total


class Bench:
    def __init__(self, build, folder):
        self.accredit = os.path.join(build, "app", "accredit")
        self.fetch = os.path.join(build, "benchmarks", "fetch_rows")
        self.folder = folder
        self.lines = []

    def run(self, *commands, servers=()):
        """CPU seconds in all, and those of each server, for shell commands one after the other."""
        before = [cpu_of([pid]) for pid in servers]
        own = resource.getrusage(resource.RUSAGE_CHILDREN)
        begin = time.monotonic()
        for command in commands:
            done = subprocess.run(command, shell=True, cwd=self.folder, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.PIPE, check=False)
            if done.returncode not in (0, 1):
                raise RuntimeError(f"{command}: {done.stderr.decode()[-2000:]}")
        wall = time.monotonic() - begin
        time.sleep(1)  # until the processes of the connection have ended
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        client = used.ru_utime + used.ru_stime - own.ru_utime - own.ru_stime
        nodes = [cpu_of([pid]) - past for pid, past in zip(servers, before)]
        return client + sum(nodes), wall, nodes

    def add(self, what, learn, check, fetch=None, head=False):
        def shown(figure):
            return "-" if figure is None else f"{figure[0]:.1f} ({figure[1]:.0f})"
        heads = f"{learn[2][0]:.2f} and {check[2][0]:.2f}" if head else "-"
        self.lines.append(f"| {what} | {shown(learn)} | {shown(check)} | {heads} | {shown(fetch)} |")
        print(self.lines[-1], flush=True)

    def table(self, what, connection, table, servers=(), more="", head=False, fetch=None):
        source = f"--sql '{connection}' --table {table} {more}"
        learn = self.run(f"{self.accredit} learn {source} --output table.pmml", servers=servers)
        check = self.run(f"{self.accredit} check table.pmml {source}", servers=servers)
        fetched = fetch and self.run(f"{self.fetch} '{fetch}' {table}", servers=servers)
        self.add(what, learn, check, fetched, head)

    def statements(self, what, client, dialect, table, servers):
        sql = f"{self.accredit} sql --table {table} --dialect {dialect}"
        learn = self.run(f"{sql} | {client} >1.csv", f"{sql} --answers 1.csv | {client} >2.csv",
                         f"{sql} --answers 1.csv --answers 2.csv | {client} >3.csv",
                         f"{self.accredit} learn --answers 1.csv --answers 2.csv --answers 3.csv --output table.pmml",
                         servers=servers)
        check = self.run(f"{self.accredit} sql table.pmml --table {table} --dialect {dialect} | {client} >1.csv",
                         f"{self.accredit} check table.pmml --answers 1.csv", servers=servers)
        self.add(what, learn, check)


def measure(bench, engines, data):
    csv = os.path.basename(data)
    bench.add("the CSV file", bench.run(f"{bench.accredit} learn {csv} --output table.pmml"),
              bench.run(f"{bench.accredit} check table.pmml {csv}"))
    columns = columns_of(data)

    def loaded(name):
        engines.start([name])
        engine = engines.engine(name)
        engine.load(data, "bench", columns)
        return engine, [engine.pid(node) for node in engine.servers()]

    engine, _ = loaded("sqlite")
    bench.table("SQLite", f"sqlite:{engine.file}", "bench",
                fetch=f"Driver=SQLite3;Database={engine.file}")
    engines.stop(["sqlite"])
    engine, pids = loaded("postgresql")
    bench.table("PostgreSQL, one node", engine.connection(), "bench", pids,
                fetch=engine.connection() + ";UseDeclareFetch=1;Fetch=10000")
    bench.table("PostgreSQL, three nodes, `--shard-by`", engine.connection(), "bench_nodes", pids,
                "--shard-by shard", head=True)
    engines.stop(["postgresql"])
    engine, pids = loaded("mariadb")
    bench.table("MariaDB, one node", engine.connection(), "bench", pids, fetch=engine.connection())
    bench.table("MariaDB, three nodes by Spider", engine.connection(), "bench_nodes", pids, head=True)
    engines.stop(["mariadb"])
    engine, pids = loaded("clickhouse")
    client = " ".join([*engine.client(), "--format", "CSV"])
    bench.statements("ClickHouse, one node with a third of the rows, by statements", client, "clickhouse",
                     "bench_part", pids)
    bench.statements("ClickHouse, three nodes, by statements", client, "clickhouse", "bench", pids)
    engines.stop(["clickhouse"])


def main():
    build, folder, page = map(os.path.abspath, sys.argv[1:4])
    rows = int(sys.argv[4]) if len(sys.argv) > 4 else 6_000_000
    os.makedirs(folder, exist_ok=True)
    engines = Engines(os.path.join(folder, "engines"))
    data = os.path.join(folder, "bench.csv")
    write_data(data, rows)
    bench = Bench(build, folder)
    try:
        os.environ["ACCREDIT_PASSWORD"] = ""
        engines.start(["sqlite"])
        os.environ["ACCREDIT_PASSWORD"] = engines.state["password"]
        measure(bench, engines, data)
    finally:
        engines.stop()
        os.remove(data)
    head = [f"{rows:,} rows.", "",
            "| Table | `learn` | `check` | of these, the head | fetching all rows once |", "|---|---|---|---|---|"]
    with open(page, encoding="utf-8") as file:
        text = file.read()
    marks = "<!-- begin tables -->\n", "<!-- end tables -->"
    text = re.sub(f"{marks[0]}.*{marks[1]}", lambda _: marks[0] + "\n".join([*head, *bench.lines]) + "\n" + marks[1],
                  text, flags=re.S)
    with open(page, "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main()
