// The nine formats the library reads, by value and by name.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The value is also the index of the format's name in the name table.
enum class ParserDataFormat : int {
    Gs1Ai = 0,
    Hibc = 1,
    Dlid = 2,
    Mrtd = 3,
    SwissQr = 4,
    Vin = 5,
    UsUsid = 6,
    IataBcbp = 7,
    Gs1DigitalLink = 8,
};

namespace parser {

using ::ParserDataFormat;

// The one table of format names, in value order: "gs1ai", "hibc", "dlid",
// "mrtd", "swissqr", "vin", "us_usid", "iata_bcbp", "gs1_digital_link".
const std::vector<std::pair<ParserDataFormat, std::string>>& dataFormatTable();

// The lower-case name of a format. A value missing from the table is a
// contract failure.
const std::string& dataFormatName(ParserDataFormat format);

// The format of a name, by a linear scan of the table; empty for an unknown name.
std::optional<ParserDataFormat> dataFormatFromName(std::string_view name);

}  // namespace parser
