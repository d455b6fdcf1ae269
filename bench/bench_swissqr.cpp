#include "bench_common.h"
