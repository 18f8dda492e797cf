"""Checks what a schema cannot say of the documents that are given as arguments: arrays hold as many
tokens as they tell, intervals join without gaps, every statistic belongs to a field, counts add up.
"""

import re
import sys
import xml.etree.ElementTree

NAMESPACE = {"": "http://www.dmg.org/PMML-3_1"}
NUMBER = re.compile(r"-?\d+(\.\d+)?(e[-+]?\d+)?")
TOKEN = re.compile(r'"((?:[^"\\]|\\"|\\(?!"))*)"|([^\s"]+)')


def tokens(array, complain):
    """The values of an Array: texts, or numbers."""
    text, kind = array.text or "", array.get("type")
    if text != text.strip() or "\n" in text:
        complain(f"an array with blanks around it or a line break: {text!r}")
    if kind == "string":
        if TOKEN.sub("", text).strip(" "):
            complain(f"an array with a quote out of place: {text!r}")
        values = [quoted.replace('\\"', '"') or plain for quoted, plain in TOKEN.findall(text)]
    else:
        wanted = re.compile(r"\d+") if kind == "int" else NUMBER
        for word in text.split():
            if not wanted.fullmatch(word):
                complain(f"{word!r} in an array of type {kind}")
        values = [float(word) if kind == "real" else int(word) for word in text.split()]
    if int(array.get("n")) != len(values):
        complain(f"an array of {len(values)} tokens that tells of {array.get('n')}")
    return values


def check_bins(stats, valid, complain):
    intervals = stats.findall("Interval", NAMESPACE)
    margins = [(interval.get("leftMargin"), interval.get("rightMargin")) for interval in intervals]
    for left, right in margins:
        if left is not None and right is not None and not float(left) < float(right):
            complain(f"an interval from {left} to {right}")
    for (_, right), (left, _) in zip(margins, margins[1:]):
        if right is None or right != left:
            complain(f"an interval that ends at {right} before one that begins at {left}")
    for array in stats.findall("Array", NAMESPACE):
        frequencies = tokens(array, complain)
        if len(frequencies) != len(intervals):
            complain(f"{len(frequencies)} frequencies for {len(intervals)} intervals")
        if valid is not None and sum(frequencies) != valid:
            complain(f"frequencies that sum to {sum(frequencies)}, not {valid}")


def check_categories(stats, field, valid, complain):
    arrays = [(array.get("type"), tokens(array, complain))
              for array in stats.findall("Array", NAMESPACE)]
    if len(arrays) < 2:
        return
    (kind, values), (_, frequencies) = arrays
    wanted = [value.get("value") for value in field.findall("Value", NAMESPACE)
              if value.get("property", "valid") == "valid"]
    if kind != "string" or values != wanted:
        complain(f"categories {values}, not {wanted}")
    if len(values) != len(frequencies):
        complain(f"{len(frequencies)} frequencies for {len(values)} categories")
    if valid is not None and sum(frequencies) != valid:
        complain(f"frequencies that sum to {sum(frequencies)}, not {valid}")


def check(path, complain):
    root = xml.etree.ElementTree.parse(path).getroot()
    dictionary = root.find("DataDictionary", NAMESPACE)
    fields = dictionary.findall("DataField", NAMESPACE)
    by_name = {field.get("name"): field for field in fields}
    if not len(by_name) == len(fields) == int(dictionary.get("numberOfFields")):
        complain("fields of one name, or a wrong number of fields")
    described = set()
    for variable in root.findall(".//UnivariateStats", NAMESPACE):
        name = variable.get("field")
        if name in described or name not in by_name:
            complain(f"the statistics of {name!r}, which is no field or was described before")
            continue
        described.add(name)
        counts = variable.find("Counts", NAMESPACE)
        valid = None if counts is None else int(counts.get("totalFreq")) - sum(
            int(counts.get(key, "0")) for key in ("missingFreq", "invalidFreq"))
        for stats in variable.findall("DiscrStats", NAMESPACE):
            check_categories(stats, by_name[name], valid, complain)
        for stats in variable.findall("ContStats", NAMESPACE):
            check_bins(stats, valid, complain)


def main():
    faults = []
    for path in sys.argv[1:]:
        check(path, lambda fault, path=path: faults.append(f"{path}: {fault}"))
    print("\n".join(faults) or f"{len(sys.argv) - 1} documents hold together")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
