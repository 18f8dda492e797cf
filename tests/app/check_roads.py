"""Gives `accredit` the same data through every road, and archives that are unusual, damaged or hostile.

Usage: check_roads.py PROGRAM WEATHER_FOLDER. Files, pipes and archives of the same data must get the same
answer to the last byte. What is cut short or damaged must be refused at its byte and leave an earlier
reference as it was, under limits of memory and time, and nothing may be left of a temporary copy.
"""

import contextlib
import gzip
import os
import re
import resource
import signal
import struct
import subprocess
import sys
import tempfile
import time
import zlib

TIMEOUT = 120
MEMORY = 1 << 30
PIECE = 1 << 17  # of an archive that the program reads at once; its other buffers are twice as long or less

# What stands before the command, in place of the file DATA, and behind.
ROADS = [
    ("", "DATA", ""),
    ("cat DATA |", "-", ""),
    ("(head -c 1; sleep 0.02; head -c 2; sleep 0.02; cat) < DATA |", "-", ""),
    ("", "-", "< DATA"),
    ("(head -n 1 > /dev/null; ", "-", ") < DATA.behind"),
    ("rm -f pipe; mkfifo pipe; cat DATA > pipe & ", "pipe", ""),
    ("", "<(cat DATA)", ""),
    ("", "<(zcat DATA.gz)", ""),
    ("", "<(cat DATA.zst)", ""),
    ("", "DATA.gz", ""),
    ("", "DATA.zst", ""),
    ("cat DATA.gz |", "-", ""),
    ("(head -c 3; sleep 0.02; cat) < DATA.zst |", "-", ""),
    ("", "-", "< DATA.gz"),
    ("", "-", "< DATA.zst"),
    ("rm -f pipe; mkfifo pipe; cat DATA.gz > pipe & ", "pipe", ""),
]
DATA_CALLS = ["learn {} --output -", "learn more.csv {} --output -",
              "learn {} --bins-of stored.pmml --output -", "check {} more.csv --format json",
              "check stored.pmml {} --format json"]
REFERENCE_CALLS = ["show {} --format json", "check {} more.csv --format json",
                   "learn more.csv --bins-of {} --output -"]

# How messages name what is read through them.
NAMES = re.compile(rb"standard input|/dev/fd/\d+|\bpipe\b|\b(comma|semicolon|stored)(\.gz|\.zst)?(?=:)")

SMALL = ("size,kind\n" + "".join(f"{row * row}.{row % 3},{'abc'[row % 3]}\n" for row in range(12))).encode()


class Program:
    """The program in a folder of its own, which has another one for temporary copies."""

    def __init__(self, path, folder):
        self.path = path
        self.folder = folder
        self.copies = os.path.join(folder, "copies")
        os.mkdir(self.copies)
        with open(path, "rb") as file:
            # AddressSanitizer reserves more addresses than any machine has memory.
            self.memory = resource.RLIM_INFINITY if b"__asan" in file.read() else MEMORY

    def write(self, name, contents):
        with open(os.path.join(self.folder, name), "wb") as file:
            file.write(contents)

    def read(self, name):
        with open(os.path.join(self.folder, name), "rb") as file:
            return file.read()

    def start(self, command, copies=None, file_size=resource.RLIM_INFINITY):
        def limit():
            resource.setrlimit(resource.RLIMIT_AS, (self.memory, self.memory))
            resource.setrlimit(resource.RLIMIT_FSIZE, (file_size, file_size))

        return subprocess.Popen(command, cwd=self.folder, env=os.environ | {"TMPDIR": copies or self.copies},
                                preexec_fn=limit, start_new_session=True, stdin=subprocess.PIPE,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def finish(self, process, given=b""):
        """The exit status, standard output, and standard error."""
        try:
            out, err = process.communicate(given, TIMEOUT)
        except BaseException:
            os.killpg(process.pid, signal.SIGKILL)
            raise
        assert os.listdir(self.copies) == [], process.args
        return process.returncode, out, err

    def run(self, *arguments, given=b"", **limits):
        return self.finish(self.start([self.path, *arguments], **limits), given)

    def run_shell(self, line):
        return self.finish(self.start(["bash", "-c", line, self.path]))


def without_time(out):
    return re.sub(rb"<Timestamp>[^<]*</Timestamp>", b"", out)


def zstd(text, *options):
    return subprocess.run(["zstd", "-q", "-c", *options], input=text, stdout=subprocess.PIPE,
                          check=True).stdout


def zstd_frame(blocks, window=0x38, size=None, single_segment=False):
    """A frame of blocks (bytes as they are, or one byte and how often it stands there)."""
    frame = struct.pack("<IB", 0xFD2FB528, (0xC0 if size is not None else 0) | single_segment << 5)
    if not single_segment:
        frame += bytes([window])
    if size is not None:
        frame += struct.pack("<Q", size)
    for number, block in enumerate(blocks, 1):
        last = number == len(blocks)
        contents, length, kind = (block, len(block), 0) if isinstance(block, bytes) else (*block, 1)
        frame += (last | kind << 1 | length << 3).to_bytes(3, "little") + contents
    return frame


def skippable_frame(contents, number=0):
    return struct.pack("<II", 0x184D2A50 + number, len(contents)) + contents


def gzip_member(text, extra=b"", name=b"", comment=b"", header_crc=False):
    flags = bool(header_crc) << 1 | bool(extra) << 2 | bool(name) << 3 | bool(comment) << 4
    header = struct.pack("<HBBIBB", 0x8B1F, 8, flags, 12345, 0, 255)
    if extra:
        header += struct.pack("<H", len(extra)) + extra
    header += b"".join(field + b"\0" for field in (name, comment) if field)
    if header_crc:
        header += struct.pack("<H", zlib.crc32(header) & 0xFFFF)
    deflate = zlib.compressobj(9, zlib.DEFLATED, -zlib.MAX_WBITS)
    return (header + deflate.compress(text) + deflate.flush() +
            struct.pack("<II", zlib.crc32(text), len(text)))


def bgzip_block(text):
    """A member whose extra field tells its length, as programs for genomes write them."""
    length = len(gzip_member(text, extra=b"BC\2\0\0\0"))
    return gzip_member(text, extra=b"BC\2\0" + struct.pack("<H", length - 1))


def make_files(program, weather):
    """Data with a column that can hardly be compressed, so that the archives are longer than a piece."""
    with open(os.path.join(weather, "seattle-2012-2014.csv"), encoding="ascii") as file:
        heading, *rows = file.read().splitlines()

    def data(count, salt):
        noise = (zlib.crc32(b"%d %d" % (salt, i)) / 1000 for i in range(count))
        return "\n".join([heading + ",noise", *(f"{rows[i % len(rows)]},{value}"
                                                for i, value in enumerate(noise)), ""]).encode()

    comma = data(14 * len(rows), 1)
    program.write("more.csv", data(3 * len(rows), 2))
    for name, contents in (("comma", comma), ("semicolon", comma.replace(b",", b";"))):
        program.write(name, contents)
        archives = gzip.compress(contents), zstd(contents)
        assert min(map(len, archives)) > 1.2 * PIECE and len(contents) > 5 * PIECE
        program.write(name + ".gz", archives[0])
        program.write(name + ".zst", archives[1])
    for arguments in (["more.csv", "--output", "stored.pmml"],
                      ["more.csv", "--output", "stored", "--categorical", "noise", "--categorical", "date"]):
        assert program.run("learn", *arguments)[0] == 0, arguments
    stored = program.read("stored")
    assert len(stored) > PIECE, len(stored)
    program.write("stored.gz", gzip.compress(stored))
    program.write("stored.zst", zstd(stored))
    assert program.run("learn", "-", "--output", "small.pmml", given=SMALL)[0] == 0
    for name in "comma", "semicolon", "stored":
        program.write(name + ".behind", b"a line before\n" + program.read(name))


def check_roads(program):
    """The same through all roads, and whatever the delimiter is."""
    count = 0
    for names, calls in ((("comma", "semicolon"), DATA_CALLS), (("stored",), REFERENCE_CALLS)):
        for call in calls:
            wanted = None
            for name in names:
                for before, word, behind in ROADS:
                    line = f'{before} "$0" {call.format(word)} {behind}'.replace("DATA", name)
                    status, out, err = program.run_shell(line)
                    # The messages name what was read, and the account the delimiter.
                    err = NAMES.sub(b"it", err).replace(b"semicolons", b"commas")
                    answer = status, without_time(out), err
                    wanted = wanted or answer
                    assert answer == wanted and status == 0 and out, (line, status, err, wanted[2])
                    count += 1
    return count


def learn_and_check(program, contents, reference="small.pmml"):
    """What becomes of contents that are learned from a file, and checked through a pipe."""
    program.write("data", contents)
    return [program.run("learn", "data", "--output", "-"),
            program.run("check", reference, "-", "--format", "json", given=contents)]


def answers(results):
    return [(status, without_time(out)) for status, out, _ in results]


def wanted_answers(program, text, reference="small.pmml"):
    wanted = answers(learn_and_check(program, text, reference))
    assert [status for status, _ in wanted] == [0, 0], wanted
    return wanted


def require_refusal(program, contents, message):
    """Also that the earlier reference stays."""
    program.write("data", contents)
    program.write("earlier.pmml", b"as it was")
    before = sorted(os.listdir(program.folder))
    learned = program.run("learn", "data", "--output", "earlier.pmml")
    checked = program.run("check", "small.pmml", "-", given=contents)
    for name, result in (("data", learned), ("standard input", checked)):
        assert result == (2, b"", f"accredit: {name}: {message}\n".encode()), (contents[:99], message, result)
    assert program.read("earlier.pmml") == b"as it was"
    assert sorted(os.listdir(program.folder)) == before


def check_archives(program):
    """Archives as other programs make them, and what is put behind them."""
    text = program.read("more.csv")
    wanted = wanted_answers(program, text, "stored.pmml")
    half = len(text) // 2 + 1  # within a row
    halves = text[:half], text[half:]
    raw = [text[i:i + 999] for i in range(0, len(text), 999)]
    pack = gzip.compress
    read = {
        "members": b"".join(map(pack, halves)),
        "empty members": pack(b"").join([b"", *map(pack, halves), b""]),
        "a member a byte": b"".join(pack(text[i:i + 1]) for i in range(999)) + pack(text[999:]),
        "many empty members": pack(b"") * 100_000 + pack(text),
        "padding": pack(text) + bytes(512),
        "padding longer than a piece": pack(text) + bytes(3 * PIECE),
        "name, comment, extra field, checksum": gzip_member(text, b"AB\2\0cd", b"a,b\nc", b"d;e", True),
        "blocks as of bgzip": b"".join(map(bgzip_block, [*raw, b""])),
        "stored": gzip.compress(text, 0),
        "frames": b"".join(map(zstd, halves)),
        "empty frames": zstd(b"").join([b"", *map(zstd, halves), b""]),
        "skippable frames": skippable_frame(b"a,b\n").join(
            [skippable_frame(b"", 15), *map(zstd, halves), skippable_frame(bytes(2 * PIECE), 7)]),
        "no checksum": zstd(text, "--no-check"),
        "raw blocks, largest window": zstd_frame(raw, 17 << 3),
        "blank lines": zstd_frame([(b"\n", PIECE)] * 128 + raw),
    }
    for label, contents in read.items():
        results = learn_and_check(program, contents, "stored.pmml")
        assert answers(results) == wanted, (label, results)
    further = "the bytes from here on belong to no archive"
    gz, zst = gzip.compress(SMALL), zstd(SMALL)
    long_frame = skippable_frame(bytes(PIECE - 8 - len(zst) + 4)) + zst  # ends with the first piece
    shorter_frame = skippable_frame(bytes(PIECE - 8 - len(zst) + 2)) + zst  # two bytes before that
    for contents, whole in ((gz + b"1.5,a\n", len(gz)), (gz + bytes(9) + b"\n", len(gz) + 9),
                           (gz + zst, len(gz)), (zst + b"1.5,a\n", len(zst)), (zst + gz, len(zst)),
                           (long_frame + b"1.5,a\n", len(long_frame)), (zst + b"\n", len(zst)),
                           (zst + b"\xFF\xFF\xFF", len(zst)),
                           (shorter_frame + b"1.5,a\n", len(shorter_frame))):
        require_refusal(program, contents, f"byte {whole + 1}: {further}")
    for name, file in (("gzip", "comma.gz"), ("zstd", "comma.zst")):
        require_refusal(program, program.read(file)[:PIECE + 7],
                        f"byte {PIECE + 7}: the {name} archive ends here, too early")
    cut = program.read("stored.gz")[:-1]
    program.write("cut", cut)
    assert program.run("show", "cut") == (
        2, b"", f"accredit: cut: byte {len(cut)}: the gzip archive ends here, too early\n".encode())


def check_damage(program):
    """Every length that is too short, and a bit in every byte. The time in a header, say, does not matter."""
    wanted = wanted_answers(program, SMALL)
    gz, zst = gzip_member(SMALL, b"AB\2\0cd", b"small"), zstd(SMALL, "--check")
    skipped = skippable_frame(b"abc")
    alike = 0
    # How many bytes tell such an archive from other files, and the lengths that are too short.
    for name, archive, mark, lengths in (("gzip", gz, 2, range(1, len(gz))),
                                         ("zstd", zst, 2, range(1, len(zst))),
                                         ("zstd", skipped + zst, 4, range(1, len(skipped)))):
        assert answers(learn_and_check(program, archive)) == wanted, name
        for length in lengths:
            if length < mark:  # a heading without rows
                assert learn_and_check(program, archive[:length])[0][:2] == (2, b""), length
            else:
                require_refusal(program, archive[:length],
                                f"byte {length}: the {name} archive ends here, too early")
        for place in range(lengths.stop):
            damaged = bytearray(archive)
            damaged[place] ^= 1 << place % 8
            results = learn_and_check(program, damaged)
            if answers(results) == wanted:
                alike += 1
                continue
            for status, out, err in results:
                assert (status, out) == (2, b"") and err.startswith(b"accredit: "), (name, place, results)
    return alike


def check_hostile(program):
    """Archives that claim much memory, and those that become much longer than they are."""
    wide = zstd(SMALL, "--long=30")
    needs_window = ("the zstd archive needs a window of more than 128 MiB; 'zstd -dc --long=31 FILE' and a "
                    "pipe to '-' can give it that")
    cases = [wide, zstd_frame([SMALL], 17 << 3 | 1), zstd_frame([SMALL], 0xFF),
             zstd_frame([SMALL], size=1 << 62, single_segment=True)]
    for contents in cases:
        require_refusal(program, contents, f"byte 5: {needs_window}")
    assert zstd(wide, "-d", "--long=31") == SMALL  # as the message says

    claim = zstd_frame([SMALL], size=1 << 62)
    for status, out, err in learn_and_check(program, claim):
        assert (status, out) == (2, b"") and b"the zstd archive is damaged" in err, err
    require_refusal(program, skippable_frame(b"")[:4] + b"\xFF" * 4 + SMALL,
                    f"byte {8 + len(SMALL)}: the zstd archive ends here, too early")
    endless = zstd_frame([b'size,kind\n1,"'] + [(b"a", PIECE)] * 1024)
    for status, out, err in learn_and_check(program, endless):
        assert (status, out) == (2, b"") and b"16 MiB" in err, err

    program.write("bomb", zstd_frame([(b"\n", PIECE)] * 10240))
    started = time.monotonic()
    status, out, err = program.run("check", "small.pmml", "bomb")
    assert (status, out) == (2, b"") and b"becomes more than 250 times as long" in err, (status, err)
    return time.monotonic() - started


def wait_for_copy(program, process):
    """Until the program waits for more of its pipe. The copy is the user's alone and has no name."""
    for _ in range(100 * TIMEOUT):
        with open(f"/proc/{process.pid}/stat", encoding="ascii") as file:
            waits = file.read().rpartition(")")[2].split()[0] == "S"
        copies = []
        for descriptor in os.listdir(f"/proc/{process.pid}/fd"):
            path = f"/proc/{process.pid}/fd/{descriptor}"
            with contextlib.suppress(FileNotFoundError):
                if os.readlink(path).startswith(program.copies + "/"):
                    copies.append(os.stat(path))
        if waits and copies and copies[0].st_size > 0:
            assert copies[0].st_nlink == 0 and copies[0].st_mode & 0o777 == 0o600, copies
            return
        time.sleep(0.01)
    raise RuntimeError("no temporary copy")


def check_copies(program):
    """No room for the copy, no folder for it, and signals while it is made."""
    big = program.read("comma")
    nowhere = os.path.join(program.folder, "nowhere")
    program.write("earlier.pmml", b"as it was")
    for limits, why in (({"copies": nowhere}, "No such file or directory"),
                        ({"file_size": 1 << 19}, "File too large")):
        folder = limits.get("copies", program.copies)
        complaint = (f"accredit: standard input: a temporary copy in {folder}, for the further passes: "
                     f"{why}; TMPDIR can name another folder\n").encode()
        for arguments in (["learn", "-", "--output", "earlier.pmml"], ["check", "-", "more.csv"]):
            result = program.run(*arguments, given=big, **limits)
            assert result == (2, b"", complaint), result
        # What can be read again, or is read once, needs no copy.
        assert program.run("learn", "comma.gz", "--output", "-", **limits)[0] == 0
        assert program.run("check", "stored.pmml", "-", given=big, **limits)[0] == 0
    assert program.run("learn", "-", "--output", "earlier.pmml", given=big + b"1,2\n")[0] == 2
    for number, status in ((signal.SIGTERM, 2), (signal.SIGINT, 2), (signal.SIGKILL, -signal.SIGKILL)):
        process = program.start([program.path, "learn", "-", "--output", "earlier.pmml"])
        process.stdin.write(big)
        process.stdin.flush()
        wait_for_copy(program, process)
        assert os.listdir(program.copies) == []
        process.send_signal(number)
        process.wait(TIMEOUT)
        result = program.finish(process)
        assert result == (status, b"", b"accredit: cancelled\n" if status == 2 else b""), result
    assert program.read("earlier.pmml") == b"as it was"


def main():
    with tempfile.TemporaryDirectory() as folder:
        program = Program(os.path.abspath(sys.argv[1]), folder)
        make_files(program, sys.argv[2])
        calls = check_roads(program)
        check_archives(program)
        alike = check_damage(program)
        seconds = check_hostile(program)
        check_copies(program)
    print(f"{calls} calls with the same answers; {alike} damaged archives read alike; "
          f"a bomb refused after {seconds:.1f} s")


if __name__ == "__main__":
    main()
