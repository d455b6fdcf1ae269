// Driver licences and ID cards: the PDF417 barcode of the AAMVA card design
// standard, and the AAMVA magnetic stripe.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "common/date.h"
#include "dlid/dlid_state.h"
#include "qvx/bc_parser.h"

namespace parser {

class DLIDParser : public BcParser {
  public:
    DLIDParser();

    std::unique_ptr<ParserResult> parse(ParserStringRef code) override;
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;

    // The three tracks of a stripe, as element-named fields.
    void parseMagstripeFormat(ParserStringRef code, ParserResult& result) const;

    // True when the header's data element separator or segment terminator
    // is CR LF rather than LF.
    static bool dataElementSeparatorOrSegmentTerminatorIsWindowsEOL(ParserStringRef code);
    static std::string removeWindowsEOLFromString(std::string_view text);

    // The elements of one subfile; false once the result's issue is set.
    bool parseSubfile(const DLIDSubfile& subfile, ParserStringRef code, ParserResult& result,
                      DLIDParserState& state) const;

    // The verification features of a barcode: "VERIFICATION_FEATURE_JSON" and
    // "ANONYMIZED_VERIFICATION_FEATURE_JSON", each the compact JSON text with
    // its object. Ages and expiry are counted to `currentDate`.
    std::unique_ptr<ParserResult> generate_offline_features(ParserStringRef code) const;

    // Adds "unified": the holder's facts in one shape for every version.
    void generateUnifiedField(ParserResult& result, int version, const std::string& documentType,
                              bool neverExpiresCandidate) const;

  private:
    void parseBarcode(ParserStringRef code, ParserResult& result) const;

    Date currentDate_;
    bool strictElementIdVerification_ = false;
    bool ignoreCutOffElementId_ = false;
    bool enhanceDataForFeatureExtraction_ = false;
};

}  // namespace parser
