#include "gs1/digital_link_keys.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "qvx/contract.h"

namespace parser {

namespace {

struct KeyWord {
    const char* ai;
    const char* word;
};

// Primary keys with the qualifier sequences that may follow them in a path,
// by qualifier word. An empty sequence is legal but adds nothing.
struct PrimaryKey {
    const char* ai;
    const char* word;
    std::vector<std::vector<const char*>> sequences;
};

const std::vector<PrimaryKey>& primaryKeys() {
    static const std::vector<PrimaryKey> rows = {
        {"01", "gtin", {{"ser"}, {"lot", "ser"}, {"cpv", "lot", "ser"}, {"cpv", "ser"}, {"tpx"}}},
        {"8006", "itip", {{"ser"}, {"lot", "ser"}, {"cpv", "lot", "ser"}, {"cpv", "ser"}}},
        {"8013", "gmn", {}},
        {"8010", "cpid", {{"cpsn"}}},
        {"414", "gln", {{"glnx"}, {"ui-ext"}}},
        {"415", "payTo", {}},
        {"417", "party", {{}, {"ui-ext"}}},
        {"8017", "gsrnp", {{"srin"}}},
        {"8018", "gsrn", {{"srin"}}},
        {"255", "gcn", {}},
        {"00", "sscc", {}},
        {"253", "gdti", {}},
        {"401", "ginc", {}},
        {"402", "gsin", {}},
        {"8003", "grai", {}},
        {"8004", "giai", {{}, {"ui-ext"}}},
    };
    return rows;
}

// "refno" stands in no sequence: it is known, but never legal in a strict path.
constexpr KeyWord kQualifiers[] = {
    {"22", "cpv"},     {"10", "lot"},    {"21", "ser"},  {"8011", "cpsn"},   {"254", "glnx"},
    {"8020", "refno"}, {"8019", "srin"}, {"235", "tpx"}, {"7040", "ui-ext"},
};

// Data attributes: a word and the AIs it covers, as "a, b-c" with inclusive
// ranges of AIs of equal length.
struct Attribute {
    const char* word;
    const char* ais;
};

constexpr Attribute kAttributes[] = {
    {"activePotencyParameter", "7004"},
    {"additionalIdParameter", "240"},
    {"amountCode", "3900-3905"},
    {"amountISOCode", "3910-3915"},
    {"amountPayPerUnitCode", "3950-3953"},
    {"aquaticSpeciesParameter", "7008"},
    {"areaVMTICode", "3140-3145, 3500-3505, 3510-3515, 3520-3525"},
    {"authToLeaveParameter", "4322"},
    {"bestBeforeDateParameter", "15"},
    {"billToParameter", "411"},
    {"catchAreaParameter", "7005"},
    {"certificationRefCode", "7230-7239"},
    {"cmtNoParameter", "8002"},
    {"contentParameter", "02"},
    {"countParameter", "37"},
    {"countryDisassemblyParameter", "425"},
    {"countryFullProcessParameter", "426"},
    {"countryInitialProcessParameter", "423"},
    {"countryProcessParameter", "424"},
    {"couponIDNAParameter", "8110"},
    {"cpidParameter", "8010"},
    {"custPartNoParameter", "241"},
    {"dangerousGoodsParameter", "4321"},
    {"depthVMTICode", "3130-3135, 3270-3275, 3280-3285, 3290-3295"},
    {"dimensionsParameter", "8001"},
    {"dueDateParameter", "12"},
    {"expiryDateCode", "17"},
    {"expiryTimeCode", "7003"},
    {"firstFreezeDateParameter", "7006"},
    {"fishingGearTypeParameter", "7009"},
    {"funcStatParameter", "7021"},
    {"gcnParameter", "255"},
    {"gdtiParameter", "253"},
    {"giaiAssemblyParameter", "7023"},
    {"giaiParameter", "8004"},
    {"gincParameter", "401"},
    {"glnParameter", "414"},
    {"gmnParameter", "8013"},
    {"graiParameter", "8003"},
    {"grossWeightCode", "3300-3305, 3400-3405"},
    {"gsinParameter", "402"},
    {"gsrnParameter", "8018"},
    {"gsrnpParameter", "8017"},
    {"gtinParameter", "01"},
    {"harvestDateParameter", "7007"},
    {"ibanParameter", "8007"},
    {"internalCode", "91-99"},
    {"itipContentParameter", "8026"},
    {"itipParameter", "8006"},
    {"lengthVMTICode", "3110-3115, 3210-3215, 3220-3225, 3230-3235"},
    {"logisticAreaCode", "3340-3345, 3530-3535, 3540-3545, 3550-3555"},
    {"logisticDepthCode", "3330-3335, 3470-3475, 3480-3485, 3490-3495"},
    {"logisticLengthCode", "3310-3315, 3410-3415, 3420-3425, 3430-3435"},
    {"logisticVolumeCode",
     "3350-3355, 3360-3365, 3620-3625, 3630-3635, 3670-3675, 3680-3685, 3690-3695"},
    {"logisticWidthCode", "3320-3325, 3440-3445, 3450-3455, 3460-3465"},
    {"massPerUnitAreaVMTICode", "3370-3375"},
    {"meatCutParameter", "7002"},
    {"mtoVariantParameter", "242"},
    {"mutualParameter", "90"},
    {"netVolumeVMTICode",
     "3150-3155, 3160-3165, 3600-3605, 3610-3615, 3640-3645, 3650-3655, 3660-3665"},
    {"netWeightVMTICode", "3100-3105, 3200-3205, 3560-3565, 3570-3575"},
    {"nhrnAIMParameter", "714"},
    {"nhrnCIPParameter", "711"},
    {"nhrnCNParameter", "712"},
    {"nhrnDRNParameter", "713"},
    {"nhrnPZNParameter", "710"},
    {"nhrnUS-FDAParameter", "715"},
    {"notAfterDelDateParameter", "4325"},
    {"notBeforeDelDateParameter", "4324"},
    {"nsnParameter", "7001"},
    {"opticalSensorParameter", "8009"},
    {"orderNumberParameter", "400"},
    {"originParameter", "422"},
    {"originSubdivisionParameter", "427"},
    {"packDateParameter", "13"},
    {"paperlessCouponIDNAParameter", "8112"},
    {"partyGlnParameter", "417"},
    {"payToParameter", "415"},
    {"pcnParameter", "243"},
    {"percentOffCode", "3940-3945"},
    {"pointsParameter", "8111"},
    {"priceCode", "3920-3925"},
    {"priceISOCode", "3930-3935"},
    {"pricePerUnitParameter", "8005"},
    {"processorCode", "7030-7039"},
    {"prodDateParameter", "11"},
    {"prodMethodParameter", "7010"},
    {"prodServLocParameter", "416"},
    {"prodTimeParameter", "8008"},
    {"purchaseFromParameter", "412"},
    {"refNoParameter", "8020"},
    {"refToSourceParameter", "251"},
    {"refurbLotParameter", "7020"},
    {"releaseDateParameter", "4326"},
    {"revStatParameter", "7022"},
    {"routeParameter", "403"},
    {"rtnToAdd1Parameter", "4312"},
    {"rtnToAdd2Parameter", "4313"},
    {"rtnToCompParameter", "4310"},
    {"rtnToCountryParameter", "4317"},
    {"rtnToLocParameter", "4315"},
    {"rtnToNameParameter", "4311"},
    {"rtnToPhoneParameter", "4319"},
    {"rtnToPostParameter", "4318"},
    {"rtnToRegParameter", "4316"},
    {"rtnToSubParameter", "4314"},
    {"secondarySerialParameter", "250"},
    {"sellByDateParameter", "16"},
    {"shipForLocParameter", "413"},
    {"shipToAdd1Parameter", "4302"},
    {"shipToAdd2Parameter", "4303"},
    {"shipToCompParameter", "4300"},
    {"shipToCountryParameter", "4307"},
    {"shipToLocParameter", "410"},
    {"shipToLocalityParameter", "4305"},
    {"shipToNameParameter", "4301"},
    {"shipToPhoneParameter", "4308"},
    {"shipToPostISOParameter", "421"},
    {"shipToPostParameter", "420"},
    {"shipToRegParameter", "4306"},
    {"shipToSubParameter", "4304"},
    {"sigRequiredParameter", "4323"},
    {"srvDescriptionParameter", "4320"},
    {"ssccParameter", "00"},
    {"varCountParameter", "30"},
    {"variantParameter", "20"},
    {"versionParameter", "8012"},
    {"widthVMTICode", "3120-3125, 3240-3245, 3250-3255, 3260-3265"},
};

// Each AI of an attribute's list, in order.
std::vector<std::string> expandAis(std::string_view list) {
    std::vector<std::string> ais;
    while (!list.empty()) {
        const std::size_t comma = list.find(", ");
        const std::string_view item = list.substr(0, comma);
        list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 2);
        const std::size_t dash = item.find('-');
        if (dash == std::string_view::npos) {
            ais.emplace_back(item);
            continue;
        }
        const std::string first(item.substr(0, dash));
        const int last = std::stoi(std::string(item.substr(dash + 1)));
        for (int ai = std::stoi(first); ai <= last; ++ai) {
            std::string text = std::to_string(ai);
            text.insert(0, first.size() - std::min(first.size(), text.size()), '0');
            ais.push_back(std::move(text));
        }
    }
    return ais;
}

// Every (word, AI) pair of the data attributes, in table order; built once.
const std::vector<std::pair<std::string, std::string>>& attributePairs() {
    static const std::vector<std::pair<std::string, std::string>> pairs = [] {
        std::vector<std::pair<std::string, std::string>> all;
        for (const Attribute& attribute : kAttributes) {
            for (std::string& ai : expandAis(attribute.ais)) {
                all.emplace_back(attribute.word, std::move(ai));
            }
        }
        return all;
    }();
    return pairs;
}

}  // namespace

DigitalLinkKeys::DigitalLinkKeys() {
    for (const PrimaryKey& key : primaryKeys()) {
        nameToAi[key.word] = key.ai;
        aiToName[key.ai] = key.word;
    }
    for (const KeyWord& qualifier : kQualifiers) {
        nameToAi[qualifier.word] = qualifier.ai;
        aiToName[qualifier.ai] = qualifier.word;
    }
    // Attributes come last so that their words win in `aiToName`, and a word
    // covering a range keeps the last AI of it.
    for (const auto& [word, ai] : attributePairs()) {
        nameToAi[word] = ai;
        aiToName[ai] = word;
    }
    const auto aiOf = [this](const char* word) -> const std::string& {
        const auto found = nameToAi.find(word);
        QVX_REQUIRE(found != nameToAi.end(),
                    std::string("Data attribute key name not found: ") + word);
        return found->second;
    };
    for (const PrimaryKey& key : primaryKeys()) {
        const std::string root = "/" + aiOf(key.word);
        validPaths.insert(root);
        // Every prefix of a legal sequence is legal too.
        for (const auto& sequence : key.sequences) {
            std::string path = root;
            for (const char* word : sequence) {
                path += "/" + aiOf(word);
                validPaths.insert(path);
            }
        }
    }
}

result<std::string, std::string> DigitalLinkKeys::getAiForName(const std::string& key) const {
    const auto found = nameToAi.find(key);
    if (found == nameToAi.end()) {
        return result<std::string, std::string>::failure("Data attribute key name not found: " +
                                                         key);
    }
    return result<std::string, std::string>::success(found->second);
}

bool isEncodedKey(std::string_view key) {
    return std::find(encodedKeys.begin(), encodedKeys.end(), key) != encodedKeys.end();
}

}  // namespace parser
