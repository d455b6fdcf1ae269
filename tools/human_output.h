// The readable form of a result, for the default mode of the command line.
#pragma once

#include <ostream>

#include "qvx/qvx.h"

namespace qvx_cli {

// Each field (name, raw text, parsed value, issues), then the warnings.
void printParsedData(std::ostream& out, const parser::ParsedData& data);

// The message of a fatal issue, and its code and details when it has them.
void printIssue(std::ostream& out, const parser::ParserIssue& issue);

}  // namespace qvx_cli
