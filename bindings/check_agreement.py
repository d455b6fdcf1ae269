#!/usr/bin/env python3
"""Checks that the host layers answer as `qvx-parse --batch` does.

Every bundled sample (examples/samples/<format>[.<variant>].txt, all bytes)
and every conformance case (tests/data/<format>/*.json, its input and
options) becomes one batch line. The same lines go through the Python module
and, when given, the JavaScript package and the Objective-C classes (through
the line runner tests/objc/objc_batch.mm); each answer is turned into the
shape of a batch output line and compared with the batch answer as JSON
values. The Objective-C classes name six formats and take options as a
dictionary, and their results carry no warnings: lines outside that reach are
skipped there, and warnings are left out of the comparison.

    check_agreement.py --qvx-parse build/default/tools/qvx-parse \\
        [--python build/default/python] [--js build/default/js/qvx-js] \\
        [--objc build/default/objc/qvx_objc_batch]

Exit 0 when every layer agrees on every line, 1 otherwise.
"""

import argparse
import base64
import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Runs batch-style lines through the JavaScript package: one answer per line.
JS_RUNNER = r"""
const qvx = require(process.argv[1]);
const lines = require('fs').readFileSync(0, 'utf8').split('\n').filter((l) => l !== '');
const out = lines.map((text) => {
  const line = JSON.parse(text);
  const data = Uint8Array.from(Buffer.from(line.dataBase64, 'base64'));
  const options = 'optionsText' in line ? line.optionsText : line.options;
  try {
    return qvx.parse(line.format, data, options);
  } catch (e) {
    return e instanceof RangeError ? {inputError: e.message, ok: false}
                                   : {ok: false, optionsError: e.message};
  }
});
process.stdout.write(out.map((o) => JSON.stringify(o) + '\n').join(''));
"""


def collect_cases():
    cases = []
    for sample in sorted((ROOT / "examples" / "samples").iterdir()):
        cases.append((f"sample {sample.name}", {"format": sample.name.split(".")[0]},
                      sample.read_bytes()))
    for path in sorted((ROOT / "tests" / "data").glob("*/*.json")):
        for case in json.loads(path.read_text(encoding="utf-8")):
            line = {"format": path.parent.name}
            for key in ("options", "optionsText"):
                if key in case:
                    line[key] = case[key]
            # Cases of options alone parse nothing: an empty input then.
            data = (case["data"].encode() if "data" in case
                    else base64.b64decode(case.get("dataBase64", "")))
            label = f"{path.parent.name}/{path.name}: {case.get('name', '?')}"
            cases.append((label, line, data))
    for _, line, data in cases:
        line["dataBase64"] = base64.b64encode(data).decode()
    return cases


def answers(command, lines):
    """Runs `command` with the lines as JSON Lines on stdin; one answer per output line."""
    text = "".join(json.dumps(line) + "\n" for line in lines)
    done = subprocess.run(command, input=text.encode(), capture_output=True, check=True)
    return [json.loads(answer) for answer in done.stdout.decode().splitlines()]


def python_answer(qvx, line, data):
    try:
        parser = qvx.Parser(line["format"])
    except ValueError as e:
        return {"inputError": str(e), "ok": False}
    options = line.get("optionsText", line.get("options"))
    try:
        if "optionsText" in line or "options" in line:
            parser.set_options(options)
    except ValueError as e:
        return {"ok": False, "optionsError": str(e)}
    try:
        result = parser.parse(data)
    except qvx.ParseError as e:
        return {"error": {"additionalInfo": e.additional_info, "code": e.code,
                          "message": e.message}, "ok": False}
    fields = []
    for field in result.fields:
        entry = {"name": field.name, "parsed": field.parsed, "rawString": field.raw_string}
        if field.issues:
            entry["issues"] = field.issues
        fields.append(entry)
    if json.loads(result.json()) != fields:
        return {"mismatch": "json() differs from the fields", "json": result.json()}
    return {"fields": fields, "ok": True, "warnings": result.warnings}


def compare_objc(runner, cases, expected):
    got = answers([runner], [line for _, line, _ in cases])
    if len(got) != len(expected):
        return compare("objc", cases, expected, got)
    kept = [(case, {k: v for k, v in want.items() if k != "warnings"}, answer)
            for case, want, answer in zip(cases, expected, got) if "skipped" not in answer]
    return compare("objc", [c for c, _, _ in kept], [w for _, w, _ in kept],
                   [g for _, _, g in kept])


def compare(layer, cases, expected, answered):
    bad = [(label, want, got)
           for (label, _, _), want, got in zip(cases, expected, answered) if want != got]
    if len(answered) != len(expected):
        bad.append(("(count)", len(expected), len(answered)))
    print(f"{layer}: {len(expected) - len(bad)} of {len(expected)} lines agree")
    for label, want, got in bad[:10]:
        print(f"  {label}\n    batch: {json.dumps(want)}\n    {layer}: {json.dumps(got)}")
    return not bad


def main():
    args = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    args.add_argument("--qvx-parse", required=True)
    args.add_argument("--python", help="directory holding the package qvx")
    args.add_argument("--js", help="directory of the JavaScript package")
    args.add_argument("--objc", help="the Objective-C line runner, qvx_objc_batch")
    options = args.parse_args()

    cases = collect_cases()
    lines = [line for _, line, _ in cases]
    expected = answers([options.qvx_parse, "--batch"], lines)
    ok = True
    if options.python:
        sys.path.insert(0, options.python)
        import qvx  # pylint: disable=import-outside-toplevel
        got = [python_answer(qvx, line, data) for _, line, data in cases]
        ok = compare("python", cases, expected, got) and ok
    if options.js:
        js = ["node", "-e", JS_RUNNER, str(pathlib.Path(options.js).resolve())]
        ok = compare("js", cases, expected, answers(js, lines)) and ok
    if options.objc:
        ok = compare_objc(options.objc, cases, expected) and ok
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
