// Takes aligned parts out of a block, one behind the other.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace zvp {

class Carver {
 public:
  explicit Carver(void* block) : next_(static_cast<uint8_t*>(block)) {}

  template <class T>
  T* take(size_t count, size_t alignment) {
    next_ += (0 - reinterpret_cast<uintptr_t>(next_)) % alignment;
    uint8_t* part = next_;
    next_ += count * sizeof(T);
    return reinterpret_cast<T*>(part);
  }

 private:
  uint8_t* next_;
};

}  // namespace zvp
