#include "usid/usid_tables.h"

#include <algorithm>

namespace parser::usid {

namespace {

bool isTwoDigitCode(std::string_view code) {
    return code.size() == 2 && code[0] >= '0' && code[0] <= '9' && code[1] >= '0' && code[1] <= '9';
}

}  // namespace

// Rows follow the sponsor flag of the card's barcode data dictionary.
const CodedTable kSponsorFlag = {
    {"0", "dependent"},
    {"1", "sponsor"},
};

// Rows follow the eye colour codes of the card's data dictionary.
const CodedTable kEyeColor = {
    {"BR", "brown"}, {"GR", "green"}, {"BL", "blue"},  {"HZ", "hazel"},
    {"BK", "black"}, {"GY", "gray"},  {"OT", "other"}, {"VI", "violet"},
};

// Rows follow the hair colour codes of the card's data dictionary.
const CodedTable kHairColor = {
    {"BR", "brown"},  {"GY", "gray"},  {"RD", "red"},   {"AU", "auburn"}, {"BK", "black"},
    {"BN", "blonde"}, {"WH", "white"}, {"OT", "other"}, {"BD", "bald"},
};

// Rows follow the direct care (military medical) eligibility codes of the data dictionary.
const CodedTable kDirectCareFlag = {
    {"S", "unlimited"},
    {"N", "not eligible"},
    {"X", "eligible, but removed"},
    {"R", "reimbursable"},
};

// Rows follow the civilian health care (CHAMPUS) eligibility codes of the data dictionary.
const CodedTable kCivilianHealthCare = {
    {"M", "CHAMPUS"},
    {"T", "unknown value"},
    {"N", "not eligible"},
    {"F", "foreign outpatient/reimbursable"},
};

// Rows follow the commissary privilege codes of the data dictionary; MWR
// privileges share them.
const CodedTable kCommissary = {
    {"Y", "eligible and active"},
    {"N", "not eligible"},
    {"X", "eligible, but removed"},
};

// Rows follow the MWR (morale, welfare, recreation) privilege codes of the data dictionary.
const CodedTable kMwr = {
    {"Y", "eligible and active"},
    {"N", "not eligible"},
    {"X", "eligible, but removed"},
};

// Rows follow the exchange privilege codes of the data dictionary.
const CodedTable kExchange = {
    {"U", "unlimited"},
    {"N", "not eligible"},
    {"L", "limited"},
    {"X", "eligible, but removed"},
};

// Rows follow the blood type codes of the data dictionary. A letter O where
// the zero belongs reads as the zero. "unk" in lower case
// is no code.
const CodedTable kBloodType = {
    {"A+", "A+"}, {"A-", "A-"}, {"B+", "B+"}, {"B-", "B-"}, {"AB+", "AB+"},     {"AB-", "AB-"},
    {"0+", "0+"}, {"O+", "0+"}, {"O-", "0-"}, {"0-", "0-"}, {"Unk", "unknown"}, {"UNK", "unknown"},
};

// Rows follow the DEERS dependent suffix bands of the data dictionary. A code
// outside every band is invalid.
const RangeTable kDeersDependentSuffix = {
    {"01", "19", "dependent child"},
    {"00", "00", "sponsor"},
    {"20", "20", "sponsor"},
    {"30", "39", "spouse of sponsor"},
    {"40", "44", "mother of sponsor"},
    {"45", "49", "father of sponsor"},
    {"50", "54", "mother-in-law of sponsor"},
    {"55", "59", "father-in-law of sponsor"},
    {"60", "69", "other dependent"},
    {"98", "98", "service secretary designee"},
};

// clang-format off
// Rows follow the relationship-to-sponsor codes of the data dictionary. Long
// descriptions keep the line breaks of the printed code list.
const CodedTable kRelationship = {
    {"CH", "child"},
    {"SC", "stepchild"},
    {"URW", "unremarried widow(er) (never remarried)"},
    {"UMW", "unmarried widow(er)"},
    {"PL", "parent-in-law"},
    {"DB", "unrecognized"},
    {"SPL", "stepparent-in-law"},
    {"PAR", "parent"},
    {"STP", "stepparent"},
    {"SP", "spouse"},
    {"WARD", "legal ward"},
    {"URFS02", "unremarried former spouse (meets 20-20-20 criteria)"},
    {"URFS03", "unremarried former spouse (meets 20-20-15 criteria and marriage terminated before April 1, 1985)"},
    {"URFS04", "unremarried former spouse (meets 20-20-15 criteria and marriage terminated on or after April 1, 1985)"},
    {"URFS05", "unremarried former spouse (meets 10-20-10 criteria and marriage terminated on or after October 23,\n1992)"},
    {"UMFS", "unmarried former spouse (meets 20-20-20 criteria and remarriage terminated by death or divorce)"},
};

// Rows follow the personnel status codes of the data dictionary, with the
// line breaks of the printed list.
const CodedTable kStatus = {
    {"ACADMY", "Academy or Navy Officer Candidate School (OCS) Student"},
    {"AD", "Active duty (excluding Guard and Reserve on extended active duty for more than 30 days)"},
    {"AD-DEC", "Active duty deceased"},
    {"CIV", "Civilian"},
    {"DAVDEC", "100-percent disabled veteran deceased (either temporary (TMP) or permanent (PRM))"},
    {"DAVPRM", "100-percent disabled veteran, permanent disability"},
    {"DAVTMP", "100-percent disabled veteran, temporary disability"},
    {"FP", "Foreign military personnel"},
    {"FMRMR", "Former member who is in receipt of retired pay for non-regular service under Chapter 1223 of 10\nU.S.C. (reference (dd)) but who has been discharged from the Service and maintains no military\naffiliation"},
    {"FMRDEC", "A former member who qualified for retired pay for non-regular service under Chapter 1223 of 10 U.S.C.\n(reference (dd)) at his or /her sixtieth birthday, before his or/ her discharge from the Service, but died\nwhile in receipt of retired pay"},
    {"GRD", "National Guard (all categories)"},
    {"GRDDEC", "National Guard deceased"},
    {"GRD-AD", "Guard on extended active duty for more than 30 days"},
    {"MH", "Medal of Honor recipient"},
    {"MH-DEC", "Medal of Honor recipient deceased"},
    {"OTHER", "Non-DoD eligible beneficiaries (including credit union employees, or contractor personnel, and other\ncivilians employed in support of U.S. forces overseas, who are authorized benefits and privileges)"},
    {"PDRL", "Retired member, on the Permanent Disability Retired List (PDRL)"},
    {"PR-APL", "Prisoner or /Appellate leave"},
    {"RCL-AD", "Recalled to active duty"},
    {"RES", "Reserve (all categories)"},
    {"RES-AD", "Reserve members on extended active duty for more than 30 days"},
    {"RESDEC", "Reserve deceased"},
    {"RESRET", "National Guard and Reserve members who retire, but are not entitled to retired pay until age 60"},
    {"RET", "Retired member entitled to retired pay"},
    {"RETDEC", "Deceased retired member entitled to retired pay. Code applies to active duty retired, Retired Reserve\nbeginning on their 60th birthday, the TDRL, and the PDRL."},
    {"SSB", "Special Separation Benefits (SSB) recipient member with 120 days medical benefits\n(CHAMPUS/TRICARE and MTF)"},
    {"TDRL", "Retired member, on the Temporary Disability Retired List (TDRL)"},
    {"TA-RES", "Selected Reserve Transition Assistance Management Program members and their eligible\ndependents"},
    {"TA-30", "Involuntarily separated member of Reserve or Guard Component entitled to 30 days medical benefits\n(CHAMPUS/TRICARE and MTF)"},
    {"TA-60", "Involuntarily separated member with 60 days medical benefits (CHAMPUS/TRICARE and MTF)"},
    {"TA-120", "Involuntarily separated member with 120 days medical benefits (CHAMPUS/TRICARE and MTF)"},
    {"VSI", "Voluntary Separation Incentive (VSI) recipient with 120 days medical benefits (CHAMPUS/TRICARE and\nMTF)"},
};
// clang-format on

// Rows follow the service codes of the data dictionary. "0" stands twice;
// the second entry changes nothing.
const ListedTable kServiceCode = {"A", "B", "C", "D", "E", "F", "G", "O", "P", "Q", "R", "S",
                                  "T", "U", "V", "W", "X", "Y", "Z", "1", "2", "H", "3", "4",
                                  "5", "6", "7", "0", "I", "J", "K", "L", "M", "N", "0"};

// Rows follow the branch of service codes of the data dictionary.
const ListedTable kBranchOfService = {"USA",  "USAF",  "USN",  "USMC",
                                      "USCG", "USPHS", "NOAA", "OTHER"};

// Rows follow the Geneva Conventions category codes of the data dictionary.
const ListedTable kGenevaConventionCategory = {"I", "II", "III", "IV", "V", "N/A"};

// Rows follow the pay grade codes of the data dictionary.
const ListedTable kPayGrade = {
    "E1",   "E2",   "E3",   "E4",   "E5",   "E6",   "E7",   "E8",   "E9",    "W1",   "W2",   "W3",
    "W4",   "W5",   "STDT", "O1",   "O2",   "O3",   "O4",   "O5",   "O6",    "O7",   "O8",   "O9",
    "O10",  "O11",  "GS01", "GS02", "GS03", "GS04", "GS05", "GS06", "GS07",  "GS08", "GS09", "GS10",
    "GS11", "GS12", "GS13", "GS14", "GS15", "GS16", "GS17", "GS18", "OTHER", "N/A"};

// Rows follow the service names of the data dictionary's service codes.
// "other of not applicable" is the text callers already match on; it stays.
const CodedTable kServiceNames = {
    {"A", "USA"},
    {"C", "USCG"},
    {"D", "DoD"},
    {"F", "USAF"},
    {"H", "USPHS"},
    {"M", "USMC"},
    {"N", "USN"},
    {"O", "NOAA"},
    {"1", "foreign army"},
    {"2", "foreign navy"},
    {"3", "foreign marine corps"},
    {"4", "foreign air force"},
    {"X", "other of not applicable"},
};

const std::string* findText(const CodedTable& table, std::string_view code) {
    for (const auto& row : table) {
        if (row.first == code) return &row.second;
    }
    return nullptr;
}

const std::string* findText(const RangeTable& table, std::string_view code) {
    if (!isTwoDigitCode(code)) return nullptr;
    // Two-digit codes compare as text in the same order as their values.
    for (const auto& row : table) {
        if (row.low <= code && code <= row.high) return &row.text;
    }
    return nullptr;
}

bool isListed(const ListedTable& table, std::string_view value) {
    return std::find(table.begin(), table.end(), value) != table.end();
}

}  // namespace parser::usid
