from lib import *
E = lambda m: {'message': m, 'code': 2}
def doc(elements, iin='636015', version=8, jv=1, **kw):
    return barcode([('DL', elements)], iin=iin, version=version, jv=jv, **kw)
BASE = {'dateOfBirth': None, 'documentType': 'DL', 'expirationDate': None, 'firstNameWithoutMiddleNames': None,
        'firstNames': None, 'fullAddress': '', 'gender': 'invalid', 'height': {'cm': 0, 'inch': 0}, 'isExpired': None,
        'lastNames': None, 'name': None, 'neverExpires': False, 'weightRange': -1}
def u(**kw):
    d = dict(BASE); d.update(kw); return f('unified', d)
def names(first, last, without, name):
    return dict(firstNames=first, lastNames=last, firstNameWithoutMiddleNames=without, name=name)
def uc(name, elements, expected, iin='636015', version=8, jv=1, options=TODAY, **kw):
    return case(name, doc(['DAQ1'] + elements, iin=iin, version=version, jv=jv, **kw), options=options, fieldsInclude=[u(**expected)])
cases = [
    uc('given names in DAC with commas', ['DCSSMITH', 'DACJOHN,PAUL'], names(['JOHN', 'PAUL'], ['SMITH'], 'JOHN PAUL', 'JOHN PAUL SMITH')),
    uc('middle name as one entry', ['DCSSMITH', 'DACJOHN', 'DADPAUL, PETER'], names(['JOHN', 'PAUL, PETER'], ['SMITH'], 'JOHN', 'JOHN PAUL, PETER SMITH')),
    uc('given names in DCT', ['DCSSMITH', 'DCTJOHN,PAUL'], names(['JOHN', 'PAUL'], ['SMITH'], 'JOHN PAUL', 'JOHN PAUL SMITH'), version=3),
    uc('family name with commas and blanks stripped', ['DCS SMITH,JONES ,', 'DACJOHN'], names(['JOHN'], ['SMITH', 'JONES'], 'JOHN', 'JOHN SMITH JONES')),
    uc('empty piece between commas is kept', ['DCSSMITH', 'DACJOHN,,PAUL'], names(['JOHN', '', 'PAUL'], ['SMITH'], 'JOHN  PAUL', 'JOHN  PAUL SMITH')),
    uc('NONE counts as empty', ['DCSSMITH', 'DACJOHN', 'DADNONE'], names(['JOHN'], ['SMITH'], 'JOHN', 'JOHN SMITH')),
    uc('DAA family name, comma, given name and initial', ['DAASMITH,JOHN P'], names(['JOHN', 'P'], ['SMITH'], 'JOHN P', 'JOHN P SMITH'), version=2),
    uc('DAA with commas throughout', ['DAASMITH,JOHN,P'], names(['JOHN', 'P'], ['SMITH'], 'JOHN P', 'JOHN P SMITH'), version=2),
    uc('DAA of two words', ['DAAJOHN SMITH'], names(['JOHN'], ['SMITH'], 'JOHN', 'JOHN SMITH'), version=2),
    uc('DAA of three words', ['DAAJOHN PAUL SMITH'], names(['JOHN', 'PAUL'], ['SMITH'], 'JOHN PAUL', 'JOHN PAUL SMITH'), version=2),
    uc('DAA of four words ending in a suffix', ['DAAJOHN PAUL SMITH JR'], names(['JOHN', 'PAUL', 'JR'], ['SMITH'], 'JOHN PAUL', 'JOHN PAUL SMITH JR'), version=2),
    uc('DAA of three words ending in a suffix', ['DAAJOHN SMITH III'], names(['JOHN', 'III'], ['SMITH'], 'JOHN SMITH', 'JOHN SMITH III'), version=2),
    uc('DAA of one word', ['DAASMITH'], names(['SMITH'], None, 'SMITH', 'SMITH'), version=2),
    uc('DAA with at signs, family name first and a suffix', ['DAASMITH@JOHN@P@JR'], names(['JOHN', 'P', 'JR'], ['SMITH'], 'JOHN P JR', 'JOHN P SMITH JR'), version=2),
    uc('DAA with at signs and empty pieces', ['DAASMITH@@JOHN@'], names(['JOHN'], ['SMITH'], 'JOHN', 'JOHN SMITH'), version=2),
    uc('DAA of blanks only', ['DAA   '], names(None, None, None, None), version=2),
    uc('DAA NONE and nothing else', ['DAANONE'], names(None, None, None, None), version=2),
    uc('version 1 family name in DAB', ['DABSMITH', 'DACJOHN'], names(['JOHN'], ['SMITH'], 'JOHN', 'JOHN SMITH'), version=1, jv=None),
    # Dates
    uc('expired licence', ['DBB03141985', 'DBA05312024'], dict(dateOfBirth=date(1985, 3, 14), expirationDate=date(2024, 5, 31), isExpired=True)),
    uc('licence expiring today is valid', ['DBB03141985', 'DBA06012024'], dict(dateOfBirth=date(1985, 3, 14), expirationDate=date(2024, 6, 1), isExpired=False)),
    uc('unreadable expiry', ['DBA13452024'], dict(isExpired=None)),
    uc('Arizona without expiry: the 65th birthday', ['DBB03141985', 'DBD01012020'], dict(dateOfBirth=date(1985, 3, 14), expirationDate=date(2050, 3, 14), isExpired=False), iin='636026'),
    uc('Arizona without expiry, holder over 65: issue plus five years', ['DBB03141950', 'DBD01012017'], dict(dateOfBirth=date(1950, 3, 14), expirationDate=date(2022, 1, 1), isExpired=True), iin='636026'),
    uc('Arizona without expiry or issue date, holder over 65', ['DBB03141950'], dict(dateOfBirth=date(1950, 3, 14)), iin='636026'),
    uc('other issuers derive no expiry', ['DBB03141985', 'DBD01012020'], dict(dateOfBirth=date(1985, 3, 14))),
    case('Illinois ID that never expires', barcode([('ID', ['DAQ1', 'DBB03141950', 'DBA99999999'])], iin='636035'), options=TODAY,
         fieldsInclude=[f('DBA', None, '99999999'), u(documentType='ID', dateOfBirth=date(1950, 3, 14), isExpired=False, neverExpires=True)]),
    case('Illinois ID of a younger holder', barcode([('ID', ['DAQ1', 'DBB03141985', 'DBA99999999'])], iin='636035'), options=TODAY,
         fieldsInclude=[u(documentType='ID', dateOfBirth=date(1985, 3, 14))]),
    case('Illinois licence with eight nines', barcode([('DL', ['DAQ1', 'DBB03141950', 'DBA99999999'])], iin='636035'), options=TODAY,
         fieldsInclude=[u(dateOfBirth=date(1950, 3, 14))]),
    case('eight nines from another issuer is no date', barcode([('ID', ['DAQ1', 'DBB03141950', 'DBA99999999'])]), options=TODAY,
         fieldsInclude=[f('DBA', None, '99999999'), u(documentType='ID', dateOfBirth=date(1950, 3, 14))]),
    # Sex, address, height, weight
    uc('gender', ['DBC2'], dict(gender='female')),
    uc('address in full', ['DAG1 MAIN ST', 'DAHAPT 2', 'DAIAUSTIN', 'DAJTX', 'DAK787011234'], dict(fullAddress='1 MAIN ST, APT 2, AUSTIN, TX, 78701')),
    uc('address without first line', ['DAIAUSTIN', 'DAJTX'], dict(fullAddress=', AUSTIN, TX')),
    uc('address with an unreadable postal code', ['DAG1 MAIN ST', 'DAKT2P 1J9'], dict(fullAddress='1 MAIN ST, ')),
    case('address element with an illegal byte fails the result', doc(['DAQ1', 'DAG1 MAIN $T']), options=TODAY, error=E('Field "DAG" type must be string, but is null')),
    case('version 1 residence address', barcode([('DL', ['DAQ1', 'DAL1 ELM ST', 'DAMAPT 2', 'DANDALLAS', 'DAOTX', 'DAP75201'])], version=1, jv=None), options=TODAY,
         fieldsInclude=[u(fullAddress='1 ELM ST, APT 2, DALLAS, TX, 75201')]),
    case('version 1 residence postal code unreadable', barcode([('DL', ['DAQ1', 'DAL1 ELM ST', 'DAPX'])], version=1, jv=None), options=TODAY,
         error=E('Field "5digit" type must be string, but is null')),
    uc('height from DAU', ['DAU072 in'], dict(height={'cm': 183, 'inch': 72})),
    uc('unreadable height gives zeros', ['DAU072 ft'], dict(height={'cm': 0, 'inch': 0})),
    uc('weight range as given', ['DCE3'], dict(weightRange=3)),
    uc('weight in pounds overrides the range', ['DCE3', 'DAW250'], dict(weightRange=6)),
    uc('weight in kilograms overrides both', ['DCE3', 'DAW250', 'DAX100'], dict(weightRange=5)),
    uc('weight bins at their edges', ['DAW70'], dict(weightRange=0)),
    uc('weight of 71 pounds', ['DAW71'], dict(weightRange=1)),
    uc('weight of 321 pounds', ['DAW321'], dict(weightRange=9)),
    uc('weight of zero', ['DAW0'], dict(weightRange=-1)),
    # Whole documents of the versions not met elsewhere
    case('version 6 Kansas licence', barcode([('DL', ['DAQK00-00-0001', 'DCSDOE', 'DACJANE', 'DADANN', 'DBD02012014', 'DBB02011990', 'DBA02012020',
                                                       'DBC2', 'DAYBLU', 'DAU064 in', 'DAG1 ELM ST', 'DAITOPEKA', 'DAJKS', 'DAK666030000',
                                                       'DCGUSA', 'DDEN', 'DDFN', 'DDGN', 'DCE3'])], iin='636022', version=6), options=TODAY,
         fieldsInclude=[u(**names(['JANE', 'ANN'], ['DOE'], 'JANE', 'JANE ANN DOE'), dateOfBirth=date(1990, 2, 1), expirationDate=date(2020, 2, 1),
                          isExpired=True, gender='female', fullAddress='1 ELM ST, TOPEKA, KS, 66603', height={'cm': 163, 'inch': 64}, weightRange=3)]),
    case('version 7 New York ID card', barcode([('ID', ['DAQ123456789', 'DCSROE', 'DACRICHARD', 'DADNONE', 'DBD08312013', 'DBB08311960',
                                                        'DBA08312028', 'DBC1', 'DAU070 in', 'DAG2 OAK AVE', 'DAIALBANY', 'DAJNY',
                                                        'DAK122070000', 'DDEN', 'DDFN', 'DDGN']), ('ZN', ['ZNAX'])], iin='636001', version=7), options=TODAY,
         fieldsInclude=[f('header', {'AAMVAVersion': 7, 'IIN': '636001', 'issuer': 'NY', 'jurisdictionVersion': 1}),
                        u(**names(['RICHARD'], ['ROE'], 'RICHARD', 'RICHARD ROE'), dateOfBirth=date(1960, 8, 31), expirationDate=date(2028, 8, 31),
                          isExpired=False, gender='male', fullAddress='2 OAK AVE, ALBANY, NY, 12207', height={'cm': 178, 'inch': 70}, documentType='ID')]),
]
write('unified.json', cases)
