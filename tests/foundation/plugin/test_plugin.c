/* A tiny plug-in for the module and resource tests: an exported function,
   a constructor that leaves a mark when the module's code runs, a "PIPL"
   section and a section of another type. */
#include <stdlib.h>

__attribute__((used, section("PIPL"))) static const unsigned char kPipl[16] = {
    'T', 'O', 'V', 'P', 'I', 'P', 'L', 0, 1, 2, 3, 4, 5, 6, 7, 8};

__attribute__((used, section("ABCD"))) static const unsigned char kOther[4] = {'a', 'b', 'c', 'd'};

__attribute__((constructor)) static void MarkLoaded(void) {
  setenv("TOV_TEST_PLUGIN_RAN", "1", 1);
}

__attribute__((visibility("default"))) int TovTestPluginAnswer(void) { return 42; }
