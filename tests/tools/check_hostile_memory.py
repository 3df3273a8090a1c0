#!/usr/bin/env python3
"""Checks that no file of at most 100 MB makes a run take more than 2 GB of memory, whatever it promises: documents, AIDA
files, text, arrays. Needs 300 MB on the disk of the temporary folder, and some minutes.

usage: check_hostile_memory.py VELMORAK-RUN [NAME-OF-A-CHECK...]
"""

import gzip
import os
import struct
import subprocess
import sys
import zipfile

from pipelines import Place, plugin

MOST_BYTES_ON_DISK = 100_000_000
MOST_KILOBYTES = 2_000_000


def run(place, document):
    """@return exit status, messages, and kilobytes that the run, or this script, had in memory at most: the system counts
    from the beginning of the process."""
    environment = dict(place.environment, VELMORAK_CACHE_LIMIT="0")
    with open(place.folder / "errors.txt", "w+", encoding="utf-8", errors="replace") as errors:
        process = subprocess.Popen([place.runner, "-j", "2", document], cwd=place.folder, env=environment, stderr=errors)
        _, status, usage = os.wait4(process.pid, 0)
        errors.seek(0)
        return os.waitstatus_to_exitcode(status), errors.read(), usage.ru_maxrss


def peak_of(place, file, document, *statuses):
    size = file.stat().st_size
    assert size <= MOST_BYTES_ON_DISK, (file, size)
    status, errors, peak = run(place, document)
    print("%s, %.1f MB: status %d, %.0f MB of memory" % (file.name, size / 1e6, status, peak / 1e3), flush=True)
    assert status in (statuses or (0, 2)), errors[:2000]
    assert "no collection" not in errors or "None" in errors, errors[:2000]
    assert peak < MOST_KILOBYTES, (file.name, peak, errors[:2000])
    return errors


def reading(place, kind, file, output, **values):
    """A document with one reader, and statistics of its table."""
    read = plugin("In", kind, file=str(file), **values)
    if output != "table":
        return place.document(read)
    return place.document(read, plugin("Mean", "Statistics", data=["In", "table"], expression="1"))


def check_documents(place):
    """Of 60 MB each."""
    def written(name, begin, one, end):
        file = place.folder / name
        with open(file, "w", encoding="utf-8") as out:
            written_bytes = out.write(begin)
            number = 0
            while written_bytes < 60_000_000:
                written_bytes += out.write(("," if number else "") + one % number)
                number += 1
            out.write(end)
        return file

    for file in (written("plugins.zedra", '{"zedra":1,"plugins":[', '{"name":"p%d","kind":"Number"}', "]}"),
                 written("unknown.zedra", '{"zedra":1,"plugins":[', '{"name":"p%d","kind":"None"}', "]}"),
                 written("fields.zedra", '{"zedra":1,"plugins":[],"x":[', "[%d]", "]}"),
                 written("names.zedra", '{"zedra":1,"plugins":[],"x":{', '"n%d":0', "}}"),
                 written("ports.zedra", '{"zedra":1,"plugins":[{"name":"a","kind":"None","inputs":[', '{"name":"%d"}', "]}]}")):
        peak_of(place, file, str(file), 0, 1, 2)
        file.unlink()


def check_empty_bins(place):
    file = place.folder / "bins.aida"
    axis = '<axis direction="%s" min="0" max="1" numberOfBins="%d"/>'
    objects = "".join('<histogram1d name="h%d">%s<data1d/></histogram1d>' % (i, axis % ("x", 16_000_000)) for i in range(12))
    objects += '<histogram2d name="plane">%s%s<data2d/></histogram2d>' % (axis % ("x", 4000), axis % ("y", 4000))
    file.write_text("<aida>%s</aida>" % objects)
    peak_of(place, file, reading(place, "AidaHistogram", file, "", object="/h3"))
    peak_of(place, file, reading(place, "AidaHistogram", file, "", object="/plane"))


def check_deep_and_long_markup(place):
    for name, begin, piece, times, end in (
            ("nested.aida", "", "<a>", 20_000, ""), ("comment.aida", "<!--", " ", 95_000, "-->"),
            ("codelet.aida", "<function name='f'><codelet>", "x", 95_000, "</codelet></function>"),
            ("tag.aida", "<tuple name='", "n", 95_000, "")):
        file = place.folder / name
        with open(file, "w", encoding="ascii") as out:
            out.write("<aida>" + begin)
            for _ in range(times):
                out.write(piece * 1000)
            out.write(end + "</aida>")
        peak_of(place, file, reading(place, "AidaTable", file, "table"))
        file.unlink()


def check_packed_text(place):
    """2.2 GB of text in 10 MB: empty lines, one line, one field, one comment, one quoted field."""
    block = 1_000_000
    for name, piece in (("line.csv.gz", b"1," * (block // 2)), ("field.csv.gz", b"x" * block),
                        ("quote.csv.gz", b'"' + b"x" * (block - 1)), ("comment.csv.gz", b"#" * block),
                        ("lines.csv.gz", b"\n" * block)):
        file = place.folder / name
        packed = gzip.compress(piece, compresslevel=1)
        with open(file, "wb") as out:
            out.write(gzip.compress(b"a,b\n1,2\n"))
            for _ in range(2200):
                out.write(packed)  # A gzip file may have several parts.
        peak_of(place, file, reading(place, "CsvTable", file, "table"), 0, 2)
        file.unlink()


def check_promised_arrays(place):
    head = "{'descr': '%s', 'fortran_order': False, 'shape': (%d,), }"
    for name, kind, rows in (("promise.npy", "<f8", 10**11), ("wide.npy", "<U500000000", 1)):
        text = (head % (kind, rows)).encode() + b"\n"
        file = place.folder / name
        file.write_bytes(b"\x93NUMPY\x01\x00" + struct.pack("<H", len(text)) + text + b"\0" * 1000)
        peak_of(place, file, reading(place, "NumpyTable", file, "table"))
    file = place.folder / "zeros.npz"
    text = (head % ("<f8", 300_000_000)).encode() + b"\n"
    with zipfile.ZipFile(file, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as archive:
        with archive.open("x.npy", "w", force_zip64=True) as out:
            out.write(b"\x93NUMPY\x01\x00" + struct.pack("<H", len(text)) + text)
            for _ in range(2400):
                out.write(b"\0" * 1_000_000)
    peak_of(place, file, reading(place, "NumpyTable", file, "table"), 0, 2)
    file.unlink()


def check_packed_chunks(place):
    """A chunk of 3 GB in 3 MB, written as it is packed."""
    try:
        import h5py
    except ImportError:
        print("skipped: h5py is not installed")
        return
    import zlib

    rows = 375_000_000
    packer = zlib.compressobj(1)
    packed = b"".join(packer.compress(b"\0" * 1_000_000) for _ in range(rows * 8 // 1_000_000)) + packer.flush()
    file = place.folder / "chunk.h5"
    with h5py.File(file, "w") as out:
        column = out.create_dataset("x", shape=(rows,), dtype="<f8", chunks=(rows,), compression="gzip")
        column.id.write_direct_chunk((0,), packed)
    errors = peak_of(place, file, reading(place, "Hdf5Table", file, "table"), 2)
    assert "3.0 GB" in errors, errors[:2000]


CHECKS = [check_documents, check_empty_bins, check_deep_and_long_markup, check_packed_text, check_promised_arrays,
          check_packed_chunks]


def main(runner, *names):
    for check in CHECKS:
        if not names or check.__name__ in names:
            with Place(runner) as place:
                check(place)


if __name__ == "__main__":
    main(*sys.argv[1:])
