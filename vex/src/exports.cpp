// The exported functions: each is one line.
#include "vex/inc/orvane.h"
