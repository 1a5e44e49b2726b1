// A reference inside an object, one 32-bit word on every build: where a pointer has 32 bits the pointer itself, else
// the offset from the object's start (0 = none).
#pragma once

#include <stdint.h>

namespace zvp {

template <class T>
class Link {
 public:
  void set(const void* object, T* target) {
    word_ = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(target) - base(object));
  }
  T* get(const void* object) const { return reinterpret_cast<T*>(base(object) + word_); }

 private:
  static uintptr_t base(const void* object) {
    return sizeof(void*) == sizeof(uint32_t) ? 0 : reinterpret_cast<uintptr_t>(object);
  }

  uint32_t word_;
};

}  // namespace zvp
