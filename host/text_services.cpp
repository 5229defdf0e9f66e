#include "text_services.h"

#include <limits>

double VeskNaN() { return std::numeric_limits<double>::quiet_NaN(); }
