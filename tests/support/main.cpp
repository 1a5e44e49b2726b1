// Runs the tests on the build of the library that --variant names, or skips them all where the processor cannot.
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>

#include "support/variant.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  constexpr char kOption[] = "--variant=";
  if (argc > 1 && strncmp(argv[1], kOption, strlen(kOption)) == 0)
    zvp::test::variantUnderTest = argv[1] + strlen(kOption);
  if (!zvp::test::processorRuns(zvp::test::variantUnderTest)) {
    printf("this processor does not run %s\n", zvp::test::variantUnderTest.c_str());
    return 77;
  }
  return RUN_ALL_TESTS();
}
