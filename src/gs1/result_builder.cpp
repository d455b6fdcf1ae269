#include "gs1/result_builder.h"

#include <utility>

namespace parser {

void ResultBuilder::addIssue(const std::string& text) {
    if (strict) {
        result.setError(text);
        failed = true;
    } else {
        pendingIssue = ParserIssue::generic(text);
    }
}

void ResultBuilder::addFailedField(const std::string& name, const std::string& raw,
                                   const std::string& text, bool nameTheAi) {
    addIssue(nameTheAi ? text + " (AI: " + name + ")" : text);
    if (failed) return;
    if (pendingIssue && text.empty()) {
        result.addField(name, raw, nlohmann::json(raw), std::move(pendingIssue));
    } else {
        result.addField(name, raw, nlohmann::json(raw), text);
    }
    pendingIssue.reset();
}

void ResultBuilder::addParsedField(const std::string& name, const std::string& raw,
                                   nlohmann::json value) {
    result.addField(name, raw, std::move(value), std::move(pendingIssue));
    pendingIssue.reset();
}

void ResultBuilder::finishField() {
    if (!failed && !message.empty() && !result.error) {
        result.addWarning(ParserIssue::generic(message));
    }
    if (pendingIssue) {
        result.addWarning(std::move(pendingIssue));
        pendingIssue.reset();
    }
    message.clear();
}

}  // namespace parser
