// All builds of the library, loaded side by side, give the same bits: statuses and results of every export. The other
// tests compare each build with plain models.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <zvpcv/version.h>

#include <string>

#include "calls/calls.h"
#include "support/variant.h"

namespace zvp::test {
namespace {

struct Library {
  std::string variant;
  void* handle;
};

// The baseline, then what this processor runs.
std::vector<Library> libraries() {
  const std::string directory = ZVP_LIBRARY_DIR, name = "/" ZVP_SONAME;
  std::vector<Library> all;
  const auto load = [&](const std::string& variant, const std::string& path) {
    all.push_back({variant, dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)});
    EXPECT_NE(all.back().handle, nullptr) << dlerror();
  };
  load("baseline", directory + name);
  for (const std::string variant : {"x86-64-v3", "x86-64-v4"})
    if (processorRuns(variant)) load(variant, directory + "/glibc-hwcaps/" + variant + name);
  return all;
}

TEST(Variants, GiveTheSameBits) {
  const std::vector<Library> all = libraries();
  for (size_t i = 1; i < all.size(); ++i)
    ASSERT_NE(dlsym(all[i].handle, "zvpcvGetLibVersion"), dlsym(all[0].handle, "zvpcvGetLibVersion"))
        << "one library loaded twice";
  for (const calls::Export& e : calls::allExports()) {
    for (const RoiSize size : {RoiSize{1, 1}, {14, 37}, {31, 9}, {64, 5}, {127, 3}, {640, 4}}) {
      for (unsigned seed = 0; seed < 4; ++seed) {
        std::vector<uint8_t> expected;
        for (const Library& library : all) {
          calls::Seeded draw(seed, size);
          calls::Call call(e, draw, library.handle);
          EXPECT_GE(call.run(), StatusOk) << e.name;
          if (&library == &all[0]) expected = call.outcome();
          ASSERT_EQ(call.outcome(), expected)
              << e.name << ", width " << size.width << ", seed " << seed << ", " << library.variant;
        }
      }
    }
  }
  if (all.size() < 3) GTEST_SKIP() << "this processor does not run all variants";
}

// The loader takes the best build by itself.
TEST(Variants, TheLoaderPicksTheBest) {
  Dl_info info;
  ASSERT_NE(dladdr(reinterpret_cast<void*>(zvpcvGetLibVersion), &info), 0);
  const std::string best = processorRuns("x86-64-v4") ? "x86-64-v4" : processorRuns("x86-64-v3") ? "x86-64-v3" : "lib";
  EXPECT_NE(std::string(info.dli_fname).find("/" + best + "/"), std::string::npos) << info.dli_fname;
}

}  // namespace
}  // namespace zvp::test
