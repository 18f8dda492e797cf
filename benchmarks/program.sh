#!/bin/sh
# program.sh ACCREDIT FOLDER: the program on a file of a gigabyte, made in FOLDER and removed again.
# Prints a line a run: what, seconds, peak memory in KiB, separated by tabs.
set -eu
accredit=$1
folder=$2
data=$folder/gigabyte.csv
trap 'rm -f "$data" "$folder/reference.pmml" "$folder/time"' EXIT

python3 - "$data" <<'PYTHON'
import random
import sys
random.seed(1)
colours = ["red", "green", "blue", "violet", "orange", "a longer name of a colour"]
rows = ["%d,%.3f,%.6g,%s,%d,%s" % (i % 97, random.gauss(50, 10), random.expovariate(1e-3), random.choice(colours),
                                   random.randrange(100000), random.choice(["", "yes", "no"]))
        for i in range(100000)]
block = "\n".join(rows) + "\n"
with open(sys.argv[1], "w") as file:
    file.write("count,size,cost,colour,code,answer\n")
    written = 0
    while written < 1_000_000_000:
        file.write(block)
        written += len(block)
PYTHON

run() { # run WHAT COMMAND...
    what=$1
    shift
    /usr/bin/time -f '%e\t%M' -o "$folder/time" "$@" >/dev/null
    printf '%s\t%s\n' "$what" "$(tail -n 1 "$folder/time")"
}
run "learn, 1 GB" "$accredit" learn "$data" --output "$folder/reference.pmml"
run "check against the stored reference, 1 GB" "$accredit" check "$folder/reference.pmml" "$data"
run "check, 1 GB against itself" "$accredit" check "$data" "$data"
run "pandas summarises it once, what learn does" python3 benchmarks/summary_numpy.py "$data"
run "pandas reads it once: read_csv alone" python3 -c \
    'import sys, pandas; pandas.read_csv(sys.argv[1])' "$data"
