#!/usr/bin/env python3
"""Generates the GBK to Unicode table of the Chinese travel permits.

Run from anywhere, with the standard library only:

    python3 scripts/gen_gbk_table.py          # rewrites the two outputs below
    python3 scripts/gen_gbk_table.py --check  # fails if they are out of date

Writes src/mrtd/mrtd_gbk_table.cpp and the test samples
tests/mrtd/mrtd_gbk_spot_checks.inc. Both are committed; rerun this script
only when the table itself must change.

The mapping is asked of the C library's iconv (CP936 to UTF-32), one
double-byte code at a time, for leads 0x81..0xFE and trails 0x40..0xFE.
Python's own cp936 codec, a separate implementation, checks every answer.
"""

import argparse
import ctypes
import ctypes.util
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLE_PATH = ROOT / "src" / "mrtd" / "mrtd_gbk_table.cpp"
SAMPLES_PATH = ROOT / "tests" / "mrtd" / "mrtd_gbk_spot_checks.inc"

FIRST_LEAD, LAST_LEAD = 0x81, 0xFE
FIRST_TRAIL, LAST_TRAIL = 0x40, 0xFE
EXPECTED_COUNT = 21791  # double-byte codes of Windows code page 936
VALUES_PER_LINE = 12
SAMPLE_STRIDE = 97  # about 225 mapped samples, spread over every region

# Codes where the Windows flavour of GBK differs from the older GB 2312 one;
# a converter that answers otherwise is not code page 936.
ANCHORS = {0xA1A4: 0x00B7, 0xA1AA: 0x2014, 0xA844: 0x2015, 0xB0A1: 0x554A, 0xD2BB: 0x4E00}


class Iconv:
    """One code at a time through the C library's iconv."""

    def __init__(self, charset):
        libc = ctypes.CDLL(ctypes.util.find_library("c"), use_errno=True)
        self._open = libc.iconv_open
        self._open.restype = ctypes.c_void_p
        self._open.argtypes = [ctypes.c_char_p, ctypes.c_char_p]
        self._iconv = libc.iconv
        self._iconv.restype = ctypes.c_size_t
        self._iconv.argtypes = [ctypes.c_void_p,
                                ctypes.POINTER(ctypes.c_char_p), ctypes.POINTER(ctypes.c_size_t),
                                ctypes.POINTER(ctypes.c_char_p), ctypes.POINTER(ctypes.c_size_t)]
        self._close = libc.iconv_close
        self._close.argtypes = [ctypes.c_void_p]
        self._cd = self._open(b"UTF-32LE", charset.encode("ascii"))
        if self._cd is None or self._cd == ctypes.c_void_p(-1).value:
            sys.exit(f"iconv cannot convert from {charset}")

    def code_point(self, data):
        """The single code point `data` converts to, or None."""
        self._iconv(self._cd, None, None, None, None)  # back to the initial state
        src = ctypes.create_string_buffer(data, len(data))
        dst = ctypes.create_string_buffer(16)
        src_ptr = ctypes.c_char_p(ctypes.addressof(src))
        dst_ptr = ctypes.c_char_p(ctypes.addressof(dst))
        src_left = ctypes.c_size_t(len(data))
        dst_left = ctypes.c_size_t(len(dst))
        result = self._iconv(self._cd, ctypes.byref(src_ptr), ctypes.byref(src_left),
                             ctypes.byref(dst_ptr), ctypes.byref(dst_left))
        written = len(dst) - dst_left.value
        if result == ctypes.c_size_t(-1).value or src_left.value != 0 or written != 4:
            return None
        return int.from_bytes(dst.raw[:4], "little")

    def close(self):
        self._close(self._cd)


def python_code_point(code):
    try:
        text = bytes([code >> 8, code & 0xFF]).decode("cp936")
    except UnicodeDecodeError:
        return None
    return ord(text) if len(text) == 1 else None


def all_codes():
    for lead in range(FIRST_LEAD, LAST_LEAD + 1):
        for trail in range(FIRST_TRAIL, LAST_TRAIL + 1):
            if trail != 0x7F:
                yield lead << 8 | trail


def read_mapping(charset):
    converter = Iconv(charset)
    raw = {code: converter.code_point(bytes([code >> 8, code & 0xFF])) for code in all_codes()}
    euro = converter.code_point(b"\x80")
    converter.close()
    # Code page 936 leaves its user-defined areas unassigned; converters that
    # hand them out as private-use characters (U+E000..U+F8FF) are not followed.
    mapping = {code: cp for code, cp in raw.items()
               if cp is not None and not 0xE000 <= cp <= 0xF8FF and cp <= 0xFFFF}
    dropped = sum(1 for cp in raw.values() if cp is not None) - len(mapping)
    if dropped:
        print(f"left out {dropped} private-use or non-BMP answers of {charset}")
    if euro != 0x20AC:
        print(f"note: {charset} maps 0x80 to {euro!r}; the lookup fixes it to U+20AC")
    return mapping


def check(mapping):
    ok = True
    if len(mapping) != EXPECTED_COUNT:
        print(f"error: {len(mapping)} mapped double-byte codes, expected {EXPECTED_COUNT}")
        ok = False
    for code, cp in ANCHORS.items():
        if mapping.get(code) != cp:
            print(f"error: 0x{code:04X} gives {mapping.get(code)!r}, expected U+{cp:04X}")
            ok = False
    disagreements = [(code, mapping.get(code), python_code_point(code)) for code in all_codes()
                     if mapping.get(code) != python_code_point(code)]
    for code, ours, theirs in disagreements:
        show = lambda cp: "none" if cp is None else f"U+{cp:04X}"
        print(f"iconv and Python disagree at 0x{code:04X}: {show(ours)} vs {show(theirs)}")
    print(f"{len(mapping)} mapped double-byte codes, "
          f"{len(disagreements)} disagreements with Python's cp936 codec")
    return ok, {code for code, _, _ in disagreements}


def render_table(mapping, charset):
    rows, values = [], []
    body = []
    for lead in range(FIRST_LEAD, LAST_LEAD + 1):
        trails = [code & 0xFF for code in mapping if code >> 8 == lead]
        first, last = min(trails), max(trails)
        rows.append((len(values), first, last))
        row = [mapping.get(lead << 8 | trail, 0) for trail in range(first, last + 1)]
        values.extend(row)
        body.append(f"    // 0x{lead:02X}{first:02X}..0x{lead:02X}{last:02X}")
        for i in range(0, len(row), VALUES_PER_LINE):
            chunk = row[i:i + VALUES_PER_LINE]
            body.append("    " + " ".join(f"0x{cp:04X}," if cp else "     0," for cp in chunk))
    row_lines = []
    for i in range(0, len(rows), 4):
        row_lines.append("    " + " ".join(f"{{{offset:5}, 0x{first:02X}, 0x{last:02X}}},"
                                           for offset, first, last in rows[i:i + 4]))
    return "\n".join([
        f"// Generated by scripts/gen_gbk_table.py from the C library's {charset} converter.",
        "// Do not edit; rerun the script instead.",
        "",
        '#include "mrtd/mrtd_gbk.h"',
        "",
        "#include <array>",
        "#include <cstdint>",
        "",
        "namespace parser::gbk_detail {",
        "",
        "// clang-format off",
        "// For each lead byte from 0x81: {offset, first trail, last trail}.",
        f"const std::array<GbkRow, {len(rows)}> kGbkRows = {{{{",
        *row_lines,
        "}};",
        "",
        f"// {len(mapping)} mapped codes in {len(values)} slots.",
        f"const std::uint16_t kGbkCodePoints[{len(values)}] = {{",
        *body,
        "};",
        "// clang-format on",
        "",
        "}  // namespace parser::gbk_detail",
        "",
    ])


def render_samples(mapping, charset, skip):
    mapped = [code for code in sorted(mapping) if code not in skip]
    picks = set(mapped[::SAMPLE_STRIDE]) | set(ANCHORS)
    for lead in range(FIRST_LEAD, LAST_LEAD + 1, 5):  # row edges, where offsets go wrong
        trails = [code for code in mapped if code >> 8 == lead]
        picks.update((trails[0], trails[-1]))
    # Holes inside a lead byte's span, where the table holds zeros.
    span = {}
    for code in mapping:
        low, high = span.get(code >> 8, (code, code))
        span[code >> 8] = (min(low, code), max(high, code))
    holes = [code for code in all_codes() if code not in mapping and code not in skip
             and span[code >> 8][0] < code < span[code >> 8][1]]
    picks.update(holes[::8])
    pairs = [f"{{0x{code:04X}, 0x{mapping.get(code, 0):04X}}}," for code in sorted(picks)]
    lines = ["    " + " ".join(pairs[i:i + 5]) for i in range(0, len(pairs), 5)]
    return "\n".join([
        f"// Generated by scripts/gen_gbk_table.py: {len(pairs)} (GBK code, code point) pairs",
        f"// on which the C library's {charset} converter and Python's cp936 codec agree.",
        "// clang-format off",
        *lines,
        "// clang-format on",
        "",
    ])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--charset", default="CP936", help="iconv name of the source charset")
    parser.add_argument("--check", action="store_true",
                        help="compare with the committed files instead of writing them")
    args = parser.parse_args()

    mapping = read_mapping(args.charset)
    ok, disagreements = check(mapping)
    if not ok:
        return 1
    outputs = {TABLE_PATH: render_table(mapping, args.charset),
               SAMPLES_PATH: render_samples(mapping, args.charset, disagreements)}
    stale = False
    for path, text in outputs.items():
        if args.check:
            if not path.exists() or path.read_text(encoding="ascii") != text:
                print(f"out of date: {path.relative_to(ROOT)}")
                stale = True
        else:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="ascii", newline="\n")
            print(f"wrote {path.relative_to(ROOT)} ({len(text)} bytes)")
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main())
