#include "qvx/contract.h"

#include <cstdio>
#include <cstdlib>

namespace parser::contract {
namespace {
// Fixed storage: the failure text must survive without further allocation.
char gLastFailure[512] = {};

void remember(const std::string& text) {
    std::snprintf(gLastFailure, sizeof gLastFailure, "%s", text.c_str());
}
}  // namespace

void fail(const std::string& text) {
    remember(text);
    std::abort();
}

void failWithLocation(const char* file, int line, const std::string& message) {
    remember(message);
    std::fprintf(stderr, "parser: %s:%d: %s\n", file, line, message.c_str());
    std::fflush(stderr);
    std::abort();
}

const char* lastFailure() noexcept {
    return gLastFailure;
}

}  // namespace parser::contract
