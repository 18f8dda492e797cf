"""Shows that the nodes behind a table do the work and that only counts travel.

PostgreSQL: each query that the program shows is explained:
every node groups by itself, all at the same time, and hands over no more rows than there are groups. MariaDB:
the nodes' logs have nothing but aggregates.
"""

import random
import re

from engines import NODES, columns_of
from exact import require
from harness import run_checks
import tables

CATEGORIES = 7


def shown_queries(complaints):
    """The queries that --verbose shows, with their numbers put in."""
    for heading, sql in re.findall(r"^-- (query [^\n]*)\n(.*?);$", complaints, re.M | re.S):
        numbers = iter(heading.partition("; with ")[2].split(", "))
        yield re.sub(r"\?", lambda _: f"({next(numbers)})::float8", sql)


def check_plans(engine, queries):
    most = 0
    for sql in queries:
        plan = engine.ask("BEGIN; SET LOCAL enable_partitionwise_aggregate = on; "
                          f"EXPLAIN (ANALYZE, VERBOSE) {sql}; ROLLBACK")
        scans = re.findall(r"^ *-> +((?:Async )?Foreign Scan)[^\n]*actual time=\S+ rows=(\d+) loops=1\)(.*?)"
                           r"(?=^ *->|\Z)", plan, re.M | re.S)
        require(len(scans) == NODES, len(scans), plan)
        for kind, rows, rest in scans:
            remote = re.search(r"Remote SQL: (.*)", rest).group(1)
            require(kind == "Async Foreign Scan", plan)
            require("GROUP BY" in remote, remote)
            require(int(rows) <= CATEGORIES + 1, rows, remote)
            most = max(most, int(rows))
    print(f"  {len(queries)} queries; a node hands over at most {most} rows")


def check_postgresql(accredit, engine):
    over = ("--sql", engine.connection(), "--table", "spread_nodes", "--shard-by", "shard", "--verbose")
    for arguments in (("learn", *over, "--output", "nodes.pmml"), ("check", "nodes.pmml", *over)):
        queries = list(shown_queries(accredit.run(*arguments)[1]))
        require(len(queries) > 2, queries)
        # The first asks for no rows.
        check_plans(engine, [sql for sql in queries if "1 = 0" not in sql])


def check_mariadb(accredit, engine):
    for node in range(1, NODES + 1):
        engine.ask("SET GLOBAL log_output = 'TABLE'; TRUNCATE mysql.general_log; SET GLOBAL general_log = 1", node)
    over = ("--sql", engine.connection(), "--table", "spread_nodes", "--ignore", "shard")
    accredit.run("learn", *over, "--output", "nodes.pmml")
    accredit.run("check", "nodes.pmml", *over)
    for node in range(1, NODES + 1):
        engine.ask("SET GLOBAL general_log = 0", node)
        asked = engine.ask("SELECT argument FROM mysql.general_log WHERE command_type IN ('Query', 'Execute') "
                           "AND argument LIKE 'select%spread%'", node).splitlines()
        require(len(asked) > 4, node, asked)
        for sql in asked:
            require(re.match(r"select (distinct |(sum|count|min|max)\()", sql) or " group by " in sql, node, sql)
    print(f"  {len(asked)} queries to a node, all of them aggregates")


def check_engine(accredit, engine, findings, _):
    rng = random.Random(12)
    columns = {**tables.numbers(rng, 3000, False), "c": [f"c{rng.randrange(CATEGORIES)}" for _ in range(3000)]}
    path = accredit.file("spread.csv")
    tables.write(path, columns)
    engine.load(path, "spread", columns_of(path))
    findings.attempt(check_postgresql if engine.name == "postgresql" else check_mariadb, accredit, engine)


if __name__ == "__main__":
    run_checks(__doc__, check_engine, "postgresql", "mariadb")
