#include "bcbp/bcbp_section.h"

namespace parser {

bool runBcbpSection(const std::vector<BcbpFieldSpec>& specs, ParserStringRef& text,
                    bool requireFullWidth, ParserResult& result) {
    for (const auto& spec : specs) {
        std::size_t width = spec.width;
        if (text.size() < width) {
            if (requireFullWidth) {
                result.setError("code string is too small");
                return false;
            }
            width = text.size();
        }
        auto outcome = spec.parser(text, width);
        if (!outcome.ok()) {
            result.setError(outcome.error());
            return false;
        }
        if (!outcome.value().name.empty()) result.addField(std::move(outcome.value()));
    }
    return true;
}

}  // namespace parser
