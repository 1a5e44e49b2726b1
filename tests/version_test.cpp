#include "zvpcv/version.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "support/variant.h"

namespace {

TEST(Version, RecordIsConstant) {
  const LibraryVersion* v = zvpcvGetLibVersion();
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v, zvpcvGetLibVersion());
  EXPECT_EQ(v->major, 8);
  EXPECT_EQ(v->minor, 1);
  EXPECT_EQ(v->update, 0);
  EXPECT_EQ(v->revision, 41664);
  EXPECT_EQ(memcmp(v->cpuCode, "q9\0\0", 4), 0);
  EXPECT_STREQ(v->name, "zvpCV AVX (q9)");
  EXPECT_STREQ(v->versionText, "8.1.0 (r41664)");
  EXPECT_STREQ(v->buildDate, "Jan 15 2014");
}

// The other tests of this program prove something about a build only if it is the one that is loaded.
TEST(Version, TheBuildUnderTestIsLoaded) {
  Dl_info info;
  ASSERT_NE(dladdr(zvpcvGetLibVersion(), &info), 0);
  const std::string directory = zvp::test::variantUnderTest.empty() ? "/" : "/" + zvp::test::variantUnderTest + "/";
  EXPECT_NE(std::string(info.dli_fname).find(directory), std::string::npos) << info.dli_fname;
}

}  // namespace
