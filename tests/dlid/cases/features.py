from lib import *

OPTS = {'enhanceDataForFeatureExtraction': True, 'currentDate': '20240601'}

def elements(ids_values, anonymized, start='START', first_sep=''):
    """The four entries of each element; `anonymized` gives the _VAL of the anonymised set."""
    plain, anon, previous, sep = {}, {}, start, first_sep
    for (element, value), hidden in zip(ids_values, anonymized):
        for target, val in ((plain, value), (anon, hidden)):
            target[element + '_POS'] = previous
            target[element + '_LEN'] = str(len(value))
            target[element + '_SEP'] = sep
            target[element + '_VAL'] = val
        previous, sep = element, '\n'
    return plain, anon, previous

def split(lines):
    return [(line[:3], line[3:]) for line in lines]

def feature_fields(plain, anon):
    dump = lambda o: json.dumps(o, ensure_ascii=False, separators=(',', ':'), sort_keys=True)
    return [f('VERIFICATION_FEATURE_JSON', plain, dump(plain)),
            f('ANONYMIZED_VERIFICATION_FEATURE_JSON', anon, dump(anon))]

# The Texas licence of the other files: no jurisdiction indicator (its type is
# not followed by a line end), so only the main subfile is read.
TX_ANON = ['#', '%', '%', '%', '####202#', '####198#', '####202#', '1', 'BRO', '###>in', '%>%>%',
           '%', 'TX', '#########', '@@@@@@', 'USA', 'N', 'N', 'N', '###', 'C', 'NONE', 'NONE']
tx_plain, tx_anon, _ = elements(split(TX_DL), TX_ANON)
TX_FEATURES = {
    '*AGE': '39', '*AGE_BINNED': '40', '*DAQ_MATCHES_STATE_ENCODING': 'false',
    '*DCF_HAS_AUDIT': 'false', '*DCF_HAS_EXPIRY': 'false', '*DCF_HAS_ID_NUMBER': 'false',
    '*DCF_HAS_ISSUED': 'false', '*DCK_HAS_ID_NUMBER': 'false', '*DMV_VERSION': 'TX0801DL',
    '*EXPIRED': 'false', '*EXPIRY_YEAR': '2028', '*ISSUE_YEAR': '2020',
    '*JUR_SUBFILE_ERRORS': '', '*JUR_SUBFILE_HAS_EXPIRY': 'false', '*JUR_SUBFILE_HAS_ISSUED': 'false',
    '*JUR_SUBFILE_INDICATOR': '', '*MAIN_SUBFILE_ERRORS': '', '*MAIN_SUBFILE_INDICATOR': 'DL',
    '*MAIN_SUBFILE_OFFSET': '41', '*MISSING_FIELDS': '', '*NUM_SUBFILES': '2', '*TERMINATOR': '\r',
    '*VALID_MONTHS': '97', '*VALID_MONTHS_BINNED': '96'}
tx_plain.update(TX_FEATURES)
tx_anon.update(TX_FEATURES)

# A Florida licence whose number is made from the holder, expired, with the
# audit and issue date in DCF and a jurisdiction subfile on lines of its own
# whose declared length is one byte short.
FL_DL = ['DAQS530412850940', 'DCSSMITH', 'DACJOHN', 'DBD01152020', 'DBB03141985', 'DBA03142024',
         'DCF0115-2020-S530412850940-AUD1', 'DCJAUD1']
FL_Z = ['ZFA03142024', 'ZFBX']
FL_ANON = ['@#', '%', '%', '####202#', '####198#', '####202#', '@@@@%@@@@%@@@@@@@@@@@@@%@@@@', '@#']
def fl_code():
    bodies = ['DL' + '\n'.join(FL_DL) + '\r', 'ZF\n' + '\n'.join(FL_Z) + '\r']
    sizes = [len(bodies[0]), len(bodies[1]) - 1]
    return barcode([('DL', FL_DL), ('ZF', ['\n' + FL_Z[0], FL_Z[1]])], iin='636010', sizes=sizes)
fl_plain, fl_anon, last = elements(split(FL_DL), FL_ANON)
z_plain, z_anon, _ = elements(split(FL_Z), ['#', '@'], start=last)
fl_plain.update(z_plain)
fl_anon.update(z_anon)
FL_FEATURES = {
    '*AGE': '39', '*AGE_BINNED': '40', '*DAQ_MATCHES_STATE_ENCODING': 'true',
    '*DCF_HAS_AUDIT': 'true', '*DCF_HAS_EXPIRY': 'false', '*DCF_HAS_ID_NUMBER': 'true',
    '*DCF_HAS_ISSUED': 'true', '*DCK_HAS_ID_NUMBER': 'false', '*DMV_VERSION': 'FL0801DL',
    '*EXPIRED': 'true', '*EXPIRY_YEAR': '2024', '*ISSUE_YEAR': '2020',
    '*JUR_SUBFILE_ERRORS': 'length', '*JUR_SUBFILE_HAS_EXPIRY': 'true', '*JUR_SUBFILE_HAS_ISSUED': 'false',
    '*JUR_SUBFILE_INDICATOR': 'ZF\n', '*MAIN_SUBFILE_ERRORS': '', '*MAIN_SUBFILE_INDICATOR': 'DL',
    '*MAIN_SUBFILE_OFFSET': '41',
    '*MISSING_FIELDS': 'DAD,DAG,DAI,DAJ,DAK,DAU,DAY,DBC,DCA,DCB,DCD,DCG,DDE,DDF,DDG',
    '*NUM_SUBFILES': '2', '*TERMINATOR': '\r', '*VALID_MONTHS': '49', '*VALID_MONTHS_BINNED': '48'}
fl_plain.update(FL_FEATURES)
fl_anon.update(FL_FEATURES)

NON_AAMVA = 'Failed to extract DL features from non-AAMVA barcode value'
def err(message):
    return {'message': message, 'code': 2}

H = '@\n\x1e\rANSI 636015080102'
cases = [
    case('texas licence', tx(), options=OPTS, fields=feature_fields(tx_plain, tx_anon)),
    case('florida licence with its number encoded and a short jurisdiction subfile', fl_code(), options=OPTS,
         fields=feature_fields(fl_plain, fl_anon)),
    case('issuer known only to the feature reader', barcode([('DL', TX_DL)], iin='604434'), options=OPTS,
         fieldsInclude=[]),
    case('stripe', '%TXAUSTIN^SMITH$JOHN^123 MAIN ST^?', options=OPTS, error=err('Magstripe unsupported')),
    case('eleven digits before the compliance indicator', '12345678901@\n\x1e\rANSI 636015080102DL', options=OPTS, error=err(NON_AAMVA)),
    case('tab in place of the record separator', '@\n\t\rAAMVA636015080102DL', options=OPTS, error=err(NON_AAMVA)),
    case('no compliance indicator', 'X@\n\x1e\rANSI 636015080102DL', options=OPTS, error=err(NON_AAMVA)),
    case('leading blanks and line feeds are skipped', '\n  ' + tx(), options=OPTS, fields=feature_fields(tx_plain, tx_anon)),
    case('header without its digits', '@\n\x1e\rANSI 63601', options=OPTS,
         error=err('Header format does not match AAMVA specification!')),
    case('unknown issuer', barcode([('DL', TX_DL)], iin='999999'), options=OPTS,
         error=err('Failed to extract features, Unknown IIN 999999')),
    case('five-digit IIN is read as six digits', '@\n\x1e\rANSI 36026080102DL00410020DLDAQ1\nDCS2\r', options=OPTS,
         error=err('Failed to extract features, Unknown IIN 360260')),
    case('unknown subfile type', H + 'XX00410020DLDAQ1\nDCS2\r', options=OPTS,
         error=err('Failed to extract features, Unknown subfile type XX!')),
    case('no subfile designator', H + 'DAQ1\nDCS2\r', options=OPTS,
         error=err('Failed to extract features, Failed to extract subfile designator!')),
    case('designator found further on', H + '--DL00430020DLDAQ1\nDCS2\r', options=OPTS,
         error=err('Failed to extract features, main subfile is not starting with the expected subfile indicator')),
    case('main subfile without its type', H + 'DL00310020IDDAQ1\nDCS2\r', options=OPTS,
         error=err('Failed to extract features, main subfile is not starting with the expected subfile indicator')),
    case('unknown element in the main subfile', H + 'DL00310020DLDAQ1\nDZZ2\r', options=OPTS,
         error=err('DL has unknown field identifier: DZZ')),
    case('main subfile without elements', H + 'DL00310020DL\n123\nDAQ1\r', options=OPTS,
         error=err('main fields have wrong format, subfile might not have the correct indicator!')),
    case('elements without separators', H + 'DL00310020DLDAQ1DCS2DAC3\r', options=OPTS,
         error=err('Delimiter not found in string split.')),
    case('pattern characters in the header', '@(\n\x1e\rANSI 636015080102DL00310020DLDAQ1\nDCS2\r', options=OPTS,
         error=err('Unexpected characters in header')),
]
write('features.json', cases)
