// The library keeps nothing between calls: whatever tests run, the bytes of it that can be written stay as they were
// once it was loaded.
#include <gtest/gtest.h>
#include <link.h>
#include <stdint.h>
#include <string.h>

#include <vector>

namespace zvp::test {
namespace {

// Also of the zones that the address sanitizer keeps around objects.
[[gnu::no_sanitize_address]] uint8_t byteAt(ElfW(Addr) at) { return *reinterpret_cast<const volatile uint8_t*>(at); }

// The writable data of the library, without what the loader makes read-only after relocation.
std::vector<uint8_t> writableData() {
  std::vector<uint8_t> bytes;
  const auto append = [](dl_phdr_info* library, size_t, void* to) {
    if (strstr(library->dlpi_name, "libzvpcv.so") == nullptr) return 0;
    ElfW(Addr) relocatedFrom = 0, relocatedEnd = 0;
    for (int i = 0; i < library->dlpi_phnum; ++i) {
      const ElfW(Phdr)& segment = library->dlpi_phdr[i];
      if (segment.p_type != PT_GNU_RELRO) continue;
      relocatedFrom = segment.p_vaddr, relocatedEnd = segment.p_vaddr + segment.p_memsz;
    }
    for (int i = 0; i < library->dlpi_phnum; ++i) {
      const ElfW(Phdr)& segment = library->dlpi_phdr[i];
      if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) == 0) continue;
      for (ElfW(Addr) at = segment.p_vaddr; at < segment.p_vaddr + segment.p_memsz; ++at)
        if (at < relocatedFrom || at >= relocatedEnd)
          static_cast<std::vector<uint8_t>*>(to)->push_back(byteAt(library->dlpi_addr + at));
    }
    return 1;
  };
  EXPECT_EQ(dl_iterate_phdr(append, &bytes), 1) << "the library is not loaded";
  return bytes;
}

class LibraryData : public testing::Environment {
  void SetUp() override {
    atLoad_ = writableData();
    EXPECT_FALSE(atLoad_.empty());
  }
  void TearDown() override { EXPECT_TRUE(writableData() == atLoad_) << "the library has written to its own data"; }

  std::vector<uint8_t> atLoad_;
};

testing::Environment* const kLibraryData = testing::AddGlobalTestEnvironment(new LibraryData);

}  // namespace
}  // namespace zvp::test
