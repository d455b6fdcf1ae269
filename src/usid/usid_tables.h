// The fixed vocabularies of the uniformed-services ID card. Lookups go through
// each table in order, so where a text stands twice the first row wins.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace parser::usid {

// (code, text) rows.
using CodedTable = std::vector<std::pair<std::string, std::string>>;
// Plain allowed values.
using ListedTable = std::vector<std::string>;
// (lowest code, highest code, text) rows, for two-digit codes that come in
// numeric bands.
struct CodeRange {
    std::string_view low;
    std::string_view high;
    std::string text;
};
using RangeTable = std::vector<CodeRange>;

extern const CodedTable kSponsorFlag;
extern const CodedTable kEyeColor;
extern const CodedTable kHairColor;
extern const CodedTable kDirectCareFlag;
extern const CodedTable kCivilianHealthCare;
extern const CodedTable kCommissary;
extern const CodedTable kMwr;
extern const CodedTable kExchange;
extern const CodedTable kBloodType;
extern const RangeTable kDeersDependentSuffix;
extern const CodedTable kRelationship;
extern const CodedTable kStatus;

extern const ListedTable kServiceCode;
extern const ListedTable kBranchOfService;
extern const ListedTable kGenevaConventionCategory;
extern const ListedTable kPayGrade;

// Service names by service code. No field reads it; it is kept for callers
// that want to name the service behind a "serviceCode".
extern const CodedTable kServiceNames;

// The text of the first row whose code (or predicate) matches, or null.
const std::string* findText(const CodedTable& table, std::string_view code);
const std::string* findText(const RangeTable& table, std::string_view code);
bool isListed(const ListedTable& table, std::string_view value);

}  // namespace parser::usid
