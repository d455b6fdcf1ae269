from lib import *
E = lambda m: {'message': m, 'code': 2}
dl = subfile_body('DL', TX_DL); zt = subfile_body('ZT', TX_Z)
L1, L2 = len(dl), len(zt)
def sized(a, b, **kw):
    return tx(sizes=[L1 + a, L2 + b], **kw)
SHORT = ['DAQ12345678', 'DCSSMITH', 'DACJOHN']
def short_fields(extra=()):
    return [f('DAQ', '12345678'), f('DCS', 'SMITH'), f('DAC', 'JOHN')] + list(extra)
hdr = lambda iin, v, jv, n: '@\n\x1e\rANSI ' + iin + '%02d%02d%02d' % (v, jv, n)
co_body = 'DLDAQ12345678\nDCSSMITH\nDACJOHN\nZCZCAVALUE\r'
cases = [
    case('first length one short, second one long', sized(-1, 1), options=TODAY, fieldsInclude=tx_fields()),
    case('first length one long, second one short', sized(1, -1), options=TODAY, fieldsInclude=tx_fields()),
    case('first length two short, second two long', sized(-2, 2), options=TODAY, fieldsInclude=tx_fields()),
    case('first length three long, second three short', sized(3, -3), options=TODAY, fieldsInclude=tx_fields()),
    case('first length three short, second right', sized(-3, 0), options=TODAY, fieldsInclude=tx_fields()),
    case('last length far too long runs to the end', sized(0, 40), options=TODAY, fieldsInclude=tx_fields()),
    case('offsets pointing anywhere', tx(offsets=[0, 9999]), options=TODAY, fieldsInclude=tx_fields()),
    case('lengths far off: subfiles end at their terminators', sized(-20, 50), options=TODAY, fieldsInclude=tx_fields()),
    case('lengths far off with line feed before each terminator', barcode([('DL', TX_DL + ['']), ('ZT', TX_Z + [''])], sizes=[100, 100]), options=TODAY, fieldsInclude=tx_fields()),
    # The directory ends at the "DL" of the first subfile, but the subfiles are
    # taken to begin behind three designators: the first runs to the end of
    # the code and nothing is left for the second.
    case('count larger than the directory', tx(count='03'), error=E('subfile too small')),
    case('subfile type on a line of its own', barcode([('DL', [''] + SHORT), ('ZT', TX_Z)]), fieldsInclude=short_fields([f('ZTA', 'VALUE')])),
    case('noise before the first element is skipped', barcode([('DL', ['\r\n. DAQ12345678', 'DCSSMITH', 'DACJOHN']), ('ZT', TX_Z)], prefix='@\n\x1eANSI ', term='\x1e'), fieldsInclude=short_fields()),
    case('cut-off id fails', barcode([('DL', SHORT + ['DA']), ('ZT', TX_Z)]), error=E('element_data id is cut off')),
    case('cut-off id ignored on request', barcode([('DL', SHORT + ['DA']), ('ZT', TX_Z)]), options={'ignoreCutOffElementId': True, 'currentDate': '20240601'},
         fields=[f('header', TX_HEADER)] + short_fields() + [f('ZTA', 'VALUE'), f('unified', {
             'dateOfBirth': None, 'documentType': 'DL', 'expirationDate': None, 'firstNameWithoutMiddleNames': 'JOHN',
             'firstNames': ['JOHN'], 'fullAddress': '', 'gender': 'invalid', 'height': {'cm': 0, 'inch': 0}, 'isExpired': None,
             'lastNames': ['SMITH'], 'name': 'JOHN SMITH', 'neverExpires': False, 'weightRange': -1})]),
    case('unknown id kept when not strict', barcode([('DL', SHORT + ['DXXA$B']), ('ZT', TX_Z)]), fieldsInclude=[f('DXX', None, 'A$B')]),
    case('unknown id kept verbatim', barcode([('DL', SHORT + ['DXX A-B ']), ('ZT', TX_Z)]), fieldsInclude=[f('DXX', ' A-B ')]),
    case('unknown id refused when strict', barcode([('DL', SHORT + ['DXXAB']), ('ZT', TX_Z)]), options={'strictElementIdVerification': True}, error=E("Unknown element_data ID: 'DXX'")),
    case('jurisdiction id kept when strict', barcode([('DL', SHORT + ['ZXXAB']), ('ZT', TX_Z)]), options={'strictElementIdVerification': True}, fieldsInclude=[f('ZXX', 'AB'), f('ZTA', 'VALUE')]),
    case('element repeated', barcode([('DL', SHORT + ['DCFA', 'DCFB']), ('ZT', TX_Z)]), fieldsInclude=[f('DCF', 'A'), f('DCF', 'B')]),
    case('South Carolina version 5: five-digit lengths', barcode([('DL', SHORT), ('ZS', ['ZSAX'])], iin='636005', version=5, lengthDigits=5), fieldsInclude=short_fields([f('ZSA', 'X')])),
    case('Colorado version 10: subfiles found by search', hdr('636020', 10, 1, 2) + 'XX00000000XX00000000' + co_body,
         fieldsInclude=short_fields([f('ZCA', 'VALUE')])),
    case('Colorado version 10: document type stays unknown', hdr('636020', 10, 1, 2) + 'XX00000000XX00000000' + co_body,
         fieldsInclude=[f('unified', {'dateOfBirth': None, 'documentType': 'unknown', 'expirationDate': None, 'firstNameWithoutMiddleNames': 'JOHN',
             'firstNames': ['JOHN'], 'fullAddress': '', 'gender': 'invalid', 'height': {'cm': 0, 'inch': 0}, 'isExpired': None,
             'lastNames': ['SMITH'], 'name': 'JOHN SMITH', 'neverExpires': False, 'weightRange': -1})]),
    case('Colorado version 10 without a main subfile', hdr('636020', 10, 1, 2) + 'XX00000000XX00000000ZCZCAVALUE\r', error=E('DL/ID subfile not found')),
    case('Colorado version 10: nothing behind the type', hdr('636020', 10, 1, 2) + 'XX00000000XX00000000XXXXXXDL', error=E('subfile too small')),
    case('Pennsylvania version 9: a ZI directory entry is searched for', hdr('636025', 9, 1, 2) + 'DL00410900ZI09990900' + 'DLDAQ12345678\nDCSSMITH\nDACJOHN\nZIZIAVALUE\r',
         fieldsInclude=short_fields([f('ZIA', 'VALUE')])),
    case('Pennsylvania version 9 with three entries reads the directory', barcode([('DL', SHORT), ('ZI', ['ZIAX']), ('ZP', ['ZPAY'])], iin='636025', version=9),
         fieldsInclude=short_fields([f('ZIA', 'X'), f('ZPA', 'Y')])),
    case('Alberta version 3: one subfile from the first DL', barcode([('DL', ['DAQ1234', 'DCSSMITH', 'DCTJOHN', 'DBB19850314', 'DAW80 KG'])], iin='990876', version=3, jv=0),
         options=TODAY, fieldsInclude=[f('header', {'AAMVAVersion': 3, 'IIN': '990876', 'issuer': 'AB', 'jurisdictionVersion': 0}), f('DAQ', '1234'),
             f('DBB', date(1985, 3, 14), '19850314'), f('DAX', 80, '80 KG'),
             f('unified', {'dateOfBirth': date(1985, 3, 14), 'documentType': 'unknown', 'expirationDate': None, 'firstNameWithoutMiddleNames': 'JOHN',
             'firstNames': ['JOHN'], 'fullAddress': '', 'gender': 'invalid', 'height': {'cm': 0, 'inch': 0}, 'isExpired': None,
             'lastNames': ['SMITH'], 'name': 'JOHN SMITH', 'neverExpires': False, 'weightRange': 4})]),
    case('Alberta version 3 without DL', barcode([('ID', SHORT)], iin='990876', version=3, jv=0), error=E('subfile.size too large')),
    case('Alberta under the current code reads the directory', barcode([('DL', SHORT + ['DAW180'])], iin='604432', version=3, jv=0), fieldsInclude=short_fields([f('DAW', 180, '180')])),
    case('directory shorter than the count', hdr('636015', 8, 1, 5) + 'DL0041', error=E('could not parse subfile designators: string too short')),
    case('designator too short', hdr('636015', 8, 1, 1) + '\nDL0041020', error=E('subfile too short')),
    case('length of zero', tx().replace('ZT02420011', 'ZT02420000'), error=E('size is zero for subfile type:ZT')),
    case('offset with a letter', tx().replace('ZT02420011', 'ZT0X420011'), error=E('could not parse subfile designator offset and/or length must be numeric: "ZT", subfile content: "0X420011"')),
    case('length field cut short', tx().replace('ZT02420011', 'ZT024211'), options=TODAY, fieldsInclude=tx_fields()),
    case('offset beyond the code when no repair fits', barcode([('DL', ['DAQ1', 'DCF1\rDCGUSA', 'DCSSMITH']), ('ZT', TX_Z)], sizes=[50, 5], offsets=[41, 9000]),
         error=E("code is shorter than the provided offset(code size after 'DL': 80 should be equal to the expected offset [9000] + subfile size: [5] = 9005)")),
    case('length beyond the code when no repair fits', barcode([('DL', ['DAQ1', 'DCF1\rDCGUSA', 'DCSSMITH']), ('ZT', TX_Z)], sizes=[9000, 5]),
         error=E('subfile.size too large')),
]
write('subfiles.json', cases)
