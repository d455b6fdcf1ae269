'use strict';
// Tests of the JavaScript package: answers byte for byte as `qvx-parse
// --batch` prints them, inputs of both kinds, and what throws.
// Usage: node test.cjs PACKAGE_DIR QVX_PARSE
const assert = require('assert');
const { execFileSync } = require('child_process');
const qvx = require(require('path').resolve(process.argv[2]));
const qvxParse = process.argv[3];

const swiss = 'SPC\n0200\n1\nCH6630808001234567890\nS\nBergbahnen Alpenblick AG\nTalstrasse\n12\n' +
    '3818\nGrindelwald\nCH\n\n\n\n\n\n\n\n249.50\nCHF\nS\nAnna Muster\nSeeweg\n5a\n8800\nThalwil\n' +
    'CH\nQRR\n000000000000000000001234565\nSaisonkarte 2024/25\nEPD';

// format, data, options: each answer must print as the batch line does.
const lines = [
  ['vin', '1HGCM82633A004352', undefined],
  ['vin', '1HGCM82633AO04352', { strictMode: true, falsePositiveCompensation: true }],
  ['gs1ai', '10AB CD\u001d21X', '{"strictMode":false}'],
  ['gs1ai', '010950110153000417270630', { strictMode: false }],
  ['swissqr', 'XYZ1234567', undefined],
  ['swissqr', swiss, { minimalVersion: 210 }],
  ['hibc', '', undefined],
  ['vin', Uint8Array.from([0x31, 0x48, 0xff]), undefined],
];

function batchLine([format, data, options]) {
  const line = { format, dataBase64: Buffer.from(data).toString('base64') };
  if (typeof options === 'string') line.optionsText = options;
  else if (options !== undefined) line.options = options;
  return JSON.stringify(line);
}

const batch = execFileSync(qvxParse, ['--batch'], { input: lines.map(batchLine).join('\n') + '\n' })
    .toString().trim().split('\n');
lines.forEach((line, i) => {
  assert.strictEqual(JSON.stringify(qvx.parse(...line)), batch[i], `line ${i}: ${batchLine(line)}`);
});

// A string is its UTF-8 bytes; bytes that are not UTF-8 leave the texts.
assert.deepStrictEqual(qvx.parse('vin', Buffer.from('1HGCM82633A004352')),
                       qvx.parse('vin', '1HGCM82633A004352'));
const lax = qvx.parse('gs1ai', Uint8Array.from([...Buffer.from('10AB'), 0xff, 0x43]),
                        { strictMode: false });
assert.ok(lax.fields.every((f) => !f.rawString.includes('\ufffd')));

// Refused options throw the library's text; formats are RangeErrors.
const throwing = [
  [['vin', 'x', { strict_mode: true }], Error, 'invalid option: strict_mode'],
  [['vin', 'x', ''], Error, 'Could not parse json string: ""'],
  [['vin', 'x', []], Error, 'internal error: JSON options are malformed'],
  [['hibc', 'x', { b: 1, a: 2 }], Error, 'invalid option: a'],
  [['pdf417', 'x'], RangeError, "unknown format 'pdf417'"],
  [['vin', 17], TypeError, 'data must be a string or a Uint8Array'],
];
for (const [args, type, message] of throwing) {
  assert.throws(() => qvx.parse(...args), (e) => e instanceof type && e.message === message,
                JSON.stringify(args));
}

const names = qvx.formats();
assert.ok(names.includes('vin') && names.includes('gs1ai'));
for (const name of names) assert.strictEqual(typeof qvx.parse(name, '').ok, 'boolean');
console.log(`js package: ${lines.length + throwing.length + 3} checks passed`);
