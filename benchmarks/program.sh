#!/bin/sh
# program.sh ACCREDIT FOLDER: the program, and what users would take instead, on a file of a gigabyte, made
# in FOLDER and removed again. FOLDER has what benchmarks/peers needs. Prints a line a run: what, seconds,
# processor seconds, peak memory in KiB, separated by tabs.
set -eu
accredit=$1
folder=$2
data=$folder/gigabyte.csv
reference=$folder/reference
trap 'rm -f "$data" "$reference".* "$folder/time"' EXIT

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

# The least of three runs by the time that went by.
run() { # run WHAT COMMAND...
    what=$1
    shift
    for _ in 1 2 3; do
        /usr/bin/time -f '%e\t%U\t%S\t%M' -o "$folder/time" "$@" >/dev/null
        tail -n 1 "$folder/time"
    done | sort -n | awk -F '\t' -v what="$what" \
        'NR == 1 { printf "%s\t%s\t%.2f\t%s\n", what, $1, $2 + $3, $4 }'
}
peer() { # peer WHAT ENGINE TASK
    run "$1" node "$folder/summary_sql.mjs" "$2" "$3" "$data" "$reference.json"
}
"$accredit" learn "$data" --output "$reference.pmml" >/dev/null
"$accredit" show --format json "$reference.pmml" >"$reference.json"
run "\`learn\`" "$accredit" learn "$data" --output "$reference.pmml"
peer "DuckDB, what \`learn\` does" duckdb learn
peer "ClickHouse, what \`learn\` does" clickhouse learn
run "pandas, what \`learn\` does" python3 benchmarks/summary_numpy.py "$data"
run "\`check\` against the stored reference" "$accredit" check "$reference.pmml" "$data"
peer "DuckDB, what \`check\` counts" duckdb check
peer "ClickHouse, what \`check\` counts" clickhouse check
run "pandas, \`read_csv\` alone" python3 -c 'import sys, pandas; pandas.read_csv(sys.argv[1])' "$data"
run "\`check\` of the file against itself" "$accredit" check "$data" "$data"
