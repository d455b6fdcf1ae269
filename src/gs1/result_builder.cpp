#include "gs1/result_builder.h"

#include <cstring>
#include <utility>

#include "common/date.h"

namespace parser {

void ResultBuilder::addIssue(const std::string& text) {
    if (strict) {
        result.setError(text);
        failed = true;
    } else {
        pendingIssue = ParserIssue::generic(text);
    }
}

void ResultBuilder::addFailedField(const std::string& name, std::string raw,
                                   const std::string& text, bool nameTheAi) {
    addIssue(nameTheAi ? text + " (AI: " + name + ")" : text);
    if (failed) return;
    nlohmann::json value(raw);
    if (pendingIssue && text.empty()) {
        result.addField(name, std::move(raw), std::move(value), std::move(pendingIssue));
    } else {
        result.addField(name, std::move(raw), std::move(value), text);
    }
    pendingIssue.reset();
}

void ResultBuilder::addParsedField(std::string name, std::string raw, nlohmann::json value) {
    result.addField(std::move(name), std::move(raw), std::move(value), std::move(pendingIssue));
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

int ResultBuilder::currentYear() {
    if (!currentYear_) currentYear_ = Date::getCurrentYear();
    return *currentYear_;
}

const char* ResultBuilder::nextTerminator(ParserStringRef view, bool groupSeparator,
                                          bool openParenthesis) {
    Search& last = searches_[(groupSeparator ? 2 : 0) + (openParenthesis ? 1 : 0)];
    const char* from = view.data();
    const char* end = from + view.size();
    if (end == last.end && from >= last.from && from <= last.found) return last.found;
    const char* at = from;
    if (groupSeparator != openParenthesis) {
        const void* hit =
            view.empty() ? nullptr : std::memchr(from, groupSeparator ? '\x1d' : '(', view.size());
        at = hit == nullptr ? end : static_cast<const char*>(hit);
    } else {
        while (at != end &&
               !((groupSeparator && *at == '\x1d') || (openParenthesis && *at == '('))) {
            ++at;
        }
    }
    last = Search{from, end, at};
    return at;
}

}  // namespace parser
