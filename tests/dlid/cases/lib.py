"""Builds the driver-licence conformance cases in tests/data/dlid/.

Barcodes are assembled from their subfiles so that the directory (offsets and
lengths) is computed, and damaged on purpose where a case says so. The
expectations are written out by hand in each file. Run a file to rewrite its
JSON, for example `python3 tests/dlid/cases/header.py`.
"""
import base64
import json
import os

DATA_DIR = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'data', 'dlid')

def header(iin='636015', version=8, jv=1, n=None, count=None, prefix='@\n\x1e\rANSI '):
    h = prefix + iin + '%02d' % version
    if version >= 2 and jv is not None:
        h += '%02d' % jv
    if count is None:
        count = '%02d' % n
    return h + count

def subfile_body(typ, elements, sep='\n', term='\r'):
    return typ + sep.join(elements) + term

def barcode(subfiles, iin='636015', version=8, jv=1, prefix='@\n\x1e\rANSI ', sep='\n', term='\r',
            sizes=None, offsets=None, count=None, lengthDigits=4, designators=None):
    bodies = [subfile_body(t, e, sep, term) for t, e in subfiles]
    h = header(iin, version, jv, len(subfiles), count, prefix)
    dsize = 6 + lengthDigits
    start = len(h) + dsize * len(subfiles)
    des = ''
    for k, (t, _) in enumerate(subfiles):
        size = len(bodies[k]) if sizes is None else sizes[k]
        off = start if offsets is None else offsets[k]
        des += t + '%04d' % off + ('%0*d' % (lengthDigits, size))
        start += len(bodies[k])
    if designators is not None:
        des = designators
    return h + des + ''.join(bodies)

def case(name, data, **kw):
    c = {'name': name}
    if isinstance(data, bytes):
        c['dataBase64'] = base64.b64encode(data).decode()
    else:
        c['data'] = data
    c.update(kw)
    return c

def f(name, parsed, raw=None):
    return {'name': name, 'parsed': parsed, 'rawString': raw if raw is not None else (parsed if isinstance(parsed, str) else '')}

def date(y, m, d):
    return {'year': y, 'month': m, 'day': d}

def write(name, cases):
    with open(os.path.join(DATA_DIR, name), 'w') as out:
        out.write('[\n')
        out.write(',\n'.join('  ' + json.dumps(c, ensure_ascii=False) for c in cases))
        out.write('\n]\n')

# A version 8 Texas licence with the usual elements.
TX_DL = ['DAQ12345678', 'DCSSMITH', 'DACJOHN', 'DADPAUL', 'DBD01152020', 'DBB03141985',
         'DBA03142028', 'DBC1', 'DAYBRO', 'DAU070 in', 'DAG123 MAIN ST', 'DAIAUSTIN', 'DAJTX',
         'DAK787010000', 'DCFA1B2C3', 'DCGUSA', 'DDEN', 'DDFN', 'DDGN', 'DAW180', 'DCAC',
         'DCBNONE', 'DCDNONE']
TX_Z = ['ZTAVALUE']
TX_UNIFIED = {
    'dateOfBirth': date(1985, 3, 14), 'documentType': 'DL', 'expirationDate': date(2028, 3, 14),
    'firstNameWithoutMiddleNames': 'JOHN', 'firstNames': ['JOHN', 'PAUL'],
    'fullAddress': '123 MAIN ST, AUSTIN, TX, 78701', 'gender': 'male',
    'height': {'cm': 178, 'inch': 70}, 'isExpired': False, 'lastNames': ['SMITH'],
    'name': 'JOHN PAUL SMITH', 'neverExpires': False, 'weightRange': 4}
TX_HEADER = {'AAMVAVersion': 8, 'IIN': '636015', 'issuer': 'TX', 'jurisdictionVersion': 1}
TODAY = {'currentDate': '20240601'}

def tx(**kw):
    return barcode([('DL', TX_DL), ('ZT', TX_Z)], **kw)

def tx_fields(header=None):
    return [f('header', header or TX_HEADER), f('DAQ', '12345678'), f('DCS', 'SMITH'),
            f('ZTA', 'VALUE'), f('unified', TX_UNIFIED)]
