#include "mrtd/mrtd_parser_helper.h"

#include <string>

#include "common/text.h"
#include "mrtd/mrtd_compensator.h"
#include "qvx/contract.h"

namespace parser {

namespace {

using C = MrtdFieldClass;
using K = MrtdCheckKind;
constexpr C Any = C::Any;
constexpr C Letters = C::Letters;
constexpr C Digits = C::Digits;
constexpr C Ambiguous = C::Ambiguous;

template <std::size_t N>
constexpr MrtdLayoutLine line(const MrtdLayoutField (&fields)[N]) {
    return MrtdLayoutLine{fields, fields + N};
}

// Each row: name, width, checks fed, class, own check, kind of own check.
// A line's fields are processed in order, so a digit always comes after the
// text it covers.
// clang-format off

// ICAO TD1 card; also the APEC business travel card.
constexpr MrtdLayoutField kTd1Line1[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"issuingState",       3, {},     Letters,   0, K::Plain},
    {"documentNumber",    25, {1},    Ambiguous, 2, K::OverflowNumber},
};
constexpr MrtdLayoutField kTd1Line2[] = {
    {"birthDate field",    6, {1, 3}, Digits,    0, K::Plain},
    {"birthDate",          1, {1},    Digits,    3, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"expiryDate field",   6, {1, 4}, Digits,    0, K::Plain},
    {"expiryDate",         1, {1},    Digits,    4, K::Plain},
    {"nationality",        3, {},     Letters,   0, K::Plain},
    {"optional1",         11, {1},    Ambiguous, 0, K::Plain},
    {"compositeChecksum",  1, {},     Digits,    1, K::DominicanComposite},
};
constexpr MrtdLayoutField kNameOf30[] = {
    {"name",              30, {},     Letters,   0, K::Plain},
};
constexpr MrtdLayout kTd1 = {{line(kTd1Line1), line(kTd1Line2), line(kNameOf30)}, 3, 4};

// ICAO TD2 card.
constexpr MrtdLayoutField kTd2Line1[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"issuingState",       3, {},     Letters,   0, K::Plain},
    {"name",              31, {},     Letters,   0, K::Plain},
};
constexpr MrtdLayoutField kTd2Line2[] = {
    {"documentNumber field", 9, {1, 2}, Ambiguous, 0, K::Plain},
    {"documentNumber",     1, {1},    Digits,    2, K::Plain},
    {"nationality",        3, {},     Letters,   0, K::Plain},
    {"birthDate field",    6, {1, 3}, Digits,    0, K::Plain},
    {"birthDate",          1, {1},    Digits,    3, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"expiryDate field",   6, {1, 4}, Digits,    0, K::Plain},
    {"expiryDate",         1, {1},    Digits,    4, K::Plain},
    {"optional",           7, {1},    Ambiguous, 0, K::Plain},
    {"compositeChecksum",  1, {},     Digits,    1, K::Plain},
};
constexpr MrtdLayout kTd2 = {{line(kTd2Line1), line(kTd2Line2), {}}, 2, 4};

// French national identity card: the composite covers both whole lines.
constexpr MrtdLayoutField kFrenchLine1[] = {
    {"documentCode",       2, {1},    Any,       0, K::Plain},
    {"issuingState",       3, {1},    Letters,   0, K::Plain},
    {"lastLame",          25, {1},    Letters,   0, K::Plain},
    {"nationality",        3, {1},    Ambiguous, 0, K::Plain},
    {"officeOfIssuance",   3, {1},    Digits,    0, K::Plain},
};
constexpr MrtdLayoutField kFrenchLine2[] = {
    {"dateOfIssuance",     4, {1, 2}, Digits,    0, K::Plain},
    {"departamentOfIssuance", 3, {1, 2}, Ambiguous, 0, K::Plain},
    {"managementCenterSign", 5, {1, 2}, Digits,  0, K::Plain},
    {"issuanceInformation", 1, {1},   Digits,    2, K::Plain},
    {"firstName",         14, {1},    Letters,   0, K::Plain},
    {"birthDate field",    6, {1, 3}, Digits,    0, K::Plain},
    {"birthDate",          1, {1},    Digits,    3, K::Plain},
    {"sex",                1, {1},    Any,       0, K::Plain},
    {"compositeChecksum",  1, {},     Digits,    1, K::Plain},
};
constexpr MrtdLayout kTd2FrenchId = {{line(kFrenchLine1), line(kFrenchLine2), {}}, 2, 3};

// ICAO passport; also both sides of the Chinese one-way permit.
constexpr MrtdLayoutField kTd3Line1[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"issuingState",       3, {},     Letters,   0, K::Plain},
    {"name",              39, {},     Letters,   0, K::Plain},
};
constexpr MrtdLayoutField kTd3Line2[] = {
    {"documentNumber field", 9, {1, 2}, Ambiguous, 0, K::Plain},
    {"documentNumber",     1, {1},    Digits,    2, K::Plain},
    {"nationality",        3, {},     Letters,   0, K::Plain},
    {"birthDate field",    6, {1, 3}, Digits,    0, K::Plain},
    {"birthDate",          1, {1},    Digits,    3, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"expiryDate field",   6, {1, 4}, Digits,    0, K::Plain},
    {"expiryDate",         1, {1},    Digits,    4, K::Plain},
    {"optional",          14, {1, 5}, Ambiguous, 0, K::Plain},
    {"optional check digit", 1, {1},  Digits,    5, K::BlankIsZero},
    {"compositeChecksum",  1, {},     Digits,    1, K::Plain},
};
constexpr MrtdLayout kTd3 = {{line(kTd3Line1), line(kTd3Line2), {}}, 2, 5};

// Visas carry no composite.
constexpr MrtdLayoutField kMrvALine1[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"issuingState",       3, {},     Letters,   0, K::Plain},
    {"name",              39, {},     Letters,   0, K::Plain},
};
constexpr MrtdLayoutField kMrvALine2[] = {
    {"documentNumber field", 9, {1},  Ambiguous, 0, K::Plain},
    {"documentNumber",     1, {},     Digits,    1, K::Plain},
    {"nationality",        3, {},     Letters,   0, K::Plain},
    {"birthDate field",    6, {2},    Digits,    0, K::Plain},
    {"birthDate",          1, {},     Digits,    2, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"expiryDate field",   6, {3},    Digits,    0, K::Plain},
    {"expiryDate",         1, {},     Digits,    3, K::Plain},
    {"optional",          14, {},     Ambiguous, 0, K::Plain},
};
constexpr MrtdLayout kMrvA = {{line(kMrvALine1), line(kMrvALine2), {}}, 2, 3};

constexpr MrtdLayoutField kMrvBLine1[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"issuingState",       3, {},     Letters,   0, K::Plain},
    {"name",              31, {},     Letters,   0, K::Plain},
};
constexpr MrtdLayoutField kMrvBLine2[] = {
    {"documentNumber field", 9, {1},  Ambiguous, 0, K::Plain},
    {"documentNumber",     1, {},     Digits,    1, K::Plain},
    {"nationality",        3, {},     Letters,   0, K::Plain},
    {"birthDate field",    6, {2},    Digits,    0, K::Plain},
    {"birthDate",          1, {},     Digits,    2, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"expiryDate field",   6, {3},    Digits,    0, K::Plain},
    {"expiryDate",         1, {},     Digits,    3, K::Plain},
    {"optional",           8, {},     Ambiguous, 0, K::Plain},
};
constexpr MrtdLayout kMrvB = {{line(kMrvBLine1), line(kMrvBLine2), {}}, 2, 3};

// Swiss driving licence: no check digit at all.
constexpr MrtdLayoutField kSwissLine1[] = {
    {"documentNumber 1",   3, {},     Ambiguous, 0, K::Plain},
    {"documentNumber 2",   3, {},     Digits,    0, K::Plain},
    {"documentNumber 3",   3, {},     Ambiguous, 0, K::Plain},
};
constexpr MrtdLayoutField kSwissLine2[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"issuingState",       3, {},     Letters,   0, K::Plain},
    {"pinCode",            9, {},     Digits,    0, K::Plain},
    {"versionNumber",      3, {},     Digits,    0, K::Plain},
    {"separators",         2, {},     Any,       0, K::Plain},
    {"birthDate",          6, {},     Digits,    0, K::Plain},
    {"separators",         5, {},     Any,       0, K::Plain},
};
constexpr MrtdLayout kSwissDrivingLicense = {
    {line(kSwissLine1), line(kSwissLine2), line(kNameOf30)}, 3, 0};

// Chinese travel permits: the first line holds the number and dates, the
// second the name in GBK letters and the century of the birth date.
constexpr MrtdLayoutField kPermitLine1[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"documentNumber field", 9, {1, 2}, Any,     0, K::Plain},
    {"documentNumber",     1, {1},    Digits,    2, K::Plain},
    {"renewalTimes field", 2, {1, 3}, Any,       0, K::Plain},
    {"renewalTimes",       1, {1},    Digits,    3, K::Plain},
    {"dateOfExpiry field", 6, {1, 4}, Any,       0, K::Plain},
    {"dateOfExpiry",       1, {1},    Digits,    4, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"dateOfBirth field",  6, {1, 5}, Any,       0, K::Plain},
    {"dateOfBirth",        1, {1},    Digits,    5, K::Plain},
};
constexpr MrtdLayoutField kPermitCRLine2[] = {
    {"gbkName",           16, {},     Any,       0, K::Plain},
    {"omittedCharacterCountInGBKName", 1, {}, Any, 0, K::Plain},
    {"omittedNameCount",   1, {},     Any,       0, K::Plain},
    {"dateOfBirthCentury", 1, {},     Any,       0, K::Plain},
    {"hkMacauIdNumber field", 9, {1, 6}, Any,    0, K::Plain},
    {"hkMacauIdNumber",    1, {1},    Digits,    6, K::Plain},
    {"compositeChecksum",  1, {},     Digits,    1, K::Plain},
};
constexpr MrtdLayout kPermitCR = {{line(kPermitLine1), line(kPermitCRLine2), line(kNameOf30)}, 3, 6};

constexpr MrtdLayoutField kPermitCFLine2[] = {
    {"passportNumber field", 13, {1, 7}, Any,    0, K::Plain},
    {"passportNumber",     1, {1},    Digits,    7, K::Plain},
    {"omittedEnglishWords", 1, {1},   Letters,   0, K::Plain},
    {"nationality",        3, {1},    Letters,   0, K::Plain},
    {"dateOfBirthCentury", 1, {},     Letters,   0, K::Plain},
    {"hkMacauIdNumber field", 9, {1, 6}, Any,    0, K::Plain},
    {"hkMacauIdNumber",    1, {1},    Digits,    6, K::Plain},
    {"compositeChecksum",  1, {},     Digits,    1, K::Plain},
};
constexpr MrtdLayout kPermitCF = {{line(kPermitLine1), line(kPermitCFLine2), line(kNameOf30)}, 3, 7};

// The Taiwan permit has no composite.
constexpr MrtdLayoutField kPermitCTLine1[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"documentNumber field", 8, {1},  Any,       0, K::Plain},
    {"separator",          1, {},     Any,       0, K::Plain},
    {"documentNumber",     1, {},     Digits,    1, K::Plain},
    {"renewalTimes field", 2, {2},    Any,       0, K::Plain},
    {"renewalTimes",       1, {},     Digits,    2, K::Plain},
    {"dateOfExpiry field", 6, {3},    Any,       0, K::Plain},
    {"dateOfExpiry",       1, {},     Digits,    3, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"dateOfBirth field",  6, {4},    Any,       0, K::Plain},
    {"dateOfBirth",        1, {},     Digits,    4, K::Plain},
};
constexpr MrtdLayoutField kPermitCTLine2[] = {
    {"gbkName",           16, {},     Any,       0, K::Plain},
    {"omittedCharacterCountInGBKName", 1, {}, Any, 0, K::Plain},
    {"omittedNameCount",   1, {},     Any,       0, K::Plain},
    {"dateOfBirthCentury", 1, {},     Any,       0, K::Plain},
    {"taiwanIdNumber field", 10, {},  Any,       0, K::Plain},
};
constexpr MrtdLayoutField kPermitCTLine3[] = {
    {"name",              26, {},     Letters,   0, K::Plain},
    {"issuingAuthorityCode", 4, {},   Digits,    0, K::Plain},
};
constexpr MrtdLayout kPermitCT = {
    {line(kPermitCTLine1), line(kPermitCTLine2), line(kPermitCTLine3)}, 3, 4};

// Chinese exit-entry permits: one line of 30.
constexpr MrtdLayoutField kExitEntryLine[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"documentNumber field", 9, {1, 2}, Any,     0, K::Plain},
    {"documentNumber",     1, {1},    Digits,    2, K::Plain},
    {"separator 1",        1, {},     Any,       0, K::Plain},
    {"dateOfExpiry field", 6, {1, 3}, Any,       0, K::Plain},
    {"dateOfExpiry",       1, {1},    Digits,    3, K::Plain},
    {"separator 2",        1, {},     Any,       0, K::Plain},
    {"dateOfBirth field",  6, {1, 4}, Any,       0, K::Plain},
    {"dateOfBirth",        1, {1},    Digits,    4, K::Plain},
    {"separator 3",        1, {},     Any,       0, K::Plain},
    {"compositeChecksum",  1, {},     Digits,    1, K::Plain},
};
constexpr MrtdLayout kExitEntry = {{line(kExitEntryLine), {}, {}}, 1, 4};

// Vietnamese passport: lines of 43, and a composite column printed as a fixed 0.
constexpr MrtdLayoutField kVietnamLine1[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"issuingState",       3, {},     Letters,   0, K::Plain},
    {"name",              38, {},     Letters,   0, K::Plain},
};
constexpr MrtdLayoutField kVietnamLine2[] = {
    {"documentNumber field", 9, {1, 2}, Ambiguous, 0, K::Plain},
    {"documentNumber",     1, {1},    Digits,    2, K::Plain},
    {"nationality",        3, {},     Letters,   0, K::Plain},
    {"birthDate field",    6, {1, 3}, Digits,    0, K::Plain},
    {"birthDate",          1, {1},    Digits,    3, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"expiryDate field",   6, {1, 4}, Digits,    0, K::Plain},
    {"expiryDate",         1, {1},    Digits,    4, K::Plain},
    {"optional",          13, {1, 5}, Ambiguous, 0, K::Plain},
    {"optional check digit", 1, {1},  Digits,    5, K::BlankIsZero},
    {"compositeChecksum",  1, {},     Digits,    1, K::FixedZero},
};
constexpr MrtdLayout kVietnamesePassport = {{line(kVietnamLine1), line(kVietnamLine2), {}}, 2, 5};

// US border crossing card: check 2 alone covers the code and the issuing state.
constexpr MrtdLayoutField kBorderLine1[] = {
    {"documentCode",       2, {2},    Any,       0, K::Plain},
    {"issuingState",       3, {2},    Letters,   0, K::Plain},
    {"documentNumber field", 9, {1, 2}, Any,     0, K::Plain},
    {"documentNumber",     1, {1},    Digits,    2, K::Plain},
    {"optional",          14, {1},    Ambiguous, 0, K::Plain},
};
constexpr MrtdLayoutField kBorderLine2[] = {
    {"birthDate field",    6, {1, 3}, Digits,    0, K::Plain},
    {"birthDate",          1, {1},    Digits,    3, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"expiryDate field",   6, {1, 4}, Digits,    0, K::Plain},
    {"expiryDate",         1, {1},    Digits,    4, K::Plain},
    {"nationality",        3, {},     Letters,   0, K::Plain},
    {"optional1",         11, {1},    Ambiguous, 0, K::Plain},
    {"compositeChecksum",  1, {},     Digits,    1, K::Plain},
};
constexpr MrtdLayout kBorderCrossingCard = {
    {line(kBorderLine1), line(kBorderLine2), line(kNameOf30)}, 3, 4};

// Mexican consular cards repeat the product of the character before a filler.
constexpr MrtdLayoutField kMexicanCGLine1[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"issuingState",       3, {},     Letters,   0, K::Plain},
    {"documentNumber field", 9, {1, 2}, Any,     0, K::Plain},
    {"documentNumber",     1, {1},    Digits,    2, K::RepeatFiller},
    {"optional",          15, {1},    Ambiguous, 0, K::Plain},
};
constexpr MrtdLayoutField kMexicanCGLine2[] = {
    {"birthDate field",    6, {1, 3}, Digits,    0, K::Plain},
    {"birthDate",          1, {1},    Digits,    3, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"expiryDate field",   6, {1, 4}, Digits,    0, K::Plain},
    {"expiryDate",         1, {1},    Digits,    4, K::Plain},
    {"nationality",        3, {},     Letters,   0, K::Plain},
    {"optional1",         11, {1},    Ambiguous, 0, K::Plain},
    {"compositeChecksum",  1, {},     Digits,    1, K::RepeatFiller},
};
constexpr MrtdLayout kMexicanCG = {
    {line(kMexicanCGLine1), line(kMexicanCGLine2), line(kNameOf30)}, 3, 4};

constexpr MrtdLayoutField kMexicanIDLine1[] = {
    {"documentCode",       2, {},     Any,       0, K::Plain},
    {"issuingState",       3, {},     Letters,   0, K::Plain},
    {"documentNumber field", 9, {1},  Any,       0, K::Plain},
    {"documentNumber",     1, {},     Digits,    1, K::RepeatFiller},
    {"optional",          15, {},     Ambiguous, 0, K::Plain},
};
constexpr MrtdLayoutField kMexicanIDLine2[] = {
    {"birthDate field",    6, {2},    Digits,    0, K::Plain},
    {"birthDate",          1, {},     Digits,    2, K::Plain},
    {"sex",                1, {},     Any,       0, K::Plain},
    {"expiryDate field",   6, {3},    Digits,    0, K::Plain},
    {"expiryDate",         1, {},     Digits,    3, K::Plain},
    {"nationality",        3, {},     Letters,   0, K::Plain},
    {"optional1",         11, {},     Ambiguous, 0, K::Plain},
};
constexpr MrtdLayout kMexicanID = {
    {line(kMexicanIDLine1), line(kMexicanIDLine2), line(kNameOf30)}, 3, 3};

// Indexed by MrtdType.
constexpr const MrtdLayout* kLayouts[kMrtdTypeCount] = {
    &kTd1,                   // Td1
    &kTd2,                   // Td2
    &kTd2FrenchId,           // Td2FrenchId
    &kTd3,                   // Td3
    &kMrvA,                  // MrvA
    &kMrvB,                  // MrvB
    &kSwissDrivingLicense,   // SwissDrivingLicense
    &kPermitCR,              // ChinaTravelPermitCR
    &kPermitCF,              // ChinaTravelPermitCF
    &kPermitCT,              // ChinaTravelPermitCT
    &kExitEntry,             // ChinaExitEntryCS
    &kExitEntry,             // ChinaExitEntryCD
    &kTd3,                   // ChinaOneWayFront
    &kTd3,                   // ChinaOneWayBack
    &kTd1,                   // ApecCard
    &kVietnamesePassport,    // VietnamesePassport
    &kBorderCrossingCard,    // BorderCrossingCard
    &kMexicanCG,             // MexicanConsularCardCG
    &kMexicanID,             // MexicanConsularCardID
};

constexpr const char* kDocumentTypeNames[kMrtdTypeCount] = {
    "td1", "td2", "td2/frenchID", "td3/mrp", "mrv", "mrv", "swissDL",
    "chinaMainlandTravelPermit", "chinaMainlandTravelPermit", "chinaMainlandTravelPermit",
    "chinaExitEntryPermit", "chinaExitEntryPermit",
    "chinaOneWayPermitFront", "chinaOneWayPermitBack",
    "apecBusinessTravelCard", "vietnamesePassport", "borderCrossingCard",
    "mexicanMatriculaConsularCard", "mexicanMatriculaConsularCard",
};
// clang-format on

// Every digit-holding field names a check the row creates, and every group a
// field feeds exists: a row that breaks this would index past its checksums.
constexpr bool checksInRange(const MrtdLayout& layout) {
    for (std::size_t l = 0; l < layout.lineCount; ++l) {
        for (const MrtdLayoutField* f = layout.lines[l].begin; f != layout.lines[l].end; ++f) {
            if (f->ownCheck > layout.checksumCount) return false;
            for (std::uint8_t group : f->checkGroups) {
                if (group > layout.checksumCount) return false;
            }
        }
    }
    return true;
}
constexpr bool allChecksInRange() {
    for (const MrtdLayout* layout : kLayouts) {
        if (!checksInRange(*layout)) return false;
    }
    return true;
}
static_assert(allChecksInRange(), "a layout row refers to a check it does not create");

constexpr bool checkCountsFit() {
    for (const MrtdLayout* layout : kLayouts) {
        if (layout->checksumCount > MrtdChecksums::kMaxChecks) return false;
    }
    return true;
}
static_assert(checkCountsFit(), "a layout row has more checks than an attempt holds");

constexpr unsigned kWeights[3] = {7, 3, 1};

unsigned characterValue(unsigned char c) {
    if (isAsciiDigit(c)) return c - '0';
    if (isAsciiUpper(c)) return c - 55U;
    return 0;
}

// The digit as read off the document: the character's distance from "0",
// which is above 9 for a letter or a filler.
std::uint64_t digitOf(unsigned char c) {
    return static_cast<std::uint64_t>(static_cast<int>(c) - '0');
}

// For the failure message: the last character that is not a filler, as the
// document shows it.
long passedDigitForMessage(ParserStringRef field) {
    for (std::size_t i = field.size(); i > 0; --i) {
        if (field[i - 1] != '<') return static_cast<long>(field[i - 1]) - '0';
    }
    return 0;
}

// A TD1 gives the document number 25 columns. A number longer than nine
// characters leaves a filler in the tenth column and goes on behind it, its
// check digit being the last character before the next filler. Some issuers
// count the filler into the check digit, Belgium either way.
void decideOverflowNumber(ParserStringRef field, ParserStringRef firstLine, MrtdChecksum& checksum,
                          std::string& message) {
    checksum.addSegment(field.first(9), false);
    unsigned char digit = field[9];
    if (digit == '<') {
        const ParserStringRef tail = field.last(15);
        const char* filler = tail.find_char('<');
        if (filler == nullptr) {
            if (message.empty()) message = "Filler position not found";
            digit = '0';
        } else {
            ParserStringRef continuation = tail.first(tail.offsetOf(filler));
            if (continuation.empty()) {
                digit = '0';
            } else {
                digit = continuation.back();
                continuation = continuation.drop_back(1);
            }
            const ParserStringRef issuer = firstLine.slice(2, 5);
            const ParserStringRef tenth = field.slice(9, 10);
            if (issuer == "PRT" || issuer == "SLV") {
                checksum.addSegment(tenth, false);
            } else if (issuer == "BEL") {
                checksum.addSegment(tenth, true);
            }
            checksum.addSegment(continuation, false);
        }
    }
    digit = static_cast<unsigned char>(transformLetterToDigit(static_cast<char>(digit)));
    checksum.passedDigit = digitOf(digit);
}

bool decideCheck(const MrtdLayoutField& field, ParserStringRef view, ParserStringRef firstLine,
                 MrtdChecksum& checksum, std::string& message) {
    const unsigned char c = view[0];
    switch (field.checkKind) {
        case MrtdCheckKind::Plain:
            checksum.passedDigit = digitOf(c);
            return checksum.isValid();
        case MrtdCheckKind::BlankIsZero:
            checksum.passedDigit = digitOf(c == '<' ? '0' : c);
            return checksum.isValid();
        case MrtdCheckKind::OverflowNumber:
            decideOverflowNumber(view, firstLine, checksum, message);
            return checksum.isValid();
        case MrtdCheckKind::DominicanComposite:
            // Dominican identity cards print their composite shifted by five.
            if (firstLine.starts_with("IDDOM")) {
                checksum.passedDigit = (digitOf(c) + 5) % 10;
            } else {
                checksum.passedDigit = digitOf(c);
            }
            return checksum.isValid();
        case MrtdCheckKind::FixedZero:
            return c == '0';
        case MrtdCheckKind::RepeatFiller:
            checksum.fillerRepeats = true;
            checksum.passedDigit = digitOf(c);
            return checksum.isValid();
    }
    return false;
}

}  // namespace

const char* mrtdDocumentTypeName(MrtdType type) {
    const auto index = static_cast<std::size_t>(type);
    QVX_GUARD(index < kMrtdTypeCount, "unknown MrtdType provided");
    return kDocumentTypeNames[index];
}

const MrtdLayout& mrtdLayout(MrtdType type) {
    const auto index = static_cast<std::size_t>(type);
    QVX_GUARD(index < kMrtdTypeCount, "unknown MrtdType provided");
    return *kLayouts[index];
}

void MrtdChecksum::addSegment(ParserStringRef view, bool primaryOnly) {
    QVX_REQUIRE(count_ < kMaxSegments, "precondition failed: count_ < kMaxSegments");
    segments_[count_++] = Segment{view, primaryOnly};
    if (primaryOnly) hasAlternate_ = true;
}

unsigned MrtdChecksum::computeDigit(bool useAlternate) const {
    unsigned sum = 0;
    unsigned weightIndex = 0;
    unsigned lastProduct = 0;
    for (std::size_t s = 0; s < count_; ++s) {
        const Segment& segment = segments_[s];
        if (useAlternate && segment.primaryOnly) continue;
        for (const char* p = segment.view.begin(); p != segment.view.end(); ++p) {
            const auto c = static_cast<unsigned char>(*p);
            unsigned product = 0;
            if (c == '<') {
                // Mexican consular cards count a filler as a repeat of the character before it.
                product = fillerRepeats ? lastProduct : 0;
            } else {
                product = kWeights[weightIndex] * characterValue(c);
            }
            sum += product;
            lastProduct = product;
            weightIndex = weightIndex == 2 ? 0 : weightIndex + 1;
        }
    }
    return sum % 10;
}

void MrtdChecksums::reset(std::size_t count) {
    QVX_REQUIRE(count <= kMaxChecks, "precondition failed: count <= kMaxChecks");
    for (std::size_t i = 0; i < count; ++i) items_[i].clear();
    count_ = count;
}

MrtdChecksum& MrtdChecksums::operator[](std::size_t index) {
    QVX_REQUIRE(index < count_, "precondition failed: index < count_");
    return items_[index];
}

bool MrtdChecksum::isValid() const {
    if (passedDigit == computeDigit(false)) return true;
    return hasAlternate_ && passedDigit == computeDigit(true);
}

std::string walkMrtdLayout(const MrtdLayout& layout, const std::vector<ParserStringRef>& lines,
                           const std::string& text, MrtdCompensator& compensator,
                           MrtdChecksums& checksums, MrtdCheckResults& checkResults) {
    QVX_REQUIRE(lines.size() == layout.lineCount,
                "precondition failed: lines.size() == layout.lineCount");
    std::string message;
    const ParserStringRef firstLine = lines.front();
    for (std::size_t l = 0; l < layout.lineCount; ++l) {
        ParserStringRef rest = lines[l];
        for (const MrtdLayoutField* field = layout.lines[l].begin; field != layout.lines[l].end;
             ++field) {
            ParserStringRef view = rest.take_front(field->width);
            const auto position = static_cast<std::size_t>(view.begin() - text.data());
            compensator.compensateField(position, field->fieldClass, view);
            for (std::uint8_t group : field->checkGroups) {
                if (group != 0) checksums[group - 1].addSegment(view, false);
            }
            if (field->ownCheck == 0) continue;
            MrtdChecksum& checksum = checksums[field->ownCheck - 1];
            const bool passed = decideCheck(*field, view, firstLine, checksum, message);
            checkResults.emplace_back(field->name, passed);
            if (!passed && message.empty()) {
                message =
                    std::string(field->name) + " validation failed. Passed check digit: " +
                    std::to_string(passedDigitForMessage(view)) +
                    ", calculated check digit: " + std::to_string(checksum.computeDigit(false));
            }
        }
    }
    return message;
}

}  // namespace parser
