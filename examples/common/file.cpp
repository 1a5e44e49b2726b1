#include "common/file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "common/error.h"

namespace examples {
namespace {

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

[[noreturn]] void fail(const std::string& path, const char* verb) {
  throw Error(path + ": cannot " + verb + ": " + std::strerror(errno));
}

File open(const std::string& path, const char* mode) {
  File file(std::fopen(path.c_str(), mode));
  if (!file) fail(path, "open");
  return file;
}

}  // namespace

Bytes readFile(const std::string& path) {
  const File file = open(path, "rb");
  Bytes bytes;
  uint8_t block[1 << 16];
  while (const size_t count = std::fread(block, 1, sizeof block, file.get()))
    bytes.insert(bytes.end(), block, block + count);
  if (std::ferror(file.get())) fail(path, "read");
  return bytes;
}

void writeFile(const std::string& path, const Bytes& bytes) {
  File file = open(path, "wb");
  if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) fail(path, "write");
  if (std::fclose(file.release()) != 0) fail(path, "write");  // the system may report a full disk only here
}

}  // namespace examples
