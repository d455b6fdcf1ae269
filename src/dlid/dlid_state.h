// What one parse of an AAMVA barcode learns as it goes: the header, the
// subfile directory and the element table chosen for the document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qvx/string_ref.h"

namespace parser {

class ParserResult;
struct DLIDParserState;

// One entry of the subfile directory.
struct DLIDSubfile {
    std::string type;  // "DL", "ID", "ZC", ...
    std::size_t offset = 0;
    std::size_t size = 0;  // terminator included
};

// How an element's value becomes a field.
enum class DLIDReader : std::uint8_t {
    String,
    Verbatim,
    Latin1,
    TrimmedLatin1,
    Integer,
    Indicator,
    Gender,
    EyeColour,
    HairColour,
    PostalCode,
    HeightDigits,
    HeightCentimetres,
    Height,
    Date,
    CompactDate,
    AlbertaWeight,
};

// Character classes an element's value may draw on, one bit per Charset value.
using DLIDClasses = std::uint8_t;

// An element id's three bytes as one number that sorts as the id does.
constexpr std::uint32_t elementKey(std::string_view id) {
    std::uint32_t key = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        key = key << 8U | (i < id.size() ? static_cast<unsigned char>(id[i]) : 0U);
    }
    return key;
}

struct DLIDElement {
    std::string_view id;
    DLIDClasses allowedClasses = 0;
    DLIDReader reader = DLIDReader::Verbatim;
    std::uint32_t key = elementKey(id);
};

using DLIDElementTable = std::vector<DLIDElement>;

struct DLIDParserState {
    std::int32_t aamvaVersion = 0;
    std::int32_t jurisdictionVersion = 0;
    int segmentTerminator = '\n';
    std::string iin;
    std::int32_t numberOfEntries = 0;
    const DLIDElementTable* elementTable = nullptr;
    std::vector<DLIDSubfile> subfiles;
    std::string documentType = "unknown";
    bool neverExpiresCandidate = false;
    // Decided once from the header, for every date element.
    bool datesYearFirst = false;
};

}  // namespace parser
