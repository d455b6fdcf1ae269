#include "gs1/uri_descriptor.h"

#include <utility>

namespace parser {

namespace {

// The bytes up to the first `byte`, or the whole view; moves the view past them.
ParserStringRef takeUpTo(ParserStringRef& view, char byte) {
    const char* hit = view.find_char(byte);
    return view.take_front(hit == nullptr ? view.size() : view.offsetOf(hit));
}

}  // namespace

result<UriDescriptor, std::string> splitUri(ParserStringRef text) {
    using Outcome = result<UriDescriptor, std::string>;
    UriDescriptor uri;

    // Every "/" behind the colon belongs to the scheme, so "https:///h" has
    // the scheme "https:///" and is refused by the comparison below.
    if (const char* colon = text.find_char(':'); colon != nullptr) {
        std::size_t end = text.offsetOf(colon) + 1;
        while (end < text.size() && text[end] == '/') ++end;
        uri.scheme = text.take_front(end).str();
    }
    if (uri.scheme.empty()) return Outcome::failure("No scheme found");
    if (uri.scheme != "http://" && uri.scheme != "https://") {
        return Outcome::failure("Scheme not supported: '" + uri.scheme + "'");
    }

    // Only a "/" ends the authority: a "?" right behind the host stays in it.
    uri.authority = takeUpTo(text, '/').str();
    if (uri.authority.empty()) return Outcome::failure("No authority found");

    // A "?" anywhere behind ends the path, even one that stands behind a "#".
    uri.path = takeUpTo(text, text.find_char('?') != nullptr ? '?' : '#').str();
    if (text.starts_with('?')) uri.query = takeUpTo(text, '#').str();
    if (text.starts_with('#')) uri.fragment = text.str();

    uri.uri.reserve(uri.scheme.size() + uri.authority.size() + uri.path.size() + uri.query.size() +
                    uri.fragment.size());
    uri.uri.append(uri.scheme)
        .append(uri.authority)
        .append(uri.path)
        .append(uri.query)
        .append(uri.fragment);
    return Outcome::success(std::move(uri));
}

}  // namespace parser
