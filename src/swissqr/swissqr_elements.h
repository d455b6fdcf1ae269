// The lines of a Swiss payment QR bill: which element each line holds in
// either version of the bill, and the test one line undergoes against its
// element.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/text.h"
#include "qvx/issue.h"
#include "qvx/parsed.h"
#include "qvx/string_ref.h"

namespace parser::swissqr {

enum class Status : std::uint8_t {
    Mandatory = 0,
    MandatoryInGroup = 1,  // required once any line of its group is filled
    Optional = 2,
    Alternative = 3,  // optional, and stands for every line past the end
};

// The place of an element in the name-and-place body of an address.
enum class AddressPart : std::uint8_t {
    None = 0,
    Type = 1,           // "S" structured, "K" combined
    NameAndStreet = 2,  // name and the two street lines
    PostalPlace = 3,    // postal code and town: empty in a combined address
};

struct LengthRule {
    std::size_t length = 0;
    bool exact = false;
};

// Adapts an element's length rule to one value.
using LengthHook = void (*)(ParserStringRef value, bool strictMode, LengthRule& rule);

// Adds the field of a line that passed its tests, with `pending` attached when
// it is not null. False when the line cannot be read: the result's error then
// says why.
using FieldMaker = bool (*)(ParserResult& result, std::string name, ParserStringRef line,
                            std::shared_ptr<ParserIssue> pending);

struct Element {
    std::string name;  // the path, "QRCH/Header/QRType"
    Status status = Status::Mandatory;
    LengthRule lengthRule;
    Charset charset = Charset::General;
    FieldMaker addField = nullptr;
    LengthHook lengthHook = nullptr;  // null: the rule stands as written
    AddressPart addressPart = AddressPart::None;

    // Indices of the elements that share this one's parent path: a whole
    // address may be left out, but one that is begun must be complete.
    // Filled for MandatoryInGroup elements only.
    std::vector<std::size_t> group;

    // Elements with a tolerance of their own outside strict mode.
    bool isCurrency = false;
    bool isIban = false;
    // The second street line, which in a combined address carries postal code
    // and town and so may exceed its limit.
    bool isSecondAddressLine = false;
};

// The element list of a bill whose version line has `majorDigit` as its
// second byte: '1' or '2'. Empty for any other byte. Built once.
const std::vector<Element>& elementsForVersion(unsigned char majorDigit);

// What the reader of a bill knows about one line before it is tested.
struct LineContext {
    bool strictMode = true;
    // The line belongs to the body of an address whose type is "K".
    bool combinedAddress = false;
    // An empty line is acceptable for this element here.
    bool mayBeEmpty = false;
};

// Tests `line` against `element` and adds its field under `name`. False when
// the line is fatal: the result's error then holds the issue.
bool readLine(const Element& element, std::string name, ParserStringRef line,
              const LineContext& context, ParserResult& result);

}  // namespace parser::swissqr
