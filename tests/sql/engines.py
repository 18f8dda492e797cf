"""Starts, fills and stops SQL engines for tests, on loopback and in a folder of their own.

PostgreSQL: a coordinator and three nodes behind it, foreign partitions of its tables. MariaDB: a head with
Spider and three nodes. ClickHouse: three nodes. SQLite: a file. Nothing of the system's own servers is used
but their programs. As root the servers run as the users that their packages made.

Everybody on the machine can reach the ports, so the servers want a password: that of `analyst`, who may read.
Administration goes through sockets in the folder.
"""

import argparse
import contextlib
import csv
import fcntl
import glob
import itertools
import json
import os
import re
import secrets
import shlex
import shutil
import signal
import socket
import sqlite3
import subprocess
import sys
import time

NODES = 3
PATIENCE = 90
DECIMAL = re.compile(r"[+-]?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][+-]?[0-9]+)?")
WHOLE = re.compile(r"[+-]?[0-9]{1,18}")
EMPTY = re.compile(rb'"(?:[^"]|"")*"|(?<![^,])(?=,|\r?\n|$)')


def records(path):
    """The records of a CSV file, each with its line end; quoted fields may hold line ends."""
    with open(path, "rb") as file:
        record, open_quote = b"", False
        for line in file:
            record += line
            open_quote ^= line.count(b'"') % 2
            if not open_quote:
                yield record
                record = b""


def with_nulls(record, null):
    """The record with another text for fields that are empty and not quoted."""
    return EMPTY.sub(lambda match: match.group() or null, record)


class Column:
    """A column of a CSV file: its name, whether it is of whole numbers, doubles or texts, and what it holds."""

    def __init__(self, name):
        self.name = name
        self.kind = "whole"
        self.nullable = False
        self.width = 0

    def see(self, cell):
        if not cell:
            self.nullable = True
            return
        self.width = max(self.width, len(cell))
        if self.kind == "whole" and not WHOLE.fullmatch(cell):
            self.kind = "double"
        if self.kind == "double" and not DECIMAL.fullmatch(cell):
            self.kind = "text"


def columns_of(path):
    """The columns with kinds that hold every cell; one without any is of doubles."""
    with open(path, encoding="utf-8", newline="") as file:
        rows = csv.reader(file)
        columns = [Column(name) for name in next(rows)]
        for row in rows:
            for column, cell in zip(columns, row):
                column.see(cell)
    for column in columns:
        if not column.width:
            column.kind = "double"
    return columns


def free_ports(count):
    held = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [each.getsockname()[1] for each in held]
    for each in held:
        each.close()
    return ports


def run(command, given=None, env=None):
    """The output of a command; given are its input or parts of that."""
    if given is None or isinstance(given, str):
        given = [(given or "").encode()]
    process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               env={**os.environ, **(env or {})})
    try:
        for part in given:
            process.stdin.write(part)
        process.stdin.close()
    except BrokenPipeError:
        pass
    with process.stdout:
        output = process.stdout.read().decode(errors="replace")
    if process.wait():
        raise RuntimeError(f"{command[0]}: {output}")
    return output


def shared_out(path):
    """For each node what the records of its third are, without the heading."""
    return [itertools.islice(records(path), 1 + node, None, NODES) for node in range(NODES)]


class Engine:
    """Servers of one kind. Number 0 is the head, the others are the nodes behind it."""

    owner = None  # the user that runs them if we are root
    reads_exactly = True  # texts as the doubles nearest to them
    ports_each = 1
    stop_signal = signal.SIGTERM

    def __init__(self, folder, state):
        self.folder = os.path.join(os.path.abspath(folder), self.name)
        self.state = state.setdefault(self.name, {})
        self.password = state.setdefault("password", secrets.token_hex(8))

    def place(self, node):
        return os.path.join(self.folder, str(node))

    def port(self, node=0, which=0):
        return self.state["ports"][node * self.ports_each + which]

    def pid(self, node):
        return self.state["pids"][node]

    def as_owner(self, command):
        if os.getuid():
            return command
        return ["setpriv", f"--reuid={self.owner}", f"--regid={self.owner}", "--clear-groups", *command]

    def start(self):
        os.makedirs(self.folder, mode=0o700)
        if not os.getuid():
            os.chmod(os.path.dirname(self.folder), 0o711)
            shutil.chown(self.folder, self.owner, self.owner)
            if subprocess.run(self.as_owner(["test", "-w", self.folder]), check=False).returncode:
                raise RuntimeError(f"{self.owner} cannot get to {self.folder}; take a folder such as one in /tmp")
        self.state["ports"] = free_ports((NODES + 1) * self.ports_each)
        self.state["pids"] = [None] * (NODES + 1)
        self.prepare()
        for node in self.servers():
            self.launch(node)
        for node in self.servers():
            self.wait_for(node)
        self.set_up()

    def servers(self):
        return range(NODES + 1)

    def prepare(self):
        """Makes the empty databases: one, and copies of it."""
        run(self.as_owner(self.new_database(self.place(0))))
        for node in range(1, NODES + 1):
            run(self.as_owner(["cp", "-a", self.place(0), self.place(node)]))

    def launch(self, node):
        with open(self.place(node) + ".log", "ab") as log:
            process = subprocess.Popen(self.as_owner(self.server(node)), stdin=subprocess.DEVNULL, stdout=log,
                                       stderr=log, cwd="/", start_new_session=True)
        self.state["pids"][node] = process.pid

    def wait_for(self, node):
        """Until the server answers."""
        end = time.monotonic() + PATIENCE
        while True:
            try:
                self.ask("SELECT 1", node, database=None)
                return
            except RuntimeError as error:
                if not is_alive(self.pid(node)) or time.monotonic() > end:
                    with open(self.place(node) + ".log", encoding="utf-8", errors="replace") as log:
                        raise RuntimeError(f"{error}\n{log.read()[-3000:]}") from None
                time.sleep(0.1)

    def stop(self):
        self.end(self.servers(), self.stop_signal)
        shutil.rmtree(self.folder, ignore_errors=True)

    def end(self, nodes, with_signal, patience=PATIENCE):
        """Sends the signal, and after some patience kills what is left of the servers and their children."""
        parents = [pid for pid in map(self.pid, nodes) if pid and is_alive(pid) and self.folder in command_line(pid)]
        pids = [*parents, *itertools.chain(*map(children_of, parents))]
        for pid in parents:
            os.kill(pid, with_signal)
        end = time.monotonic() + patience
        while any(map(is_alive, pids)):
            if time.monotonic() > end:
                for pid in filter(is_alive, pids):
                    os.kill(pid, signal.SIGKILL)
            time.sleep(0.05)

    def family(self, node):
        """The processes of a server."""
        return [self.pid(node), *children_of(self.pid(node))]

    def clear_up(self, node):
        """Removes what keeps a server that was killed from starting again."""

    def kill(self, node):
        """As if the machine of the node had died."""
        self.end([node], signal.SIGKILL, 0)

    def restart(self, node):
        self.end([node], self.stop_signal)
        self.clear_up(node)
        self.launch(node)
        self.wait_for(node)

    def drop(self, name, node=0):
        """A table or a view, if there is one of this name."""
        for kind in "VIEW", "TABLE":
            try:
                self.ask(f"DROP {kind} IF EXISTS {self.quoted(name)}", node)
            except RuntimeError:
                pass  # it is of the other kind

    def quoted(self, name):
        return self.quote + name.replace(self.quote, 2 * self.quote) + self.quote

    def declared(self, column):
        return self.types[column.kind]

    def doubles(self, table, names):
        """The numbers that the columns of a table hold, None for NULL, in an order of the engine's own."""
        if not names:
            return {}
        rows = self.ask(f"SELECT {', '.join(map(self.quoted, names))} FROM {self.quoted(table)}").splitlines()
        cells = zip(*(row.split("\t") for row in rows))
        return {name: [None if cell == self.null else float(cell) for cell in column]
                for name, column in zip(names, cells)}

    def definitions(self, columns):
        return ", ".join(f"{self.quoted(column.name)} {self.declared(column)}" for column in columns)


class PostgreSQL(Engine):
    name = "postgresql"
    dialect = "postgresql"
    prints = ("--csv",)
    null = ""
    owner = "postgres"
    stop_signal = signal.SIGINT
    quote = '"'
    types = {"whole": "bigint", "double": "double precision", "text": "text"}

    def program(self, name):
        return sorted(glob.glob(f"/usr/lib/postgresql/*/bin/{name}"))[-1]

    def new_database(self, place):
        return [self.program("initdb"), "-D", place, "-U", "postgres", "--auth-local=trust",
                "--auth-host=scram-sha-256", "-E", "UTF8", "--locale=C.UTF-8", "--no-sync"]

    def server(self, node):
        settings = {"port": self.port(node), "listen_addresses": "127.0.0.1",
                    "unix_socket_directories": self.folder, "fsync": "off", "autovacuum": "off",
                    "shared_buffers": "256MB", "max_wal_size": "4GB"}
        return [self.program("postgres"), "-D", self.place(node),
                *itertools.chain(*(("-c", f"{name}={value}") for name, value in settings.items()))]

    def clear_up(self, node):
        for left in self.place(node) + "/postmaster.pid", f"{self.folder}/.s.PGSQL.{self.port(node)}.lock":
            if os.path.exists(left):
                os.remove(left)

    def client(self, node=0, database="accredit"):
        """psql as the administrator."""
        return ["psql", "-X", "-q", "-v", "ON_ERROR_STOP=1", "-h", self.folder, "-p", str(self.port(node)), "-U",
                "postgres", "-d", database or "postgres"]

    def ask(self, sql, node=0, database="accredit"):
        return run([*self.client(node, database), "-A", "-t", "-F", "\t"], sql)

    def set_up(self):
        for node in self.servers():
            self.ask(f"CREATE ROLE analyst LOGIN PASSWORD '{self.password}'", node, None)
            self.ask("CREATE DATABASE accredit", node, None)
            self.ask("ALTER DEFAULT PRIVILEGES GRANT SELECT ON TABLES TO analyst", node)
        self.ask("CREATE EXTENSION postgres_fdw")
        for node in range(1, NODES + 1):
            self.ask(f"CREATE SERVER node{node} FOREIGN DATA WRAPPER postgres_fdw OPTIONS (host '127.0.0.1', "
                     f"port '{self.port(node)}', dbname 'accredit', async_capable 'true')")
            for user in "analyst", "postgres":
                self.ask(f"CREATE USER MAPPING FOR {user} SERVER node{node} "
                         f"OPTIONS (user 'analyst', password '{self.password}')")

    def connection(self, node=0):
        return f"Driver={{PostgreSQL Unicode}};Server=127.0.0.1;Port={self.port(node)};Database=accredit;Uid=analyst"

    def load(self, path, table, columns):
        """The table, and TABLE_nodes over the nodes, with a column shard."""
        names = ", ".join(self.quoted(column.name) for column in columns)
        name, over = self.quoted(table), self.quoted(table + "_nodes")
        definitions = self.definitions(columns)
        copy = f"COPY {name} ({names}) FROM STDIN WITH (FORMAT csv)"
        self.ask(f"DROP TABLE IF EXISTS {name}, {over}; CREATE TABLE {name} ({definitions}); "
                 f"CREATE TABLE {over} (shard int, {definitions}) PARTITION BY LIST (shard)")
        run([*self.client(), "-c", copy], itertools.islice(records(path), 1, None))
        for node, share in enumerate(shared_out(path), 1):
            self.ask(f"DROP TABLE IF EXISTS {name}; CREATE TABLE {name} (shard int DEFAULT {node}, {definitions})",
                     node)
            run([*self.client(node), "-c", copy], share)
            self.ask(f"VACUUM ANALYZE {name}", node)
            self.ask(f"CREATE FOREIGN TABLE {self.quoted(table + str(node))} PARTITION OF {over} FOR VALUES IN "
                     f"({node}) SERVER node{node} OPTIONS (table_name '{table.replace(chr(39), 2 * chr(39))}')")
        self.ask(f"VACUUM ANALYZE {name}")


class MariaDB(Engine):
    name = "mariadb"
    dialect = "mysql"
    prints = ("--batch",)
    null = "NULL"
    owner = "mysql"
    quote = "`"
    types = {"whole": "bigint", "double": "double", "text": "varchar(255)"}

    def new_database(self, place):
        return ["mariadb-install-db", "--no-defaults", f"--datadir={place}",
                "--auth-root-authentication-method=normal", "--skip-test-db"]

    def socket(self, node):
        return os.path.join(self.folder, f"s{node}")

    def server(self, node):
        return ["mariadbd", "--no-defaults", f"--datadir={self.place(node)}", f"--port={self.port(node)}",
                "--bind-address=127.0.0.1", f"--socket={self.socket(node)}", f"--pid-file={self.place(node)}.pid",
                "--character-set-server=utf8mb4", "--local-infile=1", "--innodb-flush-log-at-trx-commit=0",
                "--innodb-buffer-pool-size=512M", f"--tmpdir={self.folder}",
                *(["--plugin-load-add=ha_spider"] if node == 0 else [])]

    def client(self, node=0, database="accredit"):
        """mariadb as the administrator."""
        return ["mariadb", "--no-defaults", "--default-character-set=utf8mb4", "--local-infile=1", "-u", "root",
                f"--socket={self.socket(node)}", *([database] if database else [])]

    def ask(self, sql, node=0, database="accredit"):
        return run([*self.client(node, database), "-N", "-B"], sql)

    def set_up(self):
        for node in self.servers():
            self.ask("CREATE DATABASE accredit; DELETE FROM mysql.global_priv WHERE user = ''; FLUSH PRIVILEGES; "
                     f"CREATE USER analyst@'%' IDENTIFIED BY '{self.password}'; "
                     "GRANT SELECT ON accredit.* TO analyst@'%'", node, None)
        for node in range(1, NODES + 1):
            self.ask(f"CREATE SERVER node{node} FOREIGN DATA WRAPPER mysql OPTIONS (HOST '127.0.0.1', "
                     f"PORT {self.port(node)}, DATABASE 'accredit', USER 'analyst', PASSWORD '{self.password}')")

    def connection(self, node=0):
        return f"Driver={{MariaDB Unicode}};Server=127.0.0.1;Port={self.port(node)};Database=accredit;Uid=analyst"

    def declared(self, column):
        return "longtext" if column.kind == "text" and column.width > 255 else self.types[column.kind]

    def load(self, path, table, columns):
        """The table, and TABLE_nodes over the nodes, with a column shard."""
        names = ", ".join(self.quoted(column.name) for column in columns)
        name, over = self.quoted(table), self.quoted(table + "_nodes")
        # Spider does not find a table with a quote in its name.
        part = re.sub(r"\W", "_", table)
        definitions = self.definitions(columns)
        for node, share in enumerate([itertools.islice(records(path), 1, None), *shared_out(path)]):
            target = self.quoted(part) if node else name
            shard = f"shard int NOT NULL DEFAULT {node}, " if node else ""
            self.ask(f"DROP TABLE IF EXISTS {target}; CREATE TABLE {target} ({shard}{definitions})", node)
            run([*self.client(node), "-e",
                 f"LOAD DATA LOCAL INFILE '/dev/stdin' INTO TABLE {target} CHARACTER SET utf8mb4 FIELDS TERMINATED "
                 f"BY ',' OPTIONALLY ENCLOSED BY '\"' ESCAPED BY '' ({names})"],
                (with_nulls(record, b"NULL") for record in share))
            self.ask(f"ANALYZE TABLE {target}", node)
        parts = ", ".join(f"PARTITION p{node} VALUES IN ({node}) COMMENT = 'srv \"node{node}\", table \"{part}\"'"
                          for node in range(1, NODES + 1))
        self.ask(f"DROP TABLE IF EXISTS {over}; CREATE TABLE {over} (shard int NOT NULL, {definitions}) "
                 f"ENGINE = SPIDER COMMENT = 'wrapper \"mysql\"' PARTITION BY LIST (shard) ({parts})")


class ClickHouse(Engine):
    """Has no head: every node knows the others."""

    name = "clickhouse"
    dialect = "clickhouse"
    prints = ("--format", "CSV")
    null = "\\N"
    reads_exactly = False
    owner = "clickhouse"
    ports_each = 3
    types = {"whole": "Int64", "double": "Float64", "text": "String"}

    def servers(self):
        return range(1, NODES + 1)

    def prepare(self):
        shards = "".join(f"<shard><internal_replication>true</internal_replication><replica><host>127.0.0.1</host>"
                         f"<port>{self.port(node)}</port><user>analyst</user><password>{self.password}</password>"
                         "</replica></shard>" for node in self.servers())
        with open(self.folder + "/users.xml", "w", encoding="utf-8") as file:
            file.write(f"""<yandex><profiles><default><max_threads>2</max_threads></default></profiles>
<quotas><default/></quotas><users><analyst><password>{self.password}</password><networks><ip>127.0.0.1</ip></networks>
<profile>default</profile><quota>default</quota></analyst></users></yandex>""")
        for node in self.servers():
            place = self.place(node)
            os.makedirs(place)
            with open(place + "/client.xml", "w", encoding="utf-8") as file:
                file.write(f"<config><host>127.0.0.1</host><port>{self.port(node)}</port><user>analyst</user>"
                           f"<password>{self.password}</password></config>")
            with open(place + "/config.xml", "w", encoding="utf-8") as file:
                file.write(f"""<yandex><logger><level>warning</level><console>1</console></logger>
<listen_host>127.0.0.1</listen_host><tcp_port>{self.port(node)}</tcp_port><http_port>{self.port(node, 1)}</http_port>
<interserver_http_port>{self.port(node, 2)}</interserver_http_port><path>{place}/data/</path>
<tmp_path>{place}/tmp/</tmp_path><user_files_path>{place}/files/</user_files_path>
<format_schema_path>{place}/schemas/</format_schema_path><users_config>{self.folder}/users.xml</users_config>
<default_profile>default</default_profile><default_database>default</default_database><timezone>UTC</timezone>
<mark_cache_size>268435456</mark_cache_size><remote_servers><three>{shards}</three></remote_servers></yandex>""")
        if not os.getuid():
            run(["chown", "-R", f"{self.owner}:", self.folder])

    def server(self, node):
        return ["/usr/sbin/clickhouse-server", f"--config-file={self.place(node)}/config.xml"]

    def client(self, node=1):
        return ["clickhouse-client", f"--config-file={self.place(node)}/client.xml"]

    def ask(self, sql, node=1, database=None):
        return run([*self.client(node), "--multiquery"], sql)

    def set_up(self):
        pass

    def quoted(self, name):
        return "`" + name.replace("\\", "\\\\").replace("`", "\\`") + "`"

    def declared(self, column):
        plain = self.types[column.kind]
        return f"Nullable({plain})" if column.nullable else plain

    def load(self, path, table, columns):
        """TABLE_part on every node, and the table over them, which each node knows."""
        part, name = self.quoted(table + "_part"), self.quoted(table)
        names = ", ".join(self.quoted(column.name) for column in columns)
        for node, share in enumerate(shared_out(path), 1):
            self.ask(f"DROP TABLE IF EXISTS {name}; DROP TABLE IF EXISTS {part}; "
                     f"CREATE TABLE {part} ({self.definitions(columns)}) ENGINE = MergeTree ORDER BY tuple(); "
                     f"CREATE TABLE {name} AS {part} ENGINE = Distributed(three, default, {part}, rand())", node)
            run([*self.client(node), "--query", f"INSERT INTO {part} ({names}) FORMAT CSV"],
                (with_nulls(record, b"\\N") for record in share))


class SQLite(Engine):
    name = "sqlite"
    dialect = "sqlite"
    prints = ("-csv",)
    reads_exactly = False
    quote = '"'
    types = {"whole": "INTEGER", "double": "REAL", "text": "TEXT"}

    def servers(self):
        return []

    def start(self):
        os.makedirs(self.folder)

    @property
    def file(self):
        return os.path.join(self.folder, "data.db")

    def client(self, _node=0):
        return ["sqlite3", "-batch", "-bail", "-init", "/dev/null", self.file]

    def ask(self, sql, _node=0):
        return run([*self.client(), "-separator", "\t"], sql)

    def connection(self, _node=0):
        return f"sqlite:{self.file}"

    def doubles(self, table, names):
        with contextlib.closing(sqlite3.connect(self.file)) as connection:
            return {name: [value for (value,) in connection.execute(
                f"SELECT {self.quoted(name)} FROM {self.quoted(table)}")] for name in names}

    def load(self, path, table, columns):
        """The table, and TABLE_untyped as SQLite makes it by itself, of texts."""
        name, untyped = self.quoted(table), self.quoted(table + "_untyped")
        plain = table.replace("\\", r"\\").replace('"', r"\"")
        given = os.path.abspath(path)
        self.ask(f'DROP TABLE IF EXISTS {name};\nDROP TABLE IF EXISTS {untyped};\n'
                 f'CREATE TABLE {name} ({self.definitions(columns)});\n'
                 f'.import --csv --skip 1 "{given}" "{plain}"\n.import --csv "{given}" "{plain}_untyped"\n')
        for column in columns:
            if column.nullable:
                quoted = self.quoted(column.name)
                self.ask(f"UPDATE {name} SET {quoted} = NULL WHERE {quoted} = ''")


ENGINES = {engine.name: engine for engine in (PostgreSQL, MariaDB, ClickHouse, SQLite)}


def is_alive(pid):
    try:
        os.waitpid(pid, os.WNOHANG)
    except ChildProcessError:
        pass
    try:
        with open(f"/proc/{pid}/stat", encoding="utf-8") as file:
            return file.read().rpartition(")")[2].split()[0] != "Z"
    except FileNotFoundError:
        return False


def command_line(pid):
    with open(f"/proc/{pid}/cmdline", encoding="utf-8", errors="replace") as file:
        return file.read()


def children_of(pid):
    with open(f"/proc/{pid}/task/{pid}/children", encoding="utf-8") as file:
        return [int(word) for word in file.read().split()]


class Engines:
    """The engines that run in a folder, and what is to be known of them between two commands.

    Several commands may be at work in a folder, each with an engine of its own.
    """

    def __init__(self, folder):
        self.folder = os.path.abspath(folder)
        self.path = os.path.join(self.folder, "state.json")
        self.state = {}
        if os.path.exists(self.path):
            with self.locked() as file:
                self.state = json.load(file)

    @contextlib.contextmanager
    def locked(self):
        with open(os.open(self.path, os.O_RDWR | os.O_CREAT, 0o600), "r+", encoding="utf-8") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            yield file

    def engine(self, name):
        return ENGINES[name](self.folder, self.state)

    def running(self):
        return [self.engine(name) for name in ENGINES if name in self.state]

    def save(self, name):
        """Keeps what is to be known of one engine, or that it is gone."""
        with self.locked() as file:
            text = file.read()
            kept = json.loads(text) if text else {"password": self.state["password"]}
            kept.pop(name, None)
            if name in self.state:
                kept[name] = self.state[name]
            file.seek(0)
            file.truncate()
            json.dump(kept, file)

    def start(self, names):
        os.makedirs(self.folder, exist_ok=True)
        for name in names or ENGINES:
            if name in self.state:
                continue
            try:
                self.engine(name).start()
            finally:
                self.save(name)

    def stop(self, names=()):
        for engine in self.running():
            if engine.name in (names or ENGINES):
                engine.stop()
                del self.state[engine.name]
                self.save(engine.name)
        if not any(name in self.state for name in ENGINES) and os.path.exists(self.path):
            shutil.rmtree(self.folder)

    def show(self):
        """How to reach them."""
        print(f"export ACCREDIT_PASSWORD={self.state['password']}")
        for engine in self.running():
            print(f"\n{engine.name}")
            if hasattr(engine, "connection"):
                print(f"  --sql '{engine.connection()}'")
            print(f"  {shlex.join(engine.client())}")
            for node in engine.servers():
                print(f"  {'node ' + str(node) if node else 'head  '}: port {engine.port(node)}, "
                      f"process {engine.pid(node)}")


def main():
    parser = argparse.ArgumentParser(prog="engines", description="SQL engines for tests, in a folder of their own")
    verbs = parser.add_subparsers(dest="verb", required=True)
    for verb, what in (("start", "start them, all of those there are unless named"),
                       ("stop", "stop them, and remove what they left")):
        command = verbs.add_parser(verb, help=what)
        command.add_argument("engine", nargs="*", choices=[*ENGINES, []])
        command.add_argument("folder")
    command = verbs.add_parser("show", help="print how to reach those that run")
    command.add_argument("folder")
    command = verbs.add_parser("client", help="print the command of a client of a node, 0 being the head")
    command.add_argument("engine", choices=ENGINES)
    command.add_argument("folder")
    command.add_argument("node", type=int)
    command = verbs.add_parser("load", help="fill a table from a CSV file by the engine's own loader")
    command.add_argument("engine", choices=ENGINES)
    for name in "folder", "csv", "table":
        command.add_argument(name)
    given = parser.parse_args()
    engines = Engines(given.folder)
    try:
        if given.verb == "load":
            engines.engine(given.engine).load(given.csv, given.table, columns_of(given.csv))
        elif given.verb == "client":
            print(shlex.join(engines.engine(given.engine).client(given.node)))
        elif given.verb == "show":
            engines.show()
        elif given.verb == "start":
            engines.start(given.engine)
            engines.show()
        else:
            engines.stop(given.engine)
    except (OSError, RuntimeError) as error:
        sys.exit(f"engines: {error}")


if __name__ == "__main__":
    main()
