"""Servers that fail on purpose while the program asks them.

Each failure ends the program with the exit status 2 in bounded time, with a message that says what to do, and with
nothing written. What the program asked is gone from the server soon after.
"""

import os
import signal
import sqlite3
import subprocess
import time

from engines import columns_of
from exact import require
from harness import Program, run_checks
import tables

SOON = 20  # seconds in which a failure that the server knows of is reported
# Enough rows for minutes, and a volatile condition, so that no engine skips it.
SLOW_ROWS = {
    "postgresql": "SELECT i::float8 AS x, 'a' AS c FROM generate_series(1, 100000) i WHERE pg_sleep(0.003) IS NOT NULL",
    "mariadb": "SELECT seq + 0e0 AS x, 'a' AS c FROM seq_1_to_100000 WHERE sleep(0.003) = 0",
    "sqlite": "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 4000000000) "
              "SELECT i + 0.5 AS x, 'a' AS c FROM n",
}
ACTIVE = {
    "postgresql": "SELECT count(*) FROM pg_stat_activity WHERE usename = 'analyst' AND state = 'active'",
    "mariadb": "SELECT count(*) FROM information_schema.processlist WHERE user = 'analyst' AND command <> 'Sleep'",
}


class Running:
    """The program at work."""

    def __init__(self, accredit, *arguments, password=None):
        self.accredit = accredit
        self.output = accredit.file("out.pmml")
        self.process = subprocess.Popen(
            [accredit.path, "learn", *arguments, "--output", self.output], stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=accredit.environment(password))
        self.begin = time.monotonic()

    def ends(self, words, seconds=SOON):
        """Waits for the end and requires what every failure has in common."""
        begin = time.monotonic()
        try:
            out, err = self.process.communicate(timeout=seconds + 60)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.communicate()
            raise AssertionError(f"still running after {seconds + 60} s") from None
        took = time.monotonic() - begin
        complaint = err.decode()
        require(self.process.returncode == 2, self.process.returncode, complaint)
        for each in words:
            require(each.lower() in complaint.lower(), each, complaint)
        require(took <= seconds, f"took {took:.1f} s", complaint)
        require(not os.path.exists(self.output), "something was written")
        if self.accredit.password:
            require(self.accredit.password not in complaint + out.decode(), "the password is shown")
        print(f"    {took:.1f} s: {complaint.strip()}")


def until(holds, what, seconds=30):
    end = time.monotonic() + seconds
    while not holds():
        require(time.monotonic() < end, what)
        time.sleep(0.05)


def is_busy(engine, node=0):
    return int(engine.ask(ACTIVE[engine.name], node)) > 0


def is_idle_soon(engine, *nodes):
    for node in nodes:
        until(lambda node=node: not is_busy(engine, node), f"a query is still running on {engine.name} {node}")


class Failures:
    """All of one engine."""

    def __init__(self, accredit, engine, findings, quick):
        self.accredit = accredit
        self.engine = engine
        self.findings = findings
        self.quick = quick
        self.has_nodes = engine.name != "sqlite"
        self.end_queries()
        path = accredit.file("small.csv")
        tables.write(path, {"x": [str(i) for i in range(300)], "c": ["a", "b", "c"] * 100})
        engine.drop("slow")
        if self.has_nodes:
            engine.drop("small", 2)
        engine.load(path, "small", columns_of(path))
        engine.ask(f"CREATE VIEW slow AS {SLOW_ROWS[engine.name]}")
        if self.has_nodes:
            self.slow_nodes()

    def slow_nodes(self):
        """`small_nodes` gets a slow second node."""
        engine = self.engine
        engine.drop("small", 2)
        rows = SLOW_ROWS[engine.name]
        engine.ask(f"CREATE VIEW small AS SELECT 2 AS shard, q.* FROM ({rows}) q", 2)

    def learn(self, table, *options, **how):
        return Running(self.accredit, "--sql", self.engine.connection(), "--table", table, *options, **how)

    def over_nodes(self, *options):
        if self.engine.name == "postgresql":
            return self.learn("small_nodes", "--shard-by", "shard", *options)
        return self.learn("small_nodes", "--ignore", "shard", *options)

    def run(self, only):
        names = [name for name in dir(self) if name.startswith("on_") and only in name]
        for name in names:
            self.end_queries()
            print(f"  {self.engine.name}: {name[3:].replace('_', ' ')}", flush=True)
            self.findings.attempt(getattr(self, name))

    def end_queries(self):
        """Those of the program, and what an earlier failure may have left."""

    def begun(self, table="slow", *options):
        running = self.learn(table, *options)
        if self.has_nodes:
            until(lambda: is_busy(self.engine), "no query began")
        time.sleep(0.3)
        return running

    def begun_over_nodes(self, *options):
        running = self.over_nodes(*options)
        until(lambda: is_busy(self.engine, 2), "no query began on the node")
        time.sleep(0.3)
        return running

    def on_an_interrupt(self):
        running = self.begun()
        running.process.send_signal(signal.SIGINT)
        running.ends(["cancelled"])
        if self.has_nodes:
            is_idle_soon(self.engine, 0)

    def on_a_time_out(self):
        self.begun("slow", "--timeout", "1").ends(["--timeout"])
        if self.has_nodes:
            is_idle_soon(self.engine, 0)

    def on_no_such_table(self):
        self.learn("nowhere").ends(["nowhere", "spelled"])

    def on_no_such_shard(self):
        self.learn("small", "--shard-by", "nothing").ends(["nothing"])

    def on_a_password_in_the_connection(self):
        running = Running(self.accredit, "--sql", "Driver=SQLite3;PWD=open sesame", "--table", "small")
        running.ends(["ACCREDIT_PASSWORD"])

    def on_no_driver(self):
        Running(self.accredit, "--sql", "Driver=Nothing;Server=127.0.0.1", "--table", "t").ends(["odbcinst"])

    def on_no_data_source(self):
        Running(self.accredit, "--sql", "DSN=nothing", "--table", "t").ends(["odbcinst"])


class OfServers(Failures):
    """Of engines with servers, and nodes behind them."""

    def on_an_interrupt_of_nodes(self):
        running = self.begun_over_nodes()
        running.process.send_signal(signal.SIGINT)
        running.ends(["cancelled"])
        is_idle_soon(self.engine, *self.told_to_end)

    def on_a_time_out_of_nodes(self):
        self.begun_over_nodes("--timeout", "1").ends(["--timeout"])
        is_idle_soon(self.engine, *self.told_to_end)

    def on_a_wrong_password(self):
        self.learn("small", password="not the password").ends(["analyst", "ACCREDIT_PASSWORD"])

    def on_no_password(self):
        without = Program(self.accredit.path, self.accredit.folder)
        Running(without, "--sql", self.engine.connection(), "--table", "small").ends(["ACCREDIT_PASSWORD"])

    def on_a_table_without_permission(self):
        self.engine.ask("DROP TABLE IF EXISTS secret")
        self.engine.ask("CREATE TABLE secret (x int)")
        self.refuse("secret")
        self.learn("secret").ends(["denied", "SELECT"])

    def on_a_server_that_is_not_there(self):
        connection = self.engine.connection().replace(f"Port={self.engine.port(0)}", "Port=1")
        Running(self.accredit, "--sql", connection, "--table", "small").ends(["is the server running"])

    def on_a_killed_query(self):
        running = self.begun()
        self.end_queries()
        running.ends(["nothing was written"])

    def on_a_killed_node(self):
        running = self.begun_over_nodes()
        self.engine.kill(2)
        try:
            running.ends(["nodes"])
        finally:
            self.engine.restart(2)

    def on_a_node_that_is_not_there(self):
        self.engine.kill(3)
        try:
            self.over_nodes().ends(["nodes"])
        finally:
            self.engine.restart(3)

    def on_a_node_that_does_not_answer(self):
        os.kill(self.engine.pid(3), signal.SIGSTOP)
        try:
            self.over_nodes("--timeout", "2").ends(["--timeout"])
        finally:
            os.kill(self.engine.pid(3), signal.SIGCONT)
        is_idle_soon(self.engine, *self.told_to_end)

    def on_a_restarted_server(self):
        running = self.begun()
        self.engine.restart(0)
        running.ends(["is the server running"])

    def on_a_server_that_does_not_answer(self):
        running = self.begun("slow", "--timeout", "2")
        stopped = self.engine.family(0)
        for pid in stopped:
            os.kill(pid, signal.SIGSTOP)
        try:
            running.ends(["--timeout"])
        finally:
            for pid in stopped:
                os.kill(pid, signal.SIGCONT)
        is_idle_soon(self.engine, 0)

    def on_an_interrupt_of_a_server_that_does_not_answer(self):
        running = self.begun()
        stopped = self.engine.family(0)
        for pid in stopped:
            os.kill(pid, signal.SIGSTOP)
        try:
            running.process.send_signal(signal.SIGINT)
            running.ends(["cancelled"])
        finally:
            for pid in stopped:
                os.kill(pid, signal.SIGCONT)
        is_idle_soon(self.engine, 0)

    def on_a_locked_table(self):
        holder = subprocess.Popen(self.engine.client(), stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
        try:
            holder.stdin.write(self.lock.encode())
            holder.stdin.flush()
            until(self.is_locked, "the table is not locked")
            self.learn("small", "--timeout", "2").ends(["--timeout", "locked"])
            if not self.quick:
                self.learn("small").ends(["lock"], seconds=90)
        finally:
            holder.stdin.close()
            holder.wait()


class OfPostgreSQL(OfServers):
    told_to_end = (0, 2, 3)
    lock = "BEGIN; LOCK TABLE small IN ACCESS EXCLUSIVE MODE; SELECT 1;\n"

    def refuse(self, table):
        self.engine.ask(f"REVOKE SELECT ON {table} FROM analyst")

    def end_queries(self):
        for node in self.engine.servers():
            self.engine.ask("SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE usename = 'analyst'", node)

    def is_locked(self):
        return "t" in self.engine.ask("SELECT true FROM pg_locks WHERE mode = 'AccessExclusiveLock' AND granted "
                                      "AND relation = 'small'::regclass")


class OfMariaDB(OfServers):
    told_to_end = ()  # Spider waits for its nodes, and they are not told
    lock = "LOCK TABLES small WRITE; SELECT 1;\n"

    def refuse(self, table):
        self.engine.ask(f"CREATE DATABASE IF NOT EXISTS hidden; DROP TABLE IF EXISTS hidden.{table}; "
                        f"RENAME TABLE {table} TO hidden.{table}")

    def on_a_table_without_permission(self):
        self.engine.ask("CREATE DATABASE IF NOT EXISTS hidden; CREATE TABLE IF NOT EXISTS hidden.secret (x int)")
        self.learn("hidden.secret").ends(["denied", "SELECT"])

    def end_queries(self):
        self.kill_all("user = 'analyst'")

    def kill_all(self, condition):
        for node in self.engine.servers():
            for line in self.engine.ask(f"SELECT id FROM information_schema.processlist WHERE {condition} "
                                        "AND id <> connection_id()", node).split():
                self.engine.ask(f"KILL {line}", node)

    def is_locked(self):
        return "small" in self.engine.ask("SHOW OPEN TABLES FROM accredit WHERE In_use > 0")

    def on_rows_that_come_between(self):
        """A table without transactions changes between two queries."""
        self.engine.ask("DROP TABLE IF EXISTS growing; CREATE TABLE growing (x double) ENGINE = MyISAM; "
                        "INSERT INTO growing VALUES (1), (2)")
        writer = subprocess.Popen(self.engine.client(), stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
        try:
            writer.stdin.write(b"DELIMITER //\nBEGIN NOT ATOMIC FOR i IN 1..3000000 DO INSERT INTO growing VALUES (i); "
                               b"END FOR; END//\n")
            writer.stdin.close()
        except BrokenPipeError:
            pass
        time.sleep(0.5)
        try:
            self.learn("growing").ends(["changed meanwhile"])
        finally:
            writer.kill()
            writer.wait()
            self.kill_all("info LIKE '%INTO growing%'")


class OfSQLite(Failures):
    def on_no_file(self):
        Running(self.accredit, "--sql", "sqlite:nowhere.db", "--table", "small").ends(["nowhere.db"])
        require(not os.path.exists("nowhere.db"), "a file was made")

    def on_another_file(self):
        Running(self.accredit, "--sql", f"sqlite:{self.accredit.file('small.csv')}", "--table", "small").ends(
            ["not a database"])

    def on_a_locked_file(self):
        with sqlite3.connect(self.engine.file, isolation_level=None) as holder:
            holder.execute("BEGIN EXCLUSIVE")
            self.learn("small", "--timeout", "2").ends(["locked", "try again"])
            if not self.quick:
                self.learn("small").ends(["lock"], seconds=90)
            holder.execute("ROLLBACK")
        holder.close()


KINDS = {"postgresql": OfPostgreSQL, "mariadb": OfMariaDB, "sqlite": OfSQLite}


def check_engine(accredit, engine, findings, given):
    KINDS[engine.name](accredit, engine, findings, given.quick).run(given.only)


if __name__ == "__main__":
    run_checks(__doc__, check_engine, *KINDS)
