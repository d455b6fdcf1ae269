#include "common/parser_regex.h"
