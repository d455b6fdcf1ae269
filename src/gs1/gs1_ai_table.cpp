#include "gs1/gs1_ai_table.h"

namespace parser {

const std::vector<Gs1AiEntry>& gs1AiTable() {
    static const std::vector<Gs1AiEntry> table;
    return table;
}

const Gs1AiEntry* findGs1Ai(std::string_view) {
    return nullptr;
}

}  // namespace parser
