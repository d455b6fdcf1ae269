"""Structured fields from the decoded contents of scanned codes.

    import qvx
    data = qvx.parse("vin", "1HGCM82633A004352")
    for field in data.fields:
        print(field.name, field.parsed)
"""

from . import _qvx
from ._qvx import ParsedData, ParsedField, formats

__all__ = ["ParseError", "ParsedData", "ParsedField", "Parser", "formats", "parse"]


class ParseError(Exception):
    """The input was refused. `code` is 2 for every format but swissqr, whose
    refusals have codes from 1000 and details in `additional_info`, keyed by
    "StartingCharacters", "Version", "MinimalVersion", "ElementName",
    "String", "Length" and "Charset"."""

    def __init__(self, message, code, additional_info):
        super().__init__(message)
        self.message = message
        self.code = code
        self.additional_info = additional_info

    def __reduce__(self):
        return (type(self), (self.message, self.code, self.additional_info))


class Parser:
    """A parser of one format. Options are a dict or the text of a JSON object;
    they stay set until changed. A bad option raises ValueError with the
    library's text, as does an unknown or unavailable format."""

    def __init__(self, format, options=None):
        self._parser = _qvx.Parser(format)
        if options is not None:
            self._parser.set_options(options)

    @property
    def format(self):
        return self._parser.format

    @property
    def options(self):
        """The current options, with snake_case keys."""
        return self._parser.options

    def set_options(self, options):
        self._parser.set_options(options)

    def parse(self, data):
        """Parses a str (as its UTF-8 bytes) or bytes, unchanged."""
        result = self._parser.parse(data)
        if isinstance(result, _qvx.Issue):
            raise ParseError(result.message, result.code, result.additional_info)
        return result

    def __repr__(self):
        return f"qvx.Parser({self.format!r})"


def parse(format, data, options=None):
    """Parses `data` with a new parser of `format`."""
    return Parser(format, options).parse(data)
