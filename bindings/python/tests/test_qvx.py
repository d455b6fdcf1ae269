"""Tests of the Python module: conversions of fields, errors and options."""

import base64
import json
import os
import pathlib
import pickle
import unittest

import qvx

VIN = "1HGCM82633A004352"
SWISS_V200 = ("SPC\n0200\n1\nCH6630808001234567890\nS\nBergbahnen Alpenblick AG\nTalstrasse\n"
              "12\n3818\nGrindelwald\nCH\n\n\n\n\n\n\n\n249.50\nCHF\nS\nAnna Muster\nSeeweg\n5a\n"
              "8800\nThalwil\nCH\nQRR\n000000000000000000001234565\nSaisonkarte 2024/25\nEPD")
# A uniformed-services payload whose photo bytes are not UTF-8 (a JPEG start).
USID_PHOTO = base64.b64decode(
    "SURVUzI4QzdRMURPRSxKT0hOIEEgICAgICAgICAgICAgICAgIDEyMzQ1Njc4OTAwMDAwMDAwMDAyMDcwMTgwQlJC"
    "TDE5ODVNQVIxNFNNWVlVMjAxOUpVTjAxMjAyNUpVTjAxMiAgIDIwMjFKVU4wMTIwMjVKVU4wMUExQjJBQUQgICAg"
    "VVNBICBDUFQgICBPMyAgSUkgTysg") + b"\xff\xd8\xff\xe0JFIF"


def json_form(data):
    """The JSON form of the fields, rebuilt from the Python objects."""
    out = []
    for field in data.fields:
        entry = {"name": field.name, "parsed": field.parsed, "rawString": field.raw_string}
        if field.issues:
            entry["issues"] = field.issues
        out.append(entry)
    return out


class Successes(unittest.TestCase):
    # format, data, options
    CASES = [
        ("vin", VIN, None),
        ("vin", VIN.encode(), {"strictMode": True}),
        ("gs1ai", "010950110153000417270630", {"strictMode": False}),
        ("gs1ai", b"10AB CD\x1d21X", '{"strictMode":false}'),
        ("swissqr", SWISS_V200, None),
        ("us_usid", USID_PHOTO, None),
    ]

    def test_fields_agree_with_the_json_text(self):
        for format, data, options in self.CASES:
            with self.subTest(format=format, data=data):
                result = qvx.parse(format, data, options)
                self.assertEqual(json_form(result), json.loads(result.json()))
                self.assertIsInstance(result.warnings, list)

    def test_str_and_bytes_like_inputs_are_the_same_bytes(self):
        expected = qvx.parse("gs1ai", "10AB CD\x1d21X", {"strictMode": False}).json()
        for data in (b"10AB CD\x1d21X", bytearray(b"10AB CD\x1d21X"),
                     memoryview(b"10AB CD\x1d21X")):
            with self.subTest(data=type(data).__name__):
                self.assertEqual(qvx.parse("gs1ai", data, {"strictMode": False}).json(), expected)

    def test_lax_gs1_keeps_the_field_with_its_issue_and_a_warning(self):
        result = qvx.parse("gs1ai", "010950110153000417270630", {"strictMode": False})
        self.assertEqual(result.warnings, ["check digit mismatch: expected 4 but got 3"])
        self.assertEqual([f.name for f in result.fields_with_issues], ["01"])
        self.assertEqual(result.fields_by_name["01"].issues, result.warnings)
        self.assertEqual(result.fields_by_name["17"].parsed, {"year": 2027, "month": 6, "day": 30})

    def test_invalid_utf8_is_dropped_from_text_but_kept_in_bytes(self):
        photo = qvx.parse("us_usid", USID_PHOTO).fields_by_name["jpegData"]
        self.assertTrue(photo.raw_bytes.endswith(b"\xff\xd8\xff\xe0JFIF"))
        self.assertTrue(photo.raw_string.endswith("JFIF"))
        self.assertEqual(photo.raw_string.encode(), photo.raw_bytes.replace(b"\xff\xd8\xff\xe0", b""))
        self.assertEqual(base64.b64decode(photo.parsed), photo.raw_bytes)

    def test_bundled_samples_parse(self):
        samples = pathlib.Path(os.environ.get("QVX_SAMPLES_DIR", "../../../examples/samples"))
        for sample in sorted(samples.iterdir()):
            format = sample.name.split(".")[0]
            if format not in qvx.formats():
                continue
            with self.subTest(sample=sample.name):
                self.assertTrue(qvx.parse(format, sample.read_bytes()).fields)


class Refusals(unittest.TestCase):
    # format, data, options, message, code, additional_info
    CASES = [
        ("swissqr", "XYZ1234567", None,
         "Code should start with 'SPC' but starts with 'XYZ' string.", 1003,
         {"StartingCharacters": "XYZ"}),
        ("swissqr", SWISS_V200, {"minimalVersion": 210}, "Version 200 is not supported.", 1005,
         {"Version": "200", "MinimalVersion": "210"}),
        ("vin", b"1HGCM82633A00435\xff", None,
         "valid VIN contains only digits and uppercase letters (except 'Q', 'O', 'I')", 2, {}),
    ]

    def test_a_refused_input_raises_parse_error(self):
        for format, data, options, message, code, info in self.CASES:
            with self.subTest(message=message):
                with self.assertRaises(qvx.ParseError) as caught:
                    qvx.parse(format, data, options)
                error = caught.exception
                self.assertEqual((error.message, error.code, error.additional_info),
                                 (message, code, info))
                self.assertEqual(str(error), message)
                copy = pickle.loads(pickle.dumps(error))
                self.assertEqual((copy.message, copy.code, copy.additional_info),
                                 (message, code, info))


class Options(unittest.TestCase):
    # format, options, text of the ValueError
    FAILURES = [
        ("vin", {"strict_mode": True}, "invalid option: strict_mode"),
        ("vin", {"strictMode": 1}, "option 'strictMode' must be a boolean"),
        ("vin", "", 'Could not parse json string: ""'),
        ("vin", "{strictMode: true}", 'Could not parse json string: "{strictMode: true}"'),
        ("vin", [], "internal error: JSON options are malformed"),
        ("hibc", {"b": 1, "a": 2}, "invalid option: a"),
        ("iata_bcbp", {"referenceYear": 2 ** 70}, "options: integer out of the 64-bit range"),
    ]

    def test_option_failures_raise_value_error_with_the_library_text(self):
        for format, options, text in self.FAILURES:
            with self.subTest(options=options):
                with self.assertRaises(ValueError) as caught:
                    qvx.Parser(format, options)
                self.assertEqual(str(caught.exception), text)

    def test_options_as_dict_and_as_text_agree(self):
        for options in ({"strictMode": True, "falsePositiveCompensation": True},
                        '{"strictMode": true, "falsePositiveCompensation": true}'):
            with self.subTest(options=options):
                parser = qvx.Parser("vin", options)
                self.assertEqual(parser.options,
                                 {"false_positive_compensation": True, "strict_mode": True})

    def test_options_stay_until_changed(self):
        parser = qvx.Parser("vin")
        parser.set_options({"strictMode": True})
        parser.set_options({"falsePositiveCompensation": True})
        self.assertEqual(parser.options,
                         {"false_positive_compensation": True, "strict_mode": True})

    def test_values_that_are_not_json_are_type_errors(self):
        for options in ({1: True}, {"strictMode": object()}):
            with self.subTest(options=options):
                with self.assertRaises(TypeError):
                    qvx.Parser("vin", options)


class Arguments(unittest.TestCase):
    def test_unknown_format_is_a_value_error(self):
        with self.assertRaisesRegex(ValueError, "unknown format 'pdf417'"):
            qvx.Parser("pdf417")

    def test_formats_lists_what_this_build_parses(self):
        names = qvx.formats()
        self.assertIn("vin", names)
        for name in names:
            self.assertEqual(qvx.Parser(name).format, name)

    def test_data_of_another_type_is_a_type_error(self):
        with self.assertRaises(TypeError):
            qvx.parse("vin", 17)

    def test_text_that_has_no_utf8_form_is_refused_before_parsing(self):
        with self.assertRaises(UnicodeEncodeError):
            qvx.parse("vin", "1HGCM82633A00435\ud800")


if __name__ == "__main__":
    unittest.main()
