#include "gs1/gs1_field_parser.h"
