from lib import *
E = lambda m: {'message': m, 'code': 2}
T1 = '%TXAUSTIN^DOE$JOHN$PAUL^123 MAIN ST^?'
def t2(expiry='2503', birth='19850314', number='1234567', tail=''):
    return ';636015' + number + '=' + expiry + birth + tail + '?'
ZRE = 'RESTRICTIONS 22 BYTES.'
assert len(ZRE) == 22
T3 = '%81' + '78701      ' + 'C ' + ' ' * 10 + '    ' + '1' + '510' + '080' + 'BRO' + 'BLU' + '0123456789' + ZRE + 'SC001' + '?'
def stripe(t1=T1, t2_=None, t3=T3):
    return t1 + (t2_ if t2_ is not None else t2()) + t3
OPT = {'currentDate': '20240601'}
TODAY = '2024-06-01'
UNIFIED = {'dateOfBirth': date(1985, 3, 14), 'documentType': 'DL', 'expirationDate': date(2025, 3, 14),
           'firstNameWithoutMiddleNames': 'JOHN', 'firstNames': ['JOHN', 'PAUL'], 'fullAddress': '123 MAIN ST, AUSTIN, TX, 78701',
           'gender': 'male', 'height': {'cm': 178, 'inch': 70}, 'isExpired': False, 'lastNames': ['DOE'], 'name': 'JOHN PAUL DOE',
           'neverExpires': False, 'weightRange': 4}
FIELDS = [f('header', {'AAMVAVersion': 8, 'IIN': '636015', 'issuer': 'TX', 'jurisdictionVersion': 1}),
          f('DAJ', 'TX'), f('DAI', 'AUSTIN'), f('DCS', 'DOE'), f('DAC', 'JOHN'), f('DAD', 'PAUL'),
          f('DDE', 'U', ''), f('DDF', 'U', ''), f('DDG', 'U', ''), f('DAG', '123 MAIN ST'),
          f('DAQ', '1234567'), f('DBA', date(2025, 3, 14), '2503'), f('DBB', date(1985, 3, 14), '19850314'),
          f('DAK', '78701', '78701      '), f('DCA', 'C', 'C '), f('DCB', '', ' ' * 10), f('DCD', '', '    '),
          f('DBC', 'male', '1'), f('DAU', {'cm': 178, 'inch': 70}, '510'), f('DAX', 80, '080'),
          f('DAZ', 'brown', 'BRO'), f('DAY', 'blue', 'BLU'), f('ZID', '0123456789'), f('ZRE', ZRE), f('ZSC', 'SC001'),
          f('unified', UNIFIED)]
def sc(name, data, expect=None, error=None, today=TODAY, options=OPT):
    c = case(name, data, options=options, today=today)
    if error: c['error'] = E(error)
    else: c['fieldsInclude'] = expect
    return c
cases = [
    case('three tracks', stripe(), options=OPT, today=TODAY, fields=FIELDS),
    case('leading blanks before the stripe', '  \n' + stripe(), options=OPT, today=TODAY, fields=FIELDS),
    sc('track 3 opened by a number sign', stripe(t3='#' + T3[1:]), [FIELDS[0], f('ZSC', 'SC001')]),
    sc('expiry 77 never expires', stripe(t2_=t2(expiry='2577')), [f('DBA', date(9999, 1, 1), '2577')]),
    sc('expiry 88 is the end of the birth month', stripe(t2_=t2(expiry='2588')), [f('DBA', date(2025, 3, 31), '2588')]),
    sc('expiry 88 in February of a leap year', stripe(t2_=t2(expiry='2888', birth='19850214')), [f('DBA', date(2028, 2, 29), '2888')]),
    sc('expiry 99 is the birthday', stripe(t2_=t2(expiry='2599')), [f('DBA', date(2025, 3, 14), '2599')]),
    sc('expiry day is the birth day within the month', stripe(t2_=t2(expiry='2504', birth='19850331')), [f('DBA', date(2025, 4, 30), '2504')]),
    sc('expiry century from the clock, expiry decision from the option', stripe(), [f('DBA', date(2125, 3, 14), '2503'),
        f('unified', dict(UNIFIED, expirationDate=date(2125, 3, 14)))], today='2080-01-01'),
    sc('expired by the option date', stripe(), [f('unified', dict(UNIFIED, isExpired=True))], options={'currentDate': '20250315'}),
    sc('licence number split around the dates', stripe(t2_=t2(number='12345', tail='678')), [f('DAQ', '12345678')]),
    sc('cut city name restored', stripe(t1='%BCNEW WESTMINSTDOE$JOHN$^1 MAIN ST^?'), [f('DAI', 'NEW WESTMINSTER', 'NEW WESTMINST'), f('DCS', 'DOE')]),
    sc('thirteen-byte city without separator', stripe(t1='%BCSAINT ALBERTDOE$JOHN$^1 MAIN ST^?'), [f('DAI', 'SAINT ALBERTD', 'SAINT ALBERTD'), f('DCS', 'OE')]),
    sc('given name ended by a blank', stripe(t1='%TXAUSTIN^DOE$JOHN PAUL^1 MAIN ST^?'), [f('DAC', 'JOHN'), f('DAD', 'PAUL'), f('DAG', '1 MAIN ST')]),
    sc('no middle name', stripe(t1='%TXAUSTIN^DOE$JOHN^1 MAIN ST^?'), [f('DAC', 'JOHN'), f('DAD', ''), f('DAG', '1 MAIN ST')]),
    sc('short track 3 leaves the jurisdiction fields empty', stripe(t3=T3[:T3.index('0123456789')] + '?'), [f('ZID', ''), f('ZRE', ''), f('ZSC', '')]),
    sc('non-digit versions read as zero', stripe(t3='%!!' + T3[3:]), [f('header', {'AAMVAVersion': 0, 'IIN': '636015', 'issuer': 'TX', 'jurisdictionVersion': 0})]),
    sc('no end of track 1', stripe().replace('?;', '?xxx;', 1), error='First track cannot be localized (does not contain mandatory "?;" sequence at the end of the track).'),
    sc('no end of track 2', T1 + t2() + 'X' + T3[1:], error='Second track cannot be localized (does not contain mandatory "?%"(or "?#") sequence at the end of the track).'),
    sc('track 2 opened behind its end', '%TXA^B$C^D^#??;636015', error='Second track cannot be localized (";" should come before "?#")'),
    sc('track 1 too short for the city', '%TXAUS?;6360151234567=250319850314?%81', error='First track too short for DAI field'),
    sc('track 1 too short for the jurisdiction', '%?;6360151234567=250319850314?%81', error='First track too short for DAJ field'),
    sc('track 1 ends after the family name', '%TXAUSTIN^DOE?;6360151234567=250319850314?%81', error='First track too short'),
    sc('track 2 too short for the IIN', T1 + ';63601?%81', error='Second track too short'),
    sc('track 2 too short for the birth date', T1 + ';6360151234567=2503198503?%81', error='Second track too short'),
    sc('track 2 without end sentinel', T1 + ';6360151234567=250319850314%?81', error='missing end sentinel'),
    sc('birth date not numeric', stripe(t2_=t2(birth='1985031X')), error='Invalid date: string "1985031X" can not be converted to YYYYMMDD format'),
    sc('expiry year not numeric', stripe(t2_=t2(expiry='X588')), error='could not parse an expiry date year'),
    sc('expiry month out of range', stripe(t2_=t2(expiry='2513')), error='Invalid date: string "2513" can not be converted to YYMM format'),
    sc('track 3 of one byte', stripe(t3='%8'), error='Third track too short for AAMVA and jurisdiction fields'),
    sc('track 3 too short for the postal code', stripe(t3='%81787'), error='3rd track too short for DAK field'),
    sc('track 3 ends before the sex', stripe(t3=T3[:3 + 11 + 2 + 10 + 4]), error='Third track too short'),
]
write('stripe.json', cases)
