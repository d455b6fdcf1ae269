#include "common/date.h"
