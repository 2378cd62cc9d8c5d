#include <gtest/gtest.h>
#include <vqcj.h>
TEST(Version, Placeholder) { EXPECT_EQ(vqcjGetLibVersion()->major, 7); }
