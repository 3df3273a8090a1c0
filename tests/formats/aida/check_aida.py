"""Prints what an AIDA file holds, read by nothing of ours: a line for each object, then its bins or rows."""

import sys
import xml.etree.ElementTree as tree

root = tree.parse(sys.argv[1]).getroot()
print(root.tag, root.get("version"))
for element in root:
    if element.tag == "implementation":
        continue
    print(element.tag, element.get("path"), element.get("name"), "|", element.get("title"))
    for item in element.iter("item"):
        print(" ", item.get("key"), "=", item.get("value"))
    for axis in element.iter("axis"):
        borders = [border.get("value") for border in axis.iter("binBorder")]
        print("  axis", axis.get("min"), axis.get("max"), axis.get("numberOfBins"), " ".join(borders))
    for bin1d in element.iter("bin1d"):
        print("  bin", *(bin1d.get(key) for key in ("binNum", "entries", "height", "error", "weightedMean", "weightedRms")))
    for row in element.findall("rows/row"):
        print("  row", *(repr(float(entry.get("value"))) for entry in row.iter("entry")))
