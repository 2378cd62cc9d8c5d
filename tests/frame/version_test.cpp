#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>

TEST(Version, StaticRecordWithItsOwnFacts) {
    const VqcLibraryVersion* v = vqcjGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, vqcjGetLibVersion());  // the same pointer every call
    EXPECT_EQ(v->major, 7);
    EXPECT_EQ(v->minor, 0);
    EXPECT_EQ(v->majorBuild, 205);
    // The build number and the build in the version text are separate facts.
    EXPECT_EQ(v->build, 1032);
    EXPECT_STREQ(v->version, "7.0 build 205.58");
    EXPECT_EQ(std::memcmp(v->targetCpu, "px\0\0", 4), 0);
    EXPECT_STREQ(v->name, "vqcjpx-7.0.dll");
    EXPECT_STREQ(v->buildDate, "Apr 18 2011");
}
