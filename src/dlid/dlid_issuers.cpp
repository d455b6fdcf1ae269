#include "dlid/dlid_issuers.h"

#include <algorithm>

namespace parser::dlid {

// Rows follow the IIN list of the AAMVA card design standard, then the four
// codes seen on real documents beside it.
const std::array<IssuerRow, kIssuerCount> kIssuerTable = {{
    {"636033", "AL"},
    {"636059", "AK"},
    {"604432", "AB"},
    {"604427", "AS"},
    {"636026", "AZ"},
    {"636021", "AR"},
    {"636028", "BC"},
    {"636014", "CA"},
    {"636056", "CU"},
    {"636020", "CO"},
    {"636006", "CT"},
    {"636011", "DE"},
    {"636043", "DC"},
    {"636010", "FL"},
    {"636055", "GA"},
    {"636019", "GU"},
    {"636047", "HI"},
    {"636057", "HL"},
    {"636050", "ID"},
    {"636035", "IL"},
    {"636037", "IN"},
    {"636018", "IA"},
    {"636022", "KS"},
    {"636046", "KY"},
    {"636007", "LA"},
    {"636041", "ME"},
    {"636048", "MB"},
    {"636003", "MD"},
    {"636002", "MA"},
    {"636032", "MI"},
    {"636038", "MN"},
    {"636051", "MS"},
    {"636030", "MO"},
    {"636008", "MT"},
    {"636054", "NE"},
    {"636049", "NV"},
    {"636017", "NB"},
    {"636039", "NH"},
    {"636036", "NJ"},
    {"636009", "NM"},
    {"636001", "NY"},
    {"636016", "NL"},
    {"636004", "NC"},
    {"636034", "ND"},
    {"604430", "MP"},
    {"636013", "NS"},
    {"604433", "NU"},
    {"636023", "OH"},
    {"636058", "OK"},
    {"636012", "ON"},
    {"636029", "OR"},
    {"636025", "PA"},
    {"604426", "PE"},
    {"604431", "PR"},
    {"604428", "QC"},
    {"636052", "RI"},
    {"636044", "SK"},
    {"636005", "SC"},
    {"636042", "SD"},
    {"636053", "TN"},
    {"636015", "TX"},
    {"636040", "UT"},
    {"636024", "VT"},
    {"636062", "VI"},
    {"636000", "VA"},
    {"636045", "WA"},
    {"636061", "WV"},
    {"636031", "WI"},
    {"636060", "WY"},
    {"604429", "YT"},
    {"636027", "State Dept. (Diplomatic)"},
    // Some issuers drop the leading digit of the IIN.
    {"36026", "AZ"},
    {"36004", "NC"},
    // Older Alberta cards carry a code outside the standard's list.
    {"990876", "AB"},
}};

std::string_view issuerForIin(std::string_view iin) {
    // Most IINs share their first digits: the last byte tells rows apart
    // before the whole key is compared.
    for (const IssuerRow& row : kIssuerTable) {
        if (row.iin.size() == iin.size() && !iin.empty() && row.iin.back() == iin.back() &&
            row.iin == iin) {
            return row.abbreviation;
        }
    }
    return iin;
}

bool isCanadian(std::string_view iin) {
    return std::find(kCanadianIins.begin(), kCanadianIins.end(), iin) != kCanadianIins.end();
}

}  // namespace parser::dlid
