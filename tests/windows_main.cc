// What every test program that owns the machine does before and after its tests.
#include <gtest/gtest.h>

#include "windows_world.h"

int main(int argc, char** argv) {
  if (!world::MayEmptyThisMachine()) return 1;
  testing::InitGoogleTest(&argc, argv);
  const int failed = RUN_ALL_TESTS();
  world::Clean();
  return failed;
}
