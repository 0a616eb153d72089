// The main of a test program without children of its own.
#include "common/test_main.h"

int main(int argc, char** argv) { return orvel::test::runTests(argc, argv); }
