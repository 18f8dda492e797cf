"""The summaries of the data-pass benchmark as a user of NumPy and pandas would compute them.

Prints one line a case: the shape, how (given or computed cut points), the tool, and the median time a
value in nanoseconds. The shapes and the data are those of DataPassBenchmark.cpp: 2^20 values, records
row by row, 12 categories, normal values around 50 with deviation 10, a tenth missing or none.
"""
import sys
import time

import numpy as np
import pandas as pd

VALUES = 1 << 20
CATEGORIES = 12
GIVEN = np.array([30.0, 40.0, 50.0, 60.0, 70.0])
SHAPES = {"10 continuous": (10, 0), "10 categorical": (0, 10), "100 mixed": (50, 50)}


def make_table(continuous, categorical, missing):
    rng = np.random.default_rng(1)
    width = continuous + categorical
    rows = VALUES // width
    table = np.empty((rows, width))
    is_categorical = [(i + 1) * categorical // width > i * categorical // width for i in range(width)]
    for column, take_categorical in enumerate(is_categorical):
        if take_categorical:
            table[:, column] = rng.integers(0, CATEGORIES, rows)
        else:
            table[:, column] = rng.normal(50.0, 10.0, rows)
    if missing:
        table[rng.random(table.shape) < 0.1] = np.nan
    return table, is_categorical


def cuts_of(mean, deviation, given):
    if given:
        return GIVEN
    return np.array([mean - 2 * deviation, mean - deviation, mean, mean + deviation, mean + 2 * deviation])


def summarise_numpy(table, is_categorical, given):
    result = []
    for column, take_categorical in enumerate(is_categorical):
        values = table[:, column]
        values = values[~np.isnan(values)]
        if take_categorical:
            result.append(np.bincount(values.astype(np.int64)))
            continue
        mean, deviation = values.mean(), values.std(ddof=1)
        cuts = cuts_of(mean, deviation, given)
        bins = np.bincount(np.searchsorted(cuts, values, side="left"), minlength=6)
        result.append((len(values), values.min(), values.max(), mean, deviation, bins))
    return result


def summarise_pandas(frame, is_categorical, given):
    result = []
    for column, take_categorical in zip(frame.columns, is_categorical):
        values = frame[column]
        if take_categorical:
            result.append(values.value_counts())
            continue
        moments = values.agg(["count", "min", "max", "mean", "std"])
        cuts = cuts_of(moments["mean"], moments["std"], given)
        edges = np.concatenate([[-np.inf], cuts, [np.inf]])
        result.append((moments, pd.cut(values, edges).value_counts(sort=False)))
    return result


def median_time(function, *arguments):
    times = []
    for _ in range(7):
        begin = time.perf_counter()
        function(*arguments)
        times.append(time.perf_counter() - begin)
    return sorted(times)[len(times) // 2]


for name, (continuous, categorical) in SHAPES.items():
    for missing in (False, True):
        table, kinds = make_table(continuous, categorical, missing)
        frame = pd.DataFrame(table)
        for given in (True, False):
            how = "GivenCutPoints" if given else "ComputedCutPoints"
            for tool, seconds in (("NumPy", median_time(summarise_numpy, table, kinds, given)),
                                  ("pandas", median_time(summarise_pandas, frame, kinds, given))):
                label = f"{how}/{name}/{'missing' if missing else 'complete'}"
                print(f"{label}\t{tool}\t{seconds / table.size * 1e9:.3f}")
                sys.stdout.flush()
