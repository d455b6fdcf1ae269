'use strict';
// qvx-parser for Node: the library compiled to WebAssembly. The module is
// compiled synchronously when this file is required, so `parse` can be called
// at once.
const wasm = require('./qvx_wasm.js');

const encoder = new TextEncoder();

// Copies `bytes` into the module's memory for the length of `use`.
function withBytes(bytes, use) {
  const address = wasm._malloc(Math.max(bytes.length, 1));
  try {
    wasm.HEAPU8.set(bytes, address);
    return use(address);
  } finally {
    wasm._free(address);
  }
}

function optionsText(options) {
  if (options === undefined || options === null) return null;
  if (typeof options === 'string') return options;
  const text = JSON.stringify(options);
  if (text === undefined) throw new TypeError('options must be a JSON value or its text');
  return text;
}

// Parses `data` (a string, taken as its UTF-8 bytes, or a Uint8Array, taken
// as it is) as `format`. Returns {ok: true, fields, warnings} or
// {ok: false, error: {message, code, additionalInfo}}, as `qvx-parse --batch`
// prints them. Refused options throw an Error with the library's text; an
// unknown or unavailable format throws a RangeError.
function parse(format, data, options) {
  if (typeof format !== 'string') throw new TypeError('format must be a string');
  let bytes;
  if (typeof data === 'string') {
    bytes = encoder.encode(data);
  } else if (data instanceof Uint8Array) {
    bytes = data;
  } else {
    throw new TypeError('data must be a string or a Uint8Array');
  }
  const opts = optionsText(options);
  const text = withBytes(encoder.encode(format + '\0'), (formatAt) =>
    withBytes(bytes, (dataAt) => {
      if (opts === null) {
        return wasm.UTF8ToString(wasm._qvx_js_parse(formatAt, dataAt, bytes.length, 0, 0));
      }
      const optionBytes = encoder.encode(opts);
      return withBytes(optionBytes, (optionsAt) => wasm.UTF8ToString(
          wasm._qvx_js_parse(formatAt, dataAt, bytes.length, optionsAt, optionBytes.length)));
    }));
  const answer = JSON.parse(text);
  if ('formatError' in answer) throw new RangeError(answer.formatError);
  if ('optionsError' in answer) throw new Error(answer.optionsError);
  return answer;
}

// The names of the formats this build parses.
function formats() {
  return JSON.parse(wasm.UTF8ToString(wasm._qvx_js_formats()));
}

module.exports = { parse, formats };
