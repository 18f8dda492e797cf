"""The summaries of the data-pass benchmark as a user of NumPy and pandas would compute them.

usage: summary_numpy.py FOLDER      the data that data_pass_benchmark --dump=FOLDER wrote
       summary_numpy.py FILE.csv    reads the file and summarises it once, with pandas

For a folder it first checks that both tools find the library's summaries, and then prints one line a
case and tool: the case, the tool, and the least time a value in nanoseconds, separated by tabs.
"""
import pathlib
import sys
import time

import numpy as np
import pandas as pd

GIVEN = np.array([30.0, 40.0, 50.0, 60.0, 70.0])
MISSING = np.finfo(float).min


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
        result.append(([len(values), values.min(), values.max(), mean, deviation], bins))
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


def check(summary, library):
    """Whether a summary is the library's: counts the same, moments to 12 digits."""
    for (kind, *numbers), found in zip(library, summary, strict=True):
        if kind:
            counts = found.sort_index() if isinstance(found, pd.Series) else found
            np.testing.assert_array_equal(counts, numbers[5:])
        else:
            moments, bins = found
            np.testing.assert_allclose(moments, numbers[:5], rtol=1e-12)
            np.testing.assert_array_equal(bins, numbers[5:])


def least_time(function, *arguments):
    times = []
    for _ in range(9):
        begin = time.perf_counter()
        function(*arguments)
        times.append(time.perf_counter() - begin)
    return min(times)


def time_folder(folder):
    for data in sorted(folder.glob("*.doubles")):
        for how, given in (("GivenCutPoints", True), ("ComputedCutPoints", False)):
            lines = data.with_suffix(".given" if given else ".computed").read_text().splitlines()
            library = [[float(number) for number in line.split()] for line in lines]
            kinds = [bool(kind) for kind, *_ in library]
            table = np.fromfile(data).reshape(-1, len(kinds))
            table[table == MISSING] = np.nan
            frame = pd.DataFrame(table)
            for tool, function, argument in (("NumPy", summarise_numpy, table),
                                             ("pandas", summarise_pandas, frame)):
                check(function(argument, kinds, given), library)
                seconds = least_time(function, argument, kinds, given)
                print(f"{how}/{data.stem.replace('-', '/')}\t{tool}\t{seconds / table.size * 1e9:.3f}")


place = pathlib.Path(sys.argv[1])
if place.is_dir():
    time_folder(place)
else:
    csv = pd.read_csv(place)
    summarise_pandas(csv, [dtype == object for dtype in csv.dtypes], False)
