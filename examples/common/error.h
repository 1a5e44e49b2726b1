// What the examples throw, and how they turn the library's status into it.
#ifndef ZVP_EXAMPLES_COMMON_ERROR_H
#define ZVP_EXAMPLES_COMMON_ERROR_H

#include <zvpcv/types.h>

#include <stdexcept>
#include <string>

namespace examples {

// A failure that its message explains to the user in one line.
struct Error : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Throws unless the call of that name succeeded.
inline void require(Status status, const char* call) {
  if (status < StatusOk) throw Error(std::string(call) + " failed with status " + std::to_string(status));
}

}  // namespace examples

#endif
