#include "qvx/data_format.h"

#include <algorithm>

#include "qvx/contract.h"

namespace parser {

const std::vector<std::pair<ParserDataFormat, std::string>>& dataFormatTable() {
    static const std::vector<std::pair<ParserDataFormat, std::string>> pairs = {
        {ParserDataFormat::Gs1Ai, "gs1ai"},
        {ParserDataFormat::Hibc, "hibc"},
        {ParserDataFormat::Dlid, "dlid"},
        {ParserDataFormat::Mrtd, "mrtd"},
        {ParserDataFormat::SwissQr, "swissqr"},
        {ParserDataFormat::Vin, "vin"},
        {ParserDataFormat::UsUsid, "us_usid"},
        {ParserDataFormat::IataBcbp, "iata_bcbp"},
        {ParserDataFormat::Gs1DigitalLink, "gs1_digital_link"},
    };
    return pairs;
}

const std::string& dataFormatName(ParserDataFormat format) {
    const auto& pairs = dataFormatTable();
    auto res = std::find_if(pairs.begin(), pairs.end(),
                            [format](const auto& pair) { return pair.first == format; });
    QVX_REQUIRE(res != pairs.end(), "postcondition failed: res != pairs.end()");
    return res->second;
}

std::optional<ParserDataFormat> dataFormatFromName(std::string_view name) {
    for (const auto& [format, formatName] : dataFormatTable()) {
        if (formatName == name) return format;
    }
    return std::nullopt;
}

}  // namespace parser
