from lib import *
def after(date='20240601', enhance=False, ignore=False, strict=False):
    return {'current_date': date, 'enhance_data_for_feature_extraction': enhance,
            'ignore_cut_off_element_id': ignore, 'strict_element_id_verification': strict}
MSG = "option 'currentDate' must be a date written YYYYMMDD"
cases = [
    {'name': 'all options written back in their own form', 'options': {'currentDate': '20240601', 'ignoreCutOffElementId': True, 'strictElementIdVerification': True, 'enhanceDataForFeatureExtraction': True},
     'optionsAfter': after(enhance=True, ignore=True, strict=True), 'data': tx()},
    {'name': 'current date with dashes', 'options': {'currentDate': '2024-02-29'}, 'optionsAfter': after('20240229'), 'optionsError': ''},
    {'name': 'current date that does not exist', 'options': {'currentDate': '20230229'}, 'optionsError': MSG},
    {'name': 'current date with a month of 13', 'options': {'currentDate': '20241301'}, 'optionsError': MSG},
    {'name': 'current date of another length', 'options': {'currentDate': '240601'}, 'optionsError': MSG},
    {'name': 'current date as a number', 'options': {'currentDate': 20240601}, 'optionsError': MSG},
    {'name': 'current date with letters', 'options': {'currentDate': '2024O601'}, 'optionsError': MSG},
    {'name': 'unknown key', 'options': {'strictMode': True}, 'optionsError': 'invalid option: strictMode'},
    {'name': 'snake case keys are not read', 'options': {'current_date': '20240601'}, 'optionsError': 'invalid option: current_date'},
    {'name': 'flag that is no boolean', 'options': {'ignoreCutOffElementId': 1}, 'optionsError': "option 'ignoreCutOffElementId' must be boolean"},
    {'name': 'keys before a bad one stay set', 'options': {'strictElementIdVerification': 'yes', 'currentDate': '20240601', 'ignoreCutOffElementId': True},
     'optionsAfter': after(ignore=True), 'optionsError': "option 'strictElementIdVerification' must be boolean"},
    {'name': 'empty options change nothing', 'optionsText': '{}', 'data': tx(), 'fieldsInclude': [f('DAQ', '12345678')]},
]
write('options.json', cases)
