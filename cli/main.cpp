// The command-line program: a thin main around the library.
#include "vex/inc/orvane.h"

int main(int argc, char** argv) {
  return ORV_Translate(argc, argv, 1, nullptr, nullptr) == 0 ? 0 : 255;
}
