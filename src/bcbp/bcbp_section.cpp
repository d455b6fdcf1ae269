#include "bcbp/bcbp_section.h"

namespace parser {

bool runBcbpSection(const std::vector<BcbpFieldSpec>& entries, ParserStringRef& text,
                    bool requireFullWidth, ParserResult& result) {
    for (const auto& entry : entries) {
        std::size_t width = entry.width;
        if (text.size() < width) {
            if (requireFullWidth) {
                result.setError("code string is too small");
                return false;
            }
            width = text.size();
        }
        auto outcome = entry.parser(text, width);
        if (!outcome.ok()) {
            result.setError(outcome.error());
            return false;
        }
        if (!outcome.value().name.empty()) result.addField(std::move(outcome.value()));
    }
    return true;
}

}  // namespace parser
