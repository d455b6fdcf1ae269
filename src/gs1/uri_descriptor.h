// A URI taken apart into the pieces the Digital Link parser reads.
#pragma once

#include <string>

#include "qvx/result.h"
#include "qvx/string_ref.h"

namespace parser {

class UriDescriptor {
  public:
    UriDescriptor() = default;
    UriDescriptor(const UriDescriptor&) = default;
    UriDescriptor(UriDescriptor&&) = default;
    UriDescriptor& operator=(const UriDescriptor&) = default;
    UriDescriptor& operator=(UriDescriptor&&) = default;
    virtual ~UriDescriptor() = default;

    std::string scheme;     // "http://" or "https://", slashes included
    std::string authority;  // up to the next "/"; user information and port stay inside
    std::string path;       // from that "/" up to the first "?" (or "#" when there is no "?")
    std::string query;      // from "?" up to "#", the "?" included; may be empty
    std::string fragment;   // from "#" to the end, the "#" included; may be empty
    std::string uri;        // the five above joined
};

// Splits a URI. The only failures are "No scheme found", "Scheme not
// supported: '<scheme>'" and "No authority found".
result<UriDescriptor, std::string> splitUri(ParserStringRef text);

}  // namespace parser
